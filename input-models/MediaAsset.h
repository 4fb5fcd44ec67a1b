// The media asset model: an asset's recorded ranges, short range, metadata
// profiles and media resources with their track layouts, as far as the
// conversion reads them, and the sorted containers that hold those parts.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "Export.h"
#include "Identifier.h"
#include "MetadataProfile.h"
#include "SortedVector.h"
#include "TimePoints.h"

namespace Kov {
namespace DataModel {
namespace MediaAssets {

// Ranges ordered by start value, then end value; flags play no part.
struct TIMELINE_ENGINE_CONVERSION_API TimeBoundsCompareLess {
  bool operator()(const TimePoints::TimeBounds& a, const TimePoints::TimeBounds& b) const;
};

// Ranges equal in both values and both flags. Two ranges may be neither less
// nor greater than each other and still differ (same values, other flags).
struct TIMELINE_ENGINE_CONVERSION_API TimeBoundsCompareEqual {
  bool operator()(const TimePoints::TimeBounds& a, const TimePoints::TimeBounds& b) const;
};

// The recorded ranges of an asset's material, sorted.
class TimeBoundsArray final
    : public BusinessEntityModel::BaseTypes::SortedVectorBase<
          TimePoints::TimeBounds, TimeBoundsCompareLess, TimeBoundsCompareEqual> {};

// One track of a media resource; `kind` 2 is picture, 0 is sound.
struct Track {
  BusinessEntityModel::BaseTypes::Identifier id;
  std::string secondId;
  std::int32_t kind = 0;
};

struct TrackLayoutEntry {
  std::string id;
  std::string secondId;
  std::weak_ptr<Track> track;
};

// Two weak references are equal when both are alive and lock to the same
// track; meeting an expired one throws std::runtime_error.
struct TIMELINE_ENGINE_CONVERSION_API CompareEqualWeakPointer {
  bool operator()(const std::weak_ptr<Track>& a, const std::weak_ptr<Track>& b) const;
};

// One arrangement of tracks. `tracks` does not own its tracks; it lists them in
// stored order and is what the media info reads.
struct TrackLayout {
  BusinessEntityModel::BaseTypes::Identifier id;
  std::string secondId;
  std::vector<TrackLayoutEntry> entries;
  std::vector<const Track*> tracks;
};

// Entry lists equal: same count first, then equal entries one by one.
TIMELINE_ENGINE_CONVERSION_API bool EntriesEqual(const std::vector<TrackLayoutEntry>& a,
                                                 const std::vector<TrackLayoutEntry>& b);

}  // namespace MediaAssets
}  // namespace DataModel

namespace BusinessEntityModel {
namespace BaseTypes {

template <>
struct CompareLessPointer<std::shared_ptr<DataModel::MediaAssets::Track>> {
  bool operator()(const std::shared_ptr<DataModel::MediaAssets::Track>& a,
                  const std::shared_ptr<DataModel::MediaAssets::Track>& b) const {
    return DereferenceChecked(a).id.Text() < DereferenceChecked(b).id.Text();
  }
};

template <>
struct CompareEqualPointer<std::shared_ptr<DataModel::MediaAssets::Track>> {
  bool operator()(const std::shared_ptr<DataModel::MediaAssets::Track>& a,
                  const std::shared_ptr<DataModel::MediaAssets::Track>& b) const {
    const auto& left = DereferenceChecked(a);
    const auto& right = DereferenceChecked(b);
    return left.id == right.id && left.secondId == right.secondId;
  }
};

template <>
struct CompareLessPointer<std::shared_ptr<DataModel::MediaAssets::TrackLayout>> {
  bool operator()(const std::shared_ptr<DataModel::MediaAssets::TrackLayout>& a,
                  const std::shared_ptr<DataModel::MediaAssets::TrackLayout>& b) const {
    return DereferenceChecked(a).id.Text() < DereferenceChecked(b).id.Text();
  }
};

template <>
struct CompareEqualPointer<std::shared_ptr<DataModel::MediaAssets::TrackLayout>> {
  bool operator()(const std::shared_ptr<DataModel::MediaAssets::TrackLayout>& a,
                  const std::shared_ptr<DataModel::MediaAssets::TrackLayout>& b) const {
    const auto& left = DereferenceChecked(a);
    const auto& right = DereferenceChecked(b);
    return left.id == right.id && left.secondId == right.secondId &&
           DataModel::MediaAssets::EntriesEqual(left.entries, right.entries);
  }
};

}  // namespace BaseTypes
}  // namespace BusinessEntityModel

namespace DataModel {
namespace MediaAssets {

struct MediaResource {
  BusinessEntityModel::BaseTypes::SortedVector<
      BusinessEntityModel::BaseTypes::SharedReference<TrackLayout>>
      trackLayouts;
  BusinessEntityModel::BaseTypes::SortedVectorSharedPointer<Track> tracks;
};

// The operator's metadata; its video rate decides the asset's rate family.
class TIMELINE_ENGINE_CONVERSION_API KytOperatorMetadataProfile
    : public BusinessEntityModel::BaseTypes::MetadataProfile {
 public:
  ~KytOperatorMetadataProfile() override;

  static const BusinessEntityModel::BaseTypes::FullyQualifiedName& StaticFullyQualifiedName();

  std::int64_t videoRate = 0;
};

struct MediaAsset {
  BusinessEntityModel::BaseTypes::Identifier id;
  std::int32_t assetKind = 0;
  TimeBoundsArray timeBounds;
  TimePoints::TimeBounds shortBounds;
  std::map<BusinessEntityModel::BaseTypes::FullyQualifiedName,
           std::shared_ptr<BusinessEntityModel::BaseTypes::MetadataProfile>>
      metadataProfiles;
  BusinessEntityModel::BaseTypes::SortedVector<
      BusinessEntityModel::BaseTypes::SharedReference<MediaResource>>
      resources;
};

// The assets of one conversion, keyed by the text of their identifier.
using MediaAssetMap = std::unordered_map<BusinessEntityModel::BaseTypes::Identifier, MediaAsset>;

}  // namespace MediaAssets
}  // namespace DataModel
}  // namespace Kov
