// Sequences of the size and shape that operators edit, made from a seed: up to
// thousands of elements over hundreds of clips named by camera and take (so
// that many names share their first 8 to 10 characters), every pair of boundary
// kinds, speed changes, video and audio transitions of every alignment, and
// assets recorded in 1 to 100 ranges. Used by the unit tests, the fuzzer and
// the benchmarks, so all three meet the same inputs. The draws are the same on
// every platform (no standard distribution is used), the assets and the
// elements come from streams of their own, and a planted refusal comes from a
// third, so that changing the shape of one part never moves the others.
// Free of the test framework.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "PlaylistBuilders.h"

namespace testing_support {

// A deterministic source of numbers (splitmix64).
class SeededRandom {
 public:
  explicit SeededRandom(std::uint64_t seed) : state_(seed) {}

  std::uint64_t Next() {
    std::uint64_t value = (state_ += 0x9E3779B97F4A7C15u);
    value = (value ^ (value >> 30)) * 0xBF58476D1CE4E5B9u;
    value = (value ^ (value >> 27)) * 0x94D049BB133111EBu;
    return value ^ (value >> 31);
  }

  // A number in [low, high].
  std::int64_t Between(std::int64_t low, std::int64_t high) {
    const auto span = static_cast<std::uint64_t>(high - low) + 1;
    return low + static_cast<std::int64_t>(span == 0 ? Next() : Next() % span);
  }

  bool OneIn(std::int64_t n) { return Between(1, n) == 1; }

  template <typename T, std::size_t N>
  const T& Pick(const T (&values)[N]) {
    return values[static_cast<std::size_t>(Between(0, N - 1))];
  }

 private:
  std::uint64_t state_;
};

// What to generate.
struct SequenceShape {
  std::size_t elements = 100;
  // Distinct clips, each with an asset in the map; the elements play all of
  // them when there are at least as many elements.
  std::size_t clips = 17;
  std::size_t minRanges = 1;
  std::size_t maxRanges = 100;
  // The material of every asset in frames, split evenly into its ranges; 0
  // draws ranges of odd and even field counts.
  std::int64_t assetFrames = 0;
  // Assets in the map that no element plays.
  std::size_t unusedAssets = 0;
  bool auxClip = true;
  // Each asset gets a resource whose track layout lists sound and picture tracks.
  bool trackLayouts = false;
  // One element after the first is made so that the conversion must refuse it
  // (a missing asset, an absolute boundary, or a transition longer than the
  // item before or after its cut); every other element converts.
  bool plantRefusal = false;
};

struct GeneratedSequence {
  Sequences::Playlist playlist;
  std::shared_ptr<Assets::MediaAssetMap> assets;
  // The index of the planted element, or npos.
  std::size_t refusedElement = static_cast<std::size_t>(-1);
};

// The text of clip number n: camera feeds "CAMERA-A001", "CAM-B-0031" and
// isolated feeds "ISO01-T001", takes counting fastest, so that neighbouring
// clips differ only after their 8th character.
inline std::string GeneratedClipText(std::size_t n) {
  const std::size_t family = n % 3;
  const std::size_t take = n / 3 % 40 + 1;
  const std::size_t source = n / 120;
  const auto digits = [](std::size_t value, std::size_t width) {
    std::string text = std::to_string(value);
    return std::string(width > text.size() ? width - text.size() : 0, '0') + text;
  };
  const char letter = static_cast<char>('A' + source % 26);
  if (family == 0) {
    return std::string("CAMERA-") + letter + digits(take + 40 * (source / 26), 3);
  }
  if (family == 1) {
    return std::string("CAM-") + letter + "-" + digits(take + 40 * (source / 26), 4);
  }
  return "ISO" + digits(source % 100, 2) + "-T" + digits(take + 40 * (source / 100), 3);
}

namespace generator_detail {

constexpr std::int64_t kShortestPart = 36;  // frames of an element's side, at least
constexpr std::int64_t kLongestTransitionFields = 30;

inline std::uint64_t StreamSeed(std::uint64_t seed, std::uint64_t stream) {
  return SeededRandom(seed ^ (stream * 0xD1B54A32D192ED03u)).Next();
}

// Recorded ranges, and the usable frames they hold (each range halved on its own).
inline std::int64_t AddRanges(Assets::MediaAsset& asset, SeededRandom& random,
                              const SequenceShape& shape) {
  const auto count = static_cast<std::int64_t>(
      random.Between(static_cast<std::int64_t>(shape.minRanges),
                     static_cast<std::int64_t>(std::max(shape.minRanges, shape.maxRanges))));
  std::int64_t field = random.Between(0, 1000000);
  std::int64_t frames = 0;
  for (std::int64_t r = 0; r < count; ++r) {
    std::int64_t fields = 0;
    if (shape.assetFrames > 0) {
      fields = 2 * (shape.assetFrames / count + (r < shape.assetFrames % count ? 1 : 0));
    } else {
      fields = random.Between(r == 0 ? 2 * 2 * kShortestPart : 2, 3000);
    }
    asset.timeBounds.Insert(FieldRange(field, field + fields));
    frames += fields / 2;
    field += fields + random.Between(1, 5000);
  }
  return frames;
}

inline void AddTrackLayout(Assets::MediaAsset& asset, SeededRandom& random) {
  auto resource = std::make_shared<Assets::MediaResource>();
  auto layout = std::make_shared<Assets::TrackLayout>();
  layout->id = Identifier("layout");
  const std::int64_t tracks = 1 + (std::int64_t{2} << random.Between(0, 2));
  const std::int64_t picture = random.Between(0, tracks - 1);
  for (std::int64_t t = 0; t < tracks; ++t) {
    auto track = std::make_shared<Assets::Track>(
        Assets::Track{Identifier("track-" + std::to_string(t)), "", t == picture ? 2 : 0});
    layout->entries.push_back({track->id.Text(), "", track});
    layout->tracks.push_back(track.get());
    resource->tracks.Insert(track);  // the resource keeps the tracks alive
  }
  resource->trackLayouts.Insert({layout, layout->id});
  asset.resources.Insert({resource, Identifier("resource")});
}

inline Assets::MediaAsset MakeAsset(const std::string& clip, SeededRandom& random,
                                    const SequenceShape& shape, std::int64_t& frames) {
  Assets::MediaAsset asset;
  asset.id = AssetIdOf(clip.c_str());
  // The ranges draw from a stream of their own: with a fixed material length,
  // every range count gives the same asset otherwise.
  SeededRandom ranges(random.Next());
  frames = AddRanges(asset, ranges, shape);
  const auto& first = *asset.timeBounds.begin();
  const std::int64_t shortIn = random.Between(0, frames);
  const std::int64_t shortLength = random.Between(0, frames);
  asset.shortBounds = {{first.start.value + shortIn * kTicksPerField, 0},
                       {first.start.value + (shortIn + shortLength) * kTicksPerField, 0}};
  auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
  profile->videoRate = random.OneIn(4) ? 25 : 50;
  asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] = profile;
  if (shape.trackLayouts) {
    AddTrackLayout(asset, random);
  }
  return asset;
}

// IN and OUT values (fields) that play frames [start, start + length) of
// material of the given frames, written in the given kinds.
inline std::pair<std::int64_t, std::int64_t> BoundaryValues(std::int32_t inKind,
                                                            std::int32_t outKind,
                                                            std::int64_t material,
                                                            std::int64_t start,
                                                            std::int64_t length) {
  std::int64_t in = 2 * start;
  if (inKind == Conversion::OppositeLimit ||
      (inKind == Conversion::OtherBoundary && outKind == Conversion::OtherBoundary)) {
    in = 2 * (material - start);
  } else if (inKind == Conversion::OtherBoundary) {
    in = 2 * length;
  }
  std::int64_t out = 2 * (start + length);
  if (outKind == Conversion::SameLimit) {
    out = 2 * (material - start - length);
  } else if (outKind == Conversion::OtherBoundary) {
    out = 2 * length;
  }
  return {in, out};
}

inline void SetTransitions(Sequences::AudioVideoElement& element, SeededRandom& random) {
  static constexpr std::int32_t kVideoKinds[] = {VideoTransition::kCut,
                                                 VideoTransition::kOverlapping,
                                                 5,
                                                 11,
                                                 VideoTransition::kEndingAtCut,
                                                 VideoTransition::kStartingAtCut,
                                                 VideoTransition::kCentredOnCut};
  static constexpr std::int32_t kAudioKinds[] = {AudioTransition::kNone,
                                                 1,
                                                 2,
                                                 AudioTransition::kOverlapping,
                                                 AudioTransition::kOverlappingFixed,
                                                 5,
                                                 AudioTransition::kEndingAtCut,
                                                 AudioTransition::kStartingAtCut,
                                                 AudioTransition::kCentredOnCut};
  if (!random.OneIn(5)) {
    element.transitionType = random.Pick(kVideoKinds);
    element.videoTransitionDuration =
        static_cast<std::int32_t>(random.Between(0, kLongestTransitionFields));
  }
  if (!random.OneIn(3)) {
    element.audioTransitionType = random.Pick(kAudioKinds);
    element.audioTransitionDuration =
        static_cast<std::int32_t>(random.Between(0, kLongestTransitionFields));
  }
}

// Element playing a part of the clip: each side at least kShortestPart frames
// long, so that no transition (at most 15 frames) outlasts it even at double speed.
inline Sequences::AudioVideoElement MakeElement(std::size_t i, const std::string& clip,
                                                std::int64_t material, SeededRandom& random) {
  static constexpr std::int32_t kKinds[] = {Conversion::SameLimit, Conversion::OppositeLimit,
                                            Conversion::OtherBoundary};
  static const Data::Channels::Speed kSpeeds[] = {{1, 2}, {2, 1}, {3, 2}, {1, 1}, {0, 5}};
  Sequences::AudioVideoElement element;
  element.umId = Data::Clips::UmId(clip.c_str());
  element.inBoundaryKind = random.Pick(kKinds);
  element.outBoundaryKind = random.Pick(kKinds);
  const std::int64_t length = random.Between(
      kShortestPart + 4, std::max(kShortestPart + 4, std::min<std::int64_t>(material, 600)));
  const std::int64_t start = random.Between(0, std::max<std::int64_t>(0, material - length));
  const std::int64_t audioLength = length - random.Between(0, 4);
  const std::int64_t audioStart = start + random.Between(0, length - audioLength);
  const auto video =
      BoundaryValues(element.inBoundaryKind, element.outBoundaryKind, material, start, length);
  const auto audio = BoundaryValues(element.inBoundaryKind, element.outBoundaryKind, material,
                                    audioStart, audioLength);
  element.videoInValue = video.first;
  element.videoOutValue = video.second;
  element.audioInValue = audio.first;
  element.audioOutValue = audio.second;
  if (random.OneIn(8)) {
    element.speed = random.Pick(kSpeeds);
  }
  if (i > 0) {
    SetTransitions(element, random);
  }
  return element;
}

// Makes the element one that the conversion refuses.
inline void PlantRefusal(Sequences::AudioVideoElement& element, const std::string& missingClip,
                         SeededRandom& random) {
  switch (random.Between(0, 4)) {
    case 0:
      element.umId = Data::Clips::UmId(missingClip.c_str());
      break;
    case 1:
      element.inBoundaryKind = Conversion::Absolute;
      break;
    case 2:
      element.outBoundaryKind = Conversion::Absolute;
      break;
    case 3:  // all before the cut: longer than the item before
      element.transitionType = VideoTransition::kEndingAtCut;
      element.videoTransitionDuration = 100000;
      break;
    default:  // all after the cut: longer than its own item
      element.audioTransitionType = AudioTransition::kStartingAtCut;
      element.audioTransitionDuration = 100000;
      break;
  }
}

}  // namespace generator_detail

inline GeneratedSequence GenerateSequence(std::uint64_t seed, const SequenceShape& shape) {
  using namespace generator_detail;
  GeneratedSequence generated;
  generated.assets = std::make_shared<Assets::MediaAssetMap>();
  generated.assets->reserve(shape.clips + shape.unusedAssets);
  std::vector<std::int64_t> material(shape.clips + shape.unusedAssets);
  for (std::size_t a = 0; a < material.size(); ++a) {
    SeededRandom random(StreamSeed(seed, 16 + a));
    auto asset = MakeAsset(GeneratedClipText(a), random, shape, material[a]);
    generated.assets->emplace(asset.id, std::move(asset));
  }

  SeededRandom random(StreamSeed(seed, 1));
  // Every clip once, then clips drawn again, mostly from the last few (replays).
  std::vector<std::size_t> plays;
  for (std::size_t i = 0; i < shape.elements && shape.clips > 0; ++i) {
    if (i < shape.clips) {
      plays.push_back(i);
    } else if (random.OneIn(3)) {
      const auto back = static_cast<std::size_t>(random.Between(0, 7)) % plays.size();
      plays.push_back(plays[plays.size() - 1 - back]);
    } else {
      plays.push_back(
          static_cast<std::size_t>(random.Between(0, static_cast<std::int64_t>(shape.clips) - 1)));
    }
  }
  for (std::size_t i = plays.size(); i > 1; --i) {
    std::swap(plays[i - 1],
              plays[static_cast<std::size_t>(random.Between(0, static_cast<std::int64_t>(i) - 1))]);
  }

  Sequences::Playlist& playlist = generated.playlist;
  playlist.serverId = Data::Servers::ServerId(static_cast<std::uint32_t>(random.Between(1, 9)));
  playlist.umId = Data::Clips::UmId(("SEQ" + std::to_string(seed % 100000000)).c_str());
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  const auto playlistNumber = static_cast<std::int32_t>(random.Between(1, 999));
  for (std::size_t i = 0; i < plays.size(); ++i) {
    auto element = MakeElement(i, GeneratedClipText(plays[i]), material[plays[i]], random);
    element.serverId = playlist.serverId;
    element.number = static_cast<std::uint32_t>(i + 1);
    element.itemNumber = static_cast<std::int32_t>(i + 1);
    element.playlistNumber = playlistNumber;
    playlist.audioVideoTrack.elements.push_back(element);
  }
  playlist.number = static_cast<std::uint32_t>(plays.size());
  playlist.durationInFields = random.Between(0, 600 * static_cast<std::int64_t>(plays.size()));
  if (shape.auxClip && shape.clips > 0) {
    playlist.auxTrackUmId =
        Data::Clips::UmId(GeneratedClipText(static_cast<std::size_t>(random.Between(
                                                0, static_cast<std::int64_t>(shape.clips) - 1)))
                              .c_str());
  }

  if (shape.plantRefusal && plays.size() > 1) {
    SeededRandom plant(StreamSeed(seed, 2));
    generated.refusedElement =
        static_cast<std::size_t>(plant.Between(1, static_cast<std::int64_t>(plays.size()) - 1));
    PlantRefusal(playlist.audioVideoTrack.elements[generated.refusedElement],
                 GeneratedClipText(material.size()), plant);
  }
  return generated;
}

}  // namespace testing_support
