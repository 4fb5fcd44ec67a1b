// SPDX-License-Identifier: Apache-2.0
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

/// Ranges ordered by start value, then end value; flags play no part.
struct TIMELINE_ENGINE_CONVERSION_API TimeBoundsCompareLess {
  bool operator()(const TimePoints::TimeBounds& a, const TimePoints::TimeBounds& b) const;
};

/// Ranges equal in both values and both flags. Two ranges may be neither less
/// nor greater than each other and still differ (same values, other flags).
struct TIMELINE_ENGINE_CONVERSION_API TimeBoundsCompareEqual {
  bool operator()(const TimePoints::TimeBounds& a, const TimePoints::TimeBounds& b) const;
};

/// The recorded ranges of an asset's material, sorted.
class TimeBoundsArray final
    : public BusinessEntityModel::BaseTypes::SortedVectorBase<
          TimePoints::TimeBounds, TimeBoundsCompareLess, TimeBoundsCompareEqual> {};

/// One track of a media resource; `kind` 2 is picture, 0 is sound.
struct Track {
  /// The track's key within its resource.
  BusinessEntityModel::BaseTypes::Identifier id;
  /// A second name of the track; not read by the conversion.
  std::string secondId;
  /// What the track carries: 2 picture ("V" in a media info), 0 sound ("M"); other
  /// kinds are left out of the description.
  std::int32_t kind = 0;
};

struct TrackLayoutEntry {
  /// The entry's key.
  std::string id;
  /// A second name of the entry.
  std::string secondId;
  /// The track the entry stands for; not owned.
  std::weak_ptr<Track> track;
};

/// Two weak references are equal when both are alive and lock to the same
/// track; meeting an expired one throws std::runtime_error.
struct TIMELINE_ENGINE_CONVERSION_API CompareEqualWeakPointer {
  bool operator()(const std::weak_ptr<Track>& a, const std::weak_ptr<Track>& b) const;
};

/// One arrangement of tracks. `tracks` does not own its tracks; it lists them in
/// stored order and is what the media info reads.
struct TrackLayout {
  /// The layout's key within its resource; an empty one reads as no layout.
  BusinessEntityModel::BaseTypes::Identifier id;
  /// A second name of the layout.
  std::string secondId;
  /// The entries, compared when two layouts are compared.
  std::vector<TrackLayoutEntry> entries;
  /// The tracks in stored order, as the media info lists them; not owned.
  std::vector<const Track*> tracks;
};

/// Entry lists equal: same count first, then equal entries one by one.
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
      trackLayouts;  ///< The layouts; the media info describes the first.
  /// The resource's tracks, by key.
  BusinessEntityModel::BaseTypes::SortedVectorSharedPointer<Track> tracks;
};

/// The operator's metadata; its video rate decides the asset's rate family.
class TIMELINE_ENGINE_CONVERSION_API KytOperatorMetadataProfile
    : public BusinessEntityModel::BaseTypes::MetadataProfile {
 public:
  ~KytOperatorMetadataProfile() override;

  static const BusinessEntityModel::BaseTypes::FullyQualifiedName& StaticFullyQualifiedName();

  /// The operator's video rate in frames a second: 50 or 25 give the 50/1
  /// family, any other value 60000/1001.
  std::int64_t videoRate = 0;
};

struct MediaAsset {
  /// The asset's key in the asset map.
  BusinessEntityModel::BaseTypes::Identifier id;
  /// 1: the aux track plays the whole recorded material; any other value: the
  /// short range.
  std::int32_t assetKind = 0;
  /// The recorded ranges, in ticks of 100 ns; their total is the usable length.
  TimeBoundsArray timeBounds;
  /// The range the operator marked, in ticks of 100 ns.
  TimePoints::TimeBounds shortBounds;
  std::map<BusinessEntityModel::BaseTypes::FullyQualifiedName,
           std::shared_ptr<BusinessEntityModel::BaseTypes::MetadataProfile>>
      metadataProfiles;  ///< Profiles by class name; the operator profile gives the rate.
  BusinessEntityModel::BaseTypes::SortedVector<
      BusinessEntityModel::BaseTypes::SharedReference<MediaResource>>
      resources;  ///< The media resources; the media info describes the first.
};

/// The assets of one conversion, keyed by the text of their identifier.
using MediaAssetMap = std::unordered_map<BusinessEntityModel::BaseTypes::Identifier, MediaAsset>;

}  // namespace MediaAssets
}  // namespace DataModel
}  // namespace Kov
