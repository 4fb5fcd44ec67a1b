// Synthetic playlists and asset maps for measuring the conversion, made by the
// sequence generator that the tests and the fuzzer use
// (tests/support/SequenceGenerator.h): audio-video elements with every pair of
// boundary kinds, video and audio transitions of both effect kinds, speed
// changes, played over a map of assets named by camera and take, each with a
// track layout and its recorded material split into a chosen number of ranges.
// The same element count always gives the same playlist.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include <TimelineEngineConversion/TimelineEngineConversion.h>

namespace TimelineEngineBench {

// Assets in every synthetic map; elements play them in a scattered order.
constexpr std::size_t kAssetCount = 1000;
// Usable material of every asset, in frames, whatever its number of ranges.
constexpr std::int64_t kAssetFrames = 15000;

struct SyntheticInput {
  Kov::Replivo::Data::Sequences::Playlist playlist;
  std::shared_ptr<Kov::DataModel::MediaAssets::MediaAssetMap> assets;
};

// A playlist of elementCount audio-video elements with an aux clip, and the map
// of its kAssetCount assets, each recorded as rangesPerAsset ranges (1 to
// kAssetFrames) that hold kAssetFrames frames together, so that every count
// gives the same asset durations and therefore the same timeline.
SyntheticInput MakeSyntheticInput(std::size_t elementCount, std::size_t rangesPerAsset);

}  // namespace TimelineEngineBench
