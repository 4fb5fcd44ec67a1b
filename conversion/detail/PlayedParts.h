// What the track conversion shares with the boundary resolution of
// TimeConverter: an asset's material length computed at most once, and the
// resolution of an element's boundaries against it. Internal to the library.
#pragma once

#include "../../input-models/MediaAsset.h"
#include "../../input-models/Sequence.h"
#include "../../input-models/TimePoints.h"
#include "../TimeConverter.h"
#include "TimeUnits.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// The length of an asset's recorded material at a rate (-1 when open-ended),
// computed the first time a boundary needs it; an element whose boundaries
// never count from the asset's end never asks, and so never meets the refusal
// of an asset without recorded ranges. Refers to the asset and the rate.
class MaterialLength {
 public:
  MaterialLength() = default;
  MaterialLength(const DataModel::MediaAssets::MediaAsset& asset, const TimePoints::Rate& rate)
      : asset_(&asset), rate_(&rate) {}
  // A length already computed for this asset at this rate.
  MaterialLength(const DataModel::MediaAssets::MediaAsset& asset, const TimePoints::Rate& rate,
                 Frames known)
      : asset_(&asset), rate_(&rate), known_(true), length_(known) {}

  Frames Get() {
    if (!known_) {
      length_ = Frames{TimeConverter::GetMediaAssetLimitInAndDuration(*asset_, *rate_).duration};
      known_ = true;
    }
    return length_;
  }

 private:
  const DataModel::MediaAssets::MediaAsset* asset_ = nullptr;
  const TimePoints::Rate* rate_ = nullptr;
  bool known_ = false;
  Frames length_;
};

// Fills the IN positions and lengths of the sides that the element's kind has
// (its mediaId is left alone); an element of no handled kind keeps zeros.
void ResolvePlayedParts(const Data::Sequences::Element& element, MaterialLength& material,
                        MediaBounds& bounds);

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
