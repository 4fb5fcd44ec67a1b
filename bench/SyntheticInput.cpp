// Building the synthetic playlists and assets. Element i plays frames
// [start, start + length) of its asset on the picture side and one frame later
// on the sound side; its IN and OUT values are written in the boundary kinds of
// its position in the cycle, so every kind resolves to the same frames.
#include "SyntheticInput.h"

#include <array>
#include <stdexcept>
#include <string>
#include <utility>

namespace TimelineEngineBench {

namespace {

using Kov::BusinessEntityModel::BaseTypes::Identifier;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;
using Kov::DataModel::MediaAssets::KytOperatorMetadataProfile;
using Kov::DataModel::MediaAssets::MediaAsset;
using Kov::DataModel::MediaAssets::MediaResource;
using Kov::DataModel::MediaAssets::TrackLayout;
using Kov::DataModel::MediaAssets::TrackLayoutEntry;
using Kov::Replivo::Data::Channels::Speed;
using Kov::Replivo::Data::Clips::UmId;
using Kov::Replivo::Data::Sequences::AudioVideoElement;
using Kov::TimePoints::TimeBoundary;
using Kov::TimePoints::TimeBounds;

namespace Data = Kov::Replivo::Data;
namespace MediaAssets = Kov::DataModel::MediaAssets;

// The key of a clip's asset, as the library's own listing gives it.
Identifier ClipAssetIdentifier(const UmId& umId) {
  Data::Sequences::Playlist playlist;
  playlist.audioVideoTrack.elements.resize(1);
  playlist.audioVideoTrack.elements[0].umId = umId;
  return Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::ListAssetsFromPlaylist(
             playlist)
      .at(0);
}

// 100 ns ticks per field at the playlist's rate of 50/1: 100 fields (50 frames)
// a second.
constexpr std::int64_t kTicksPerField = 100000;
constexpr std::int64_t kAssetFields = 2 * kAssetFrames;
// Ranges of one asset are one second apart; gaps do not count as material.
constexpr std::int64_t kGapTicks = 10000000;
constexpr std::int32_t kPictureKind = 2;
constexpr std::int32_t kSoundKind = 0;

// Every (IN kind, OUT kind) pair that the conversion accepts.
constexpr std::array<std::pair<std::int32_t, std::int32_t>, 9> kBoundaryKinds = {
    {{1, 2}, {1, 1}, {2, 2}, {2, 1}, {3, 2}, {3, 1}, {1, 3}, {2, 3}, {3, 3}}};
// Video kinds 2 and 5 overlap (effect kind 2), 1 and 12 to 14 do not.
constexpr std::array<std::int32_t, 6> kVideoTransitionKinds = {2, 12, 13, 14, 1, 5};
// Audio kinds 3 to 5 overlap, 1, 2 and 6 to 8 do not.
constexpr std::array<std::int32_t, 8> kAudioTransitionKinds = {3, 6, 7, 8, 1, 4, 5, 2};

UmId ClipUmId(std::size_t assetIndex) {
  const std::string text = "CLIP" + std::to_string(assetIndex);
  return UmId(text.c_str());
}

// One resource with one picture and 2, 4 or 8 sound tracks, listed with a sound
// track first so that the description has to put the picture track in front.
SharedReference<MediaResource> MakeResource(std::size_t assetIndex) {
  auto resource = std::make_shared<MediaResource>();
  auto layout = std::make_shared<TrackLayout>();
  layout->id = Identifier("layout-" + std::to_string(assetIndex));
  const std::size_t soundTracks = std::size_t{2} << (assetIndex % 3);
  for (std::size_t t = 0; t <= soundTracks; ++t) {
    auto track = std::make_shared<MediaAssets::Track>();
    track->id = Identifier("track-" + std::to_string(t));
    track->kind = t == 1 ? kPictureKind : kSoundKind;
    resource->tracks.Insert(track);
    layout->entries.push_back(TrackLayoutEntry{track->id.Text(), std::string(), track});
    layout->tracks.push_back(track.get());
  }
  resource->trackLayouts.Insert(SharedReference<TrackLayout>(layout, layout->id));
  return SharedReference<MediaResource>(resource,
                                        Identifier("resource-" + std::to_string(assetIndex)));
}

MediaAsset MakeAsset(const Identifier& id, std::size_t assetIndex, std::size_t ranges) {
  if (ranges == 0 || kAssetFields % static_cast<std::int64_t>(ranges) != 0) {
    throw std::invalid_argument("the range count must divide the asset's field count");
  }
  MediaAsset asset;
  asset.id = id;
  const std::int64_t rangeTicks = kAssetFields / static_cast<std::int64_t>(ranges) * kTicksPerField;
  const std::int64_t first =
      1'000'000'000'000 + static_cast<std::int64_t>(assetIndex) * 1'000'000'000;
  for (std::size_t r = 0; r < ranges; ++r) {
    const std::int64_t start = first + static_cast<std::int64_t>(r) * (rangeTicks + kGapTicks);
    asset.timeBounds.Insert(
        TimeBounds{TimeBoundary{start, 0}, TimeBoundary{start + rangeTicks, 0}});
  }
  asset.shortBounds = TimeBounds{TimeBoundary{first + 10 * kTicksPerField, 0},
                                 TimeBoundary{first + 1000 * kTicksPerField, 0}};
  auto profile = std::make_shared<KytOperatorMetadataProfile>();
  profile->videoRate = 50;
  asset.metadataProfiles[KytOperatorMetadataProfile::StaticFullyQualifiedName()] = profile;
  asset.resources.Insert(MakeResource(assetIndex));
  return asset;
}

// The IN and OUT values (fields) that make an element with these boundary
// kinds play frames [start, start + length) of an asset of kAssetFrames frames.
std::pair<std::int64_t, std::int64_t> BoundaryValues(std::int32_t inKind, std::int32_t outKind,
                                                     std::int64_t start, std::int64_t length) {
  const std::int64_t end = start + length;
  std::int64_t in = 2 * start;  // kind 1: from the asset's start
  if (inKind == 2 || (inKind == 3 && outKind == 3)) {
    in = 2 * (kAssetFrames - start);  // back from the asset's end
  } else if (inKind == 3) {
    in = 2 * length;  // back from the OUT position
  }
  std::int64_t out = 2 * end;  // kind 2: from the asset's start
  if (outKind == 1) {
    out = 2 * (kAssetFrames - end);  // back from the asset's end
  } else if (outKind == 3) {
    out = 2 * length;  // a length after IN
  }
  return {in, out};
}

// Mostly no speed of its own (the previous one holds), sometimes a new one,
// now and then an empty one with a denominator, which holds the previous too.
Speed ElementSpeed(std::size_t i) {
  switch (i % 50) {
    case 3:
    case 23:
      return Speed{2, 1};
    case 7:
    case 37:
      return Speed{1, 2};
    case 11:
      return Speed{3, 2};
    case 15:
    case 45:
      return Speed{1, 1};
    case 49:
      return Speed{0, 5};
    default:
      return Speed::Empty();
  }
}

AudioVideoElement MakeElement(std::size_t i) {
  AudioVideoElement element;
  element.number = static_cast<std::uint32_t>(i + 1);
  element.serverId = Data::Servers::ServerId(3);
  element.playlistNumber = 17;
  element.itemNumber = static_cast<std::int32_t>(i + 1);
  // A stride coprime to the asset count visits every asset, never in a row.
  element.umId = ClipUmId(i * 7919 % kAssetCount);
  const auto kinds = kBoundaryKinds[i % kBoundaryKinds.size()];
  element.inBoundaryKind = kinds.first;
  element.outBoundaryKind = kinds.second;
  const auto start = static_cast<std::int64_t>(i * 37 % 10000);
  const auto length = static_cast<std::int64_t>(100 + i * 13 % 150);
  const auto video = BoundaryValues(kinds.first, kinds.second, start, length);
  const auto audio = BoundaryValues(kinds.first, kinds.second, start + 1, length);
  element.videoInValue = video.first;
  element.videoOutValue = video.second;
  element.audioInValue = audio.first;
  element.audioOutValue = audio.second;
  element.speed = ElementSpeed(i);
  // Three elements in four open with both transitions, at most 25 frames long:
  // shorter than any item, even at double speed.
  if (i % 4 != 0) {
    element.transitionType = kVideoTransitionKinds[i % kVideoTransitionKinds.size()];
    element.videoTransitionDuration = static_cast<std::int32_t>(2 * (10 + i % 16));
    element.audioTransitionType = kAudioTransitionKinds[i % kAudioTransitionKinds.size()];
    element.audioTransitionDuration = static_cast<std::int32_t>(2 * (8 + i % 12) + 1);
  }
  return element;
}

}  // namespace

SyntheticInput MakeSyntheticInput(std::size_t elementCount, std::size_t rangesPerAsset) {
  SyntheticInput input;
  input.assets = std::make_shared<MediaAssets::MediaAssetMap>();
  input.assets->reserve(kAssetCount);
  for (std::size_t a = 0; a < kAssetCount; ++a) {
    const Identifier key = ClipAssetIdentifier(ClipUmId(a));
    input.assets->emplace(key, MakeAsset(key, a, rangesPerAsset));
  }

  Data::Sequences::Playlist& playlist = input.playlist;
  playlist.serverId = Data::Servers::ServerId(3);
  playlist.number = 42;
  playlist.umId = UmId("SEQ0000042");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.auxTrackUmId = ClipUmId(0);
  playlist.audioVideoTrack.elements.reserve(elementCount);
  for (std::size_t i = 0; i < elementCount; ++i) {
    playlist.audioVideoTrack.elements.push_back(MakeElement(i));
  }
  playlist.durationInFields = static_cast<std::int64_t>(elementCount) * 2 * 150;
  return input;
}

}  // namespace TimelineEngineBench
