// Builders shared by the tests, the reliability checks and the fuzzers.
#include "support/PlaylistBuilders.h"

#include <memory>
#include <utility>

namespace testing_support {

Kov::TimePoints::TimeBounds FieldRange(std::int64_t startField, std::int64_t endField) {
  return {{startField * kTicksPerField, 0}, {endField * kTicksPerField, 0}};
}

Kov::TimePoints::TimeBounds OpenRange(std::int64_t startField) {
  return {{startField * kTicksPerField, 0}, {Kov::TimePoints::TimePoint::MaxValue().value, 0}};
}

std::string GuidText(const Data::Guid& guid) {
  char buffer[Data::Guid::kTextLength + 1];
  return guid.ToString(buffer, sizeof buffer);
}

Identifier AssetIdOf(const char* umIdText) {
  return GuidText(Data::Clips::Guid(umIdText));
}

Assets::MediaAsset AssetWithRanges(const char* umIdText,
                                   std::initializer_list<Kov::TimePoints::TimeBounds> ranges) {
  Assets::MediaAsset asset;
  asset.id = AssetIdOf(umIdText);
  for (const auto& range : ranges) {
    asset.timeBounds.Insert(range);
  }
  return asset;
}

Sequences::AudioVideoElement AvElement(const char* umIdText, std::int32_t inKind,
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

Conversion::ExternalSequenceInfo InfoWith(std::initializer_list<Assets::MediaAsset> assets,
                                          Identifier timelineId) {
  auto map = std::make_shared<Assets::MediaAssetMap>();
  for (const auto& asset : assets) {
    map->emplace(asset.id, asset);
  }
  return {std::move(timelineId), Kov::TimePoints::VideoRates::Rate50(), std::move(map)};
}

Sequences::Playlist PlaylistOf(std::vector<Sequences::AudioVideoElement> elements,
                               const char* auxClip) {
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

std::shared_ptr<Assets::MediaAssetMap> HighlightAssets() {
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

Sequences::Playlist HighlightPlaylist() {
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

std::string Describe(const Engine::TrackItem& item) {
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

std::vector<std::string> Describe(const Engine::Track& track) {
  std::vector<std::string> items;
  for (const auto& item : track.items) {
    items.push_back(Describe(*item));
  }
  return items;
}

}  // namespace testing_support
