// Out-of-line parts of the asset model: range orderings, track layout equality
// and the operator profile's class name.
#include "MediaAsset.h"

#include <stdexcept>

namespace Kov {
namespace BusinessEntityModel {
namespace BaseTypes {

MetadataProfile::~MetadataProfile() = default;

}  // namespace BaseTypes
}  // namespace BusinessEntityModel

namespace DataModel {
namespace MediaAssets {

bool TimeBoundsCompareLess::operator()(const TimePoints::TimeBounds& a,
                                       const TimePoints::TimeBounds& b) const {
  const std::int64_t aStart = a.start.value;
  const std::int64_t bStart = b.start.value;
  if (aStart != bStart) {
    return aStart < bStart;
  }
  return a.end.value < b.end.value;
}

bool TimeBoundsCompareEqual::operator()(const TimePoints::TimeBounds& a,
                                        const TimePoints::TimeBounds& b) const {
  return a.start.value == b.start.value && a.start.boundaryFlag == b.start.boundaryFlag &&
         a.end.value == b.end.value && a.end.boundaryFlag == b.end.boundaryFlag;
}

bool CompareEqualWeakPointer::operator()(const std::weak_ptr<Track>& a,
                                         const std::weak_ptr<Track>& b) const {
  const std::shared_ptr<Track> left = a.lock();
  const std::shared_ptr<Track> right = b.lock();
  if (!left || !right) {
    throw std::runtime_error(
        "Kov::DataModel::MediaAssets::CompareEqualWeakPointer: weak pointer object is expired");
  }
  return left == right;
}

bool EntriesEqual(const std::vector<TrackLayoutEntry>& a, const std::vector<TrackLayoutEntry>& b) {
  if (a.size() != b.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (a[i].id != b[i].id || a[i].secondId != b[i].secondId ||
        !CompareEqualWeakPointer()(a[i].track, b[i].track)) {
      return false;
    }
  }
  return true;
}

KytOperatorMetadataProfile::~KytOperatorMetadataProfile() = default;

const BusinessEntityModel::BaseTypes::FullyQualifiedName&
KytOperatorMetadataProfile::StaticFullyQualifiedName() {
  static const BusinessEntityModel::BaseTypes::FullyQualifiedName name(
      "Kov.DataModel.MediaAssets.KytOperatorMetadataProfile");
  return name;
}

}  // namespace MediaAssets
}  // namespace DataModel
}  // namespace Kov
