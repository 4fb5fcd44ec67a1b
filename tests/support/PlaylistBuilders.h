// Builders shared by the tests, the reliability checks and the fuzzers: assets
// with recorded ranges given in fields, elements, conversion contexts, the
// asset key of a clip, the named kinds of transitions, the
// highlight sequence worked out by hand, and a short text form of track items,
// so that a whole track is compared in one line. Free of the test framework.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

namespace testing_support {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;

// At the 50/1 rate one field is 100,000 ticks; tests count time in fields.
constexpr std::int64_t kTicksPerField = 100000;

// Sequence-side transition kinds, named by where the effect lies against the
// cut. Video kinds 2 to 11 all overlap; 12 to 20 repeat the three alignments.
namespace VideoTransition {
constexpr std::int32_t kCut = 1;
constexpr std::int32_t kOverlapping = 2;
constexpr std::int32_t kEndingAtCut = 12;
constexpr std::int32_t kStartingAtCut = 13;
constexpr std::int32_t kCentredOnCut = 14;
}  // namespace VideoTransition
// Audio kinds 1 and 4 have fixed lengths; 3 to 5 overlap; 6 to 8 align as 12 to 14.
namespace AudioTransition {
constexpr std::int32_t kNone = 0;
constexpr std::int32_t kOverlapping = 3;
constexpr std::int32_t kOverlappingFixed = 4;
constexpr std::int32_t kEndingAtCut = 6;
constexpr std::int32_t kStartingAtCut = 7;
constexpr std::int32_t kCentredOnCut = 8;
}  // namespace AudioTransition

// Ranges given in fields; an open one starts at a field and is still being recorded.
inline Kov::TimePoints::TimeBounds FieldRange(std::int64_t startField, std::int64_t endField) {
  return {{startField * kTicksPerField, 0}, {endField * kTicksPerField, 0}};
}
inline Kov::TimePoints::TimeBounds OpenRange(std::int64_t startField) {
  return {{startField * kTicksPerField, 0}, {Kov::TimePoints::TimePoint::MaxValue().value, 0}};
}

// The text of a GUID, and the asset key of a clip as the conversion makes it:
// the one place of the tests that knows the text's buffer size.
inline std::string GuidText(const Data::Guid& guid) {
  char buffer[Data::Guid::kTextLength + 1];
  return guid.ToString(buffer, sizeof buffer);
}
inline Identifier AssetIdOf(const char* umIdText) {
  return GuidText(Data::Clips::Guid(umIdText));
}

// An asset keyed by its clip's id, with its recorded ranges.
inline Assets::MediaAsset AssetWithRanges(
    const char* umIdText, std::initializer_list<Kov::TimePoints::TimeBounds> ranges) {
  Assets::MediaAsset asset;
  asset.id = AssetIdOf(umIdText);
  for (const auto& range : ranges) {
    asset.timeBounds.Insert(range);
  }
  return asset;
}

// An audio-video element playing the same part of its clip on both sides.
inline Sequences::AudioVideoElement AvElement(const char* umIdText, std::int32_t inKind,
                                              std::int32_t outKind, std::int64_t inValue,
                                              std::int64_t outValue) {
  Sequences::AudioVideoElement element;
  element.umId = Data::Clips::UmId(umIdText);
  element.inBoundaryKind = inKind;
  element.outBoundaryKind = outKind;
  element.videoInValue = element.audioInValue = inValue;
  element.videoOutValue = element.audioOutValue = outValue;
  return element;
}

// A video or audio element playing a part of its clip.
template <typename ElementT>
ElementT SingleSidedElement(const char* umIdText, std::int32_t inKind, std::int32_t outKind,
                            std::int64_t inValue, std::int64_t outValue) {
  ElementT element;
  element.umId = Data::Clips::UmId(umIdText);
  element.inBoundaryKind = inKind;
  element.outBoundaryKind = outKind;
  element.inValue = inValue;
  element.outValue = outValue;
  return element;
}

// A context at 50/1 holding the given assets.
inline Conversion::ExternalSequenceInfo InfoWith(std::initializer_list<Assets::MediaAsset> assets,
                                                 Identifier timelineId = "TIMELINE00") {
  auto map = std::make_shared<Assets::MediaAssetMap>();
  for (const auto& asset : assets) {
    map->emplace(asset.id, asset);
  }
  return {std::move(timelineId), Kov::TimePoints::VideoRates::Rate50(), std::move(map)};
}

// A playlist of the given elements, numbered from 1 in playlist PL3.
inline Sequences::Playlist PlaylistOf(std::vector<Sequences::AudioVideoElement> elements,
                                      const char* auxClip = "") {
  Sequences::Playlist playlist;
  playlist.umId = Data::Clips::UmId("SEQ-1");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.audioVideoTrack.elements = std::move(elements);
  playlist.auxTrackUmId = Data::Clips::UmId(auxClip);
  for (auto& element : playlist.audioVideoTrack.elements) {
    element.playlistNumber = 3;
    element.itemNumber = static_cast<std::int32_t>(++playlist.number);
    element.number = playlist.number;
  }
  return playlist;
}

// The highlight: CAM-A of 1000 + 200 frames (the second range's odd field is
// lost), CAM-B of 500 frames whose layout lists sound, picture and sound
// tracks, AUX with a short range 50 frames in and 200 long; four elements with
// overlapping transitions, a centred one, a speed change and the aux clip.
inline std::shared_ptr<Assets::MediaAssetMap> HighlightAssets() {
  auto cameraB = AssetWithRanges("CAM-B", {FieldRange(0, 1000)});
  auto resource = std::make_shared<Assets::MediaResource>();
  auto layout = std::make_shared<Assets::TrackLayout>();
  std::string trackId = "t0";
  for (const std::int32_t kind : {0, 2, 0}) {
    ++trackId[1];
    auto track = std::make_shared<Assets::Track>(Assets::Track{trackId, "", kind});
    layout->tracks.push_back(track.get());
    layout->entries.push_back({track->id.Text(), "", track});
    resource->tracks.Insert(track);  // the resource keeps the tracks alive
  }
  resource->trackLayouts.Insert({layout, "layout"});
  cameraB.resources.Insert({resource, "resource"});
  auto aux = AssetWithRanges("AUX", {FieldRange(0, 4000)});
  aux.shortBounds = FieldRange(100, 501);
  return InfoWith({AssetWithRanges("CAM-A", {FieldRange(0, 2000), FieldRange(3000, 3401)}), cameraB,
                   aux})
      .mediaAssets;
}

inline Sequences::Playlist HighlightPlaylist() {
  using Conversion::OppositeLimit;
  using Conversion::OtherBoundary;
  using Conversion::SameLimit;
  // E2: IN 400 back from the end of CAM-B = 100, OUT 200 from its start; opens
  // with an overlapping video (offset 20) and audio (offset 10) transition.
  auto second = AvElement("CAM-B", OppositeLimit, OppositeLimit, 800, 400);
  second.transitionType = VideoTransition::kOverlapping;
  second.videoTransitionDuration = 40;
  second.audioTransitionType = AudioTransition::kOverlapping;
  second.audioTransitionDuration = 20;
  // E3: OUT 100 back from the end of CAM-A = 1100, IN 30 before it; half speed;
  // a centred, non-overlapping transition of 5 frames (offset 2).
  auto third = AvElement("CAM-A", OtherBoundary, SameLimit, 60, 200);
  third.transitionType = VideoTransition::kCentredOnCut;
  third.videoTransitionDuration = 10;
  third.speed = {1, 2};
  // E4: IN 0, OUT 50 after it, still at half speed.
  return PlaylistOf({AvElement("CAM-A", SameLimit, OppositeLimit, 100, 300), second, third,
                     AvElement("CAM-B", SameLimit, OtherBoundary, 0, 100)},
                    "AUX");
}

// "M videoIn+length audioIn+length | mediaVideoIn+length mediaAudioIn+length"
// for a media item (timeline first, then media), "V kind offset/duration" for
// a video transition item (A for audio).
inline std::string Describe(const Engine::TrackItem& item) {
  const auto span = [](std::int64_t in, std::int64_t length) {
    return std::to_string(in) + "+" + std::to_string(length);
  };
  if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(&item)) {
    return "M " + span(media->timelineVideoIn, media->timelineVideoDuration) + " " +
           span(media->timelineAudioIn, media->timelineAudioDuration) + " | " +
           span(media->mediaVideoIn, media->mediaVideoDuration) + " " +
           span(media->mediaAudioIn, media->mediaAudioDuration);
  }
  const auto& effect = dynamic_cast<const Engine::FxTransitionItem&>(item).FxTransition();
  return std::string(item.GetType() == Engine::FxVideoTransition ? "V " : "A ") +
         std::to_string(effect.kind) + " " + std::to_string(effect.offset) + "/" +
         std::to_string(effect.duration);
}

inline std::vector<std::string> Describe(const Engine::Track& track) {
  std::vector<std::string> items;
  for (const auto& item : track.items) {
    items.push_back(Describe(*item));
  }
  return items;
}

}  // namespace testing_support
