// Builders shared by the test suites.
#include "support/PlaylistBuilders.h"

namespace testing_support {

Kov::TimePoints::TimeBounds FieldRange(std::int64_t startField, std::int64_t endField) {
  return {{startField * kTicksPerField, 0}, {endField * kTicksPerField, 0}};
}

Kov::TimePoints::TimeBounds OpenRange(std::int64_t startField) {
  return {{startField * kTicksPerField, 0}, {Kov::TimePoints::TimePoint::MaxValue().value, 0}};
}

Identifier AssetIdOf(const char* umIdText) {
  char buffer[Data::Guid::kTextLength + 1];
  return Identifier(Data::Clips::Guid(umIdText).ToString(buffer, sizeof buffer));
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

}  // namespace testing_support
