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
