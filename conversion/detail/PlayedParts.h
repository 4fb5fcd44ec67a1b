// What the track conversion shares with the boundary resolution of
// TimeConverter: an asset's material length computed at most once, and the
// resolution of an element's boundaries against it. Internal to the library.
#pragma once

#include <cstdint>

#include "../../input-models/MediaAsset.h"
#include "../../input-models/Sequence.h"
#include "../../input-models/TimePoints.h"
#include "../Refusals.hpp"
#include "../TimeConverter.h"
#include "TimeUnits.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// The length of an asset's recorded material (-1 when open-ended): the total
// of its ranges, each halved to frames on its own; gaps between ranges do not
// count. Refuses an asset without recorded ranges.
inline Frames MaterialFrames(const DataModel::MediaAssets::MediaAsset& asset,
                             const FieldCounter& counter) {
  if (asset.timeBounds.empty()) {
    RefuseAssetWithoutRecordedRanges();
  }
  if (asset.timeBounds.back().end.value == TimePoints::TimePoint::MaxValue().value) {
    return Frames{-1};
  }
  Frames duration;
  for (const TimePoints::TimeBounds& range : asset.timeBounds) {
    duration = duration + counter.FramesBetween(range.end, range.start);
  }
  return duration;
}

// The length of an asset's recorded material at a rate (-1 when open-ended),
// computed the first time a boundary needs it; an element whose boundaries
// never count from the asset's end never asks, and so never meets the refusal
// of an asset without recorded ranges. Refers to the asset and the counter.
class MaterialLength {
 public:
  MaterialLength(const DataModel::MediaAssets::MediaAsset& asset, const FieldCounter& counter)
      : asset_(asset), counter_(counter) {}

  Frames Get() {
    if (!known_) {
      length_ = MaterialFrames(asset_, counter_);
      known_ = true;
    }
    return length_;
  }

 private:
  const DataModel::MediaAssets::MediaAsset& asset_;
  const FieldCounter& counter_;
  bool known_ = false;
  Frames length_;
};

// Boundary resolution. An element says how its IN and OUT values are to be
// read through two boundary kinds, shared by both its sides (in and out are
// the element's values in fields, in/2 and out/2 the same in frames):
//
//   kind            IN position (frames)          OUT position (frames)
//   SameLimit       in/2 from the asset's start   out/2 back from its end
//   OppositeLimit   in/2 back from its end        out/2 from its start
//   OtherBoundary   in/2 back from the OUT        out/2 after the IN
//                   (back from the asset's end
//                   when OUT is OtherBoundary too)
//
// The OUT position that counts from an end of the asset needs no IN position,
// so the IN resolution uses it directly and neither resolver calls the other.
// Material is anything with Frames Get(), the asset's length when first asked.
struct BoundaryKinds {
  std::int32_t in;
  std::int32_t out;
};

inline BoundaryKinds KindsOf(const Data::Sequences::Element& element) {
  return {element.inBoundaryKind, element.outBoundaryKind};
}

// The OUT position for an OUT kind that counts from an end of the asset.
template <typename Material>
Frames OutFromAssetLimit(std::int32_t outKind, Fields outValue, Material& material) {
  switch (outKind) {
    case OppositeLimit:
      return ToFrames(outValue);
    case SameLimit:
      return material.Get() - ToFrames(outValue);
    default:
      RefuseAbsoluteOut();
  }
}

template <typename Material>
Frames ResolveIn(BoundaryKinds kinds, Fields inValue, Fields outValue, Material& material) {
  const Frames in = ToFrames(inValue);
  switch (kinds.in) {
    case SameLimit:
      return in;
    case OppositeLimit:
      return material.Get() - in;
    case OtherBoundary:
      // Both boundaries relative to each other: IN counts back from the asset's end.
      if (kinds.out == OtherBoundary) {
        return material.Get() - in;
      }
      return OutFromAssetLimit(kinds.out, outValue, material) - in;
    default:
      RefuseAbsoluteIn();
  }
}

template <typename Material>
Frames ResolveOut(BoundaryKinds kinds, Frames inPosition, Fields outValue, Material& material) {
  if (kinds.out == OtherBoundary) {
    return inPosition + ToFrames(outValue);
  }
  return OutFromAssetLimit(kinds.out, outValue, material);
}

// One side of an element: IN first, then the length up to the OUT position.
template <typename Material>
void ResolveSide(BoundaryKinds kinds, Fields inValue, Fields outValue, Material& material,
                 std::int64_t& in, std::int64_t& length) {
  const Frames inPosition = ResolveIn(kinds, inValue, outValue, material);
  const Frames outPosition = ResolveOut(kinds, inPosition, outValue, material);
  in = inPosition.count;
  length = (outPosition - inPosition).count;
}

// Both sides of an audio-video element. They share the boundary kinds, and a
// refusal depends on nothing else: the picture side resolved whole before the
// sound side meets any refusal at the same point as both IN positions
// resolved first.
template <typename Material>
void ResolveBothSides(const Data::Sequences::AudioVideoElement& element, Material& material,
                      MediaBounds& bounds) {
  const BoundaryKinds kinds = KindsOf(element);
  ResolveSide(kinds, Fields{element.videoInValue}, Fields{element.videoOutValue}, material,
              bounds.videoIn, bounds.videoDuration);
  ResolveSide(kinds, Fields{element.audioInValue}, Fields{element.audioOutValue}, material,
              bounds.audioIn, bounds.audioDuration);
}

// One side of a video or audio element, into the given side of the bounds.
template <typename SingleSideElement, typename Material>
void ResolveSingleSide(const SingleSideElement& element, Material& material, std::int64_t& in,
                       std::int64_t& length) {
  ResolveSide(KindsOf(element), Fields{element.inValue}, Fields{element.outValue}, material, in,
              length);
}

// Fills the IN positions and lengths of the sides that the element's kind has
// (its mediaId is left alone); an element of no handled kind keeps zeros.
void ResolvePlayedParts(const Data::Sequences::Element& element, MaterialLength& material,
                        MediaBounds& bounds);

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
