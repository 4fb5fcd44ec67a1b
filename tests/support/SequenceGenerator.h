// Sequences of the size and shape that operators edit, made from a seed: up to
// thousands of elements over hundreds of clips named by camera and take (so
// that many names share their first 8 to 10 characters), every pair of boundary
// kinds, speed changes, video and audio transitions of every alignment, and
// assets recorded in 1 to 100 ranges. Used by the unit tests, the fuzzer and
// the benchmarks, so all three meet the same inputs. The draws are the same on
// every platform (no standard distribution is used), and the assets, the
// elements and a planted refusal each come from a stream of their own, so that
// changing the shape of one part never moves the others. Free of the test
// framework.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
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
    return low + static_cast<std::int64_t>(Next() % (static_cast<std::uint64_t>(high - low) + 1));
  }
  // An index below count (> 0).
  std::size_t Below(std::size_t count) { return static_cast<std::size_t>(Next() % count); }
  bool OneIn(std::size_t n) { return Below(n) == 0; }
  template <typename T, std::size_t N>
  const T& Pick(const T (&values)[N]) {
    return values[Below(N)];
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
  const std::string take = std::to_string(1001 + n / 3 % 40 + n / 120 / 26 * 40);
  const char source = static_cast<char>('A' + n / 120 % 26);
  switch (n % 3) {
    case 0:
      return std::string("CAMERA-") + source + take.substr(1);
    case 1:
      return std::string("CAM-") + source + "-" + take;
    default:
      return "ISO" + std::to_string(10 + n / 120 % 90) + "-T" + take.substr(1);
  }
}

namespace generator_detail {

constexpr std::int64_t kShortestSide = 36;  // frames: no transition (15 at most) outlasts it
constexpr std::int64_t kLongestTransitionFields = 30;

inline std::uint64_t StreamSeed(std::uint64_t seed, std::uint64_t stream) {
  return SeededRandom(seed ^ (stream * 0xD1B54A32D192ED03u)).Next();
}

// Recorded ranges, and the usable frames they hold (each range halved on its own).
inline std::int64_t AddRanges(Assets::MediaAsset& asset, SeededRandom& random,
                              const SequenceShape& shape) {
  const auto count = static_cast<std::int64_t>(
      shape.minRanges +
      random.Below(std::max(shape.minRanges, shape.maxRanges) - shape.minRanges + 1));
  std::int64_t field = random.Between(0, 1000000);
  std::int64_t frames = 0;
  for (std::int64_t r = 0; r < count; ++r) {
    const std::int64_t fields =
        shape.assetFrames > 0
            ? 2 * (shape.assetFrames / count + (r < shape.assetFrames % count ? 1 : 0))
            : random.Between(r == 0 ? 4 * kShortestSide : 2, 3000);
    asset.timeBounds.Insert(FieldRange(field, field + fields));
    frames += fields / 2;
    field += fields + random.Between(1, 5000);
  }
  return frames;
}

// One resource with a layout of a picture track among two, four or eight sound tracks.
inline void AddTrackLayout(Assets::MediaAsset& asset, SeededRandom& random) {
  auto resource = std::make_shared<Assets::MediaResource>();
  auto layout = std::make_shared<Assets::TrackLayout>();
  layout->id = Identifier("layout");
  const std::size_t tracks = 1 + (std::size_t{2} << random.Below(3));
  const std::size_t picture = random.Below(tracks);
  for (std::size_t t = 0; t < tracks; ++t) {
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
  const std::int64_t start = asset.timeBounds.begin()->start.value / kTicksPerField;
  const std::int64_t shortIn = start + random.Between(0, frames);
  asset.shortBounds = FieldRange(shortIn, shortIn + random.Between(0, frames));
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

// An element playing a part of its clip; the first one opens with no transition.
inline Sequences::AudioVideoElement MakeElement(std::size_t i, const std::string& clip,
                                                std::int64_t material, SeededRandom& random) {
  static constexpr std::int32_t kKinds[] = {Conversion::SameLimit, Conversion::OppositeLimit,
                                            Conversion::OtherBoundary};
  static const Data::Channels::Speed kSpeeds[] = {{1, 2}, {2, 1}, {3, 2}, {1, 1}, {0, 5}};
  // Video: a cut, overlapping (2 to 11), ending at, starting at and centred on the cut.
  static constexpr std::int32_t kVideoKinds[] = {1, 2, 5, 11, 12, 13, 14};
  // Audio: none, fixed lengths (1, 4), overlapping (3 to 5), aligned with the cut (6 to 8).
  static constexpr std::int32_t kAudioKinds[] = {0, 1, 2, 3, 4, 5, 6, 7, 8};
  Sequences::AudioVideoElement element;
  element.umId = Data::Clips::UmId(clip.c_str());
  element.inBoundaryKind = random.Pick(kKinds);
  element.outBoundaryKind = random.Pick(kKinds);
  const std::int64_t length = random.Between(
      kShortestSide + 4, std::max(kShortestSide + 4, std::min<std::int64_t>(material, 600)));
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
  if (i > 0 && !random.OneIn(5)) {
    element.transitionType = random.Pick(kVideoKinds);
    element.videoTransitionDuration =
        static_cast<std::int32_t>(random.Between(0, kLongestTransitionFields));
  }
  if (i > 0 && !random.OneIn(3)) {
    element.audioTransitionType = random.Pick(kAudioKinds);
    element.audioTransitionDuration =
        static_cast<std::int32_t>(random.Between(0, kLongestTransitionFields));
  }
  return element;
}

// Makes the element one that the conversion refuses.
inline void PlantRefusal(Sequences::AudioVideoElement& element, const std::string& missingClip,
                         SeededRandom& random) {
  switch (random.Below(5)) {
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
  std::vector<std::int64_t> material(shape.clips + shape.unusedAssets);
  for (std::size_t a = 0; a < material.size(); ++a) {
    SeededRandom random(StreamSeed(seed, 16 + a));
    auto asset = MakeAsset(GeneratedClipText(a), random, shape, material[a]);
    generated.assets->emplace(asset.id, std::move(asset));
  }

  SeededRandom random(StreamSeed(seed, 1));
  // Every clip once, then clips drawn again, often one of the last few (a replay).
  std::vector<std::size_t> plays;
  for (std::size_t i = 0; i < shape.elements && shape.clips > 0; ++i) {
    plays.push_back(i < shape.clips   ? i
                    : random.OneIn(3) ? plays[plays.size() - 1 - random.Below(8) % plays.size()]
                                      : random.Below(shape.clips));
  }
  for (std::size_t i = plays.size(); i > 1; --i) {
    std::swap(plays[i - 1], plays[random.Below(i)]);
  }

  Sequences::Playlist& playlist = generated.playlist;
  playlist.serverId = Data::Servers::ServerId(static_cast<std::uint32_t>(random.Between(1, 9)));
  playlist.umId = Data::Clips::UmId(("SEQ" + std::to_string(seed % 100000000)).c_str());
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.number = static_cast<std::uint32_t>(plays.size());
  const auto playlistNumber = static_cast<std::int32_t>(random.Between(1, 999));
  for (std::size_t i = 0; i < plays.size(); ++i) {
    auto element = MakeElement(i, GeneratedClipText(plays[i]), material[plays[i]], random);
    element.serverId = playlist.serverId;
    element.number = static_cast<std::uint32_t>(i + 1);
    element.itemNumber = static_cast<std::int32_t>(i + 1);
    element.playlistNumber = playlistNumber;
    playlist.audioVideoTrack.elements.push_back(element);
  }
  playlist.durationInFields = random.Between(0, 600 * static_cast<std::int64_t>(plays.size()));
  if (shape.auxClip && shape.clips > 0) {
    playlist.auxTrackUmId = Data::Clips::UmId(GeneratedClipText(random.Below(shape.clips)).c_str());
  }
  if (shape.plantRefusal && plays.size() > 1) {
    SeededRandom plant(StreamSeed(seed, 2));
    generated.refusedElement = 1 + plant.Below(plays.size() - 1);
    PlantRefusal(playlist.audioVideoTrack.elements[generated.refusedElement],
                 GeneratedClipText(material.size()), plant);
  }
  return generated;
}

}  // namespace testing_support
