// SPDX-License-Identifier: Apache-2.0
// TimeConverter: the time arithmetic of the conversion. It reads an asset's
// rate, usable length and short range; resolves an element's IN and OUT
// boundaries to frame positions counted from the start of its asset's recorded
// material; and turns an element's transitions into effects with an offset
// before the cut and a length. Also holds ExternalSequenceInfo, the context of
// one conversion that every converter below the entry point reads.
#pragma once

#include <cstdint>
#include <memory>

#include "../engine-model/TransitionEffect.h"
#include "../input-models/Export.h"
#include "../input-models/Identifier.h"
#include "../input-models/MediaAsset.h"
#include "../input-models/Sequence.h"
#include "../input-models/TimePoints.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

/// The context of one conversion.
struct ExternalSequenceInfo {
  /// The identifier of the timeline being built; item identifiers derive from it.
  BusinessEntityModel::BaseTypes::Identifier timelineId;
  /// The sequence's rate, used by every time conversion of the sequence.
  TimePoints::Rate rate;
  /// The assets; the entry point never leaves it null (a null map reads as empty).
  std::shared_ptr<DataModel::MediaAssets::MediaAssetMap> mediaAssets;
};

/// Where usable material begins and how long it is, in frames.
struct LimitInAndDuration {
  /// First usable frame.
  std::int64_t limitIn = 0;
  /// Usable length in frames; -1 for open-ended material (still being recorded).
  std::int64_t duration = 0;
};

/// The asset an element plays and the part of it, per side, in frames from the
/// start of the asset's recorded material; a side the element lacks stays 0.
struct MediaBounds {
  /// The key of the asset played.
  BusinessEntityModel::BaseTypes::Identifier mediaId;
  /// First picture frame played.
  std::int64_t videoIn = 0;
  /// Picture frames played; -1 for open-ended material.
  std::int64_t videoDuration = 0;
  /// First sound frame played.
  std::int64_t audioIn = 0;
  /// Sound frames played; -1 for open-ended material.
  std::int64_t audioDuration = 0;
};

/// How an element's IN or OUT value is to be read.
enum BoundaryReference : std::int32_t {
  Absolute = 0,       ///< refused: the engine has no absolute time
  SameLimit = 1,      ///< IN from the asset's start; OUT back from its end
  OppositeLimit = 2,  ///< IN back from the asset's end; OUT from its start
  OtherBoundary = 3,  ///< IN back from the OUT position; OUT a length after IN
};

class TIMELINE_ENGINE_CONVERSION_API TimeConverter {
 public:
  /// 50/1 when the operator profile's video rate is 50 or 25, otherwise
  /// 60000/1001. Throws std::invalid_argument when the asset has no recorded
  /// range or no operator profile.
  static TimePoints::Rate GetMediaAssetRate(const DataModel::MediaAssets::MediaAsset& asset);

  /// Limit-in 0 and the total of the recorded ranges, each halved to frames on
  /// its own; duration -1 when the last range is open-ended.
  static LimitInAndDuration GetMediaAssetLimitInAndDuration(
      const DataModel::MediaAssets::MediaAsset& asset, const TimePoints::Rate& rate);

  /// The short range measured from the start of the first recorded range, or the
  /// whole material for an asset of kind 1.
  static LimitInAndDuration GetShortInAndDurationFromMediaAsset(
      const DataModel::MediaAssets::MediaAsset& asset, const TimePoints::Rate& rate);

  /// The element's asset identifier and the part of the asset that it plays.
  static MediaBounds ToMediaBounds(const Data::Sequences::Element& element,
                                   const ExternalSequenceInfo& info);

  /// The IN position from both raw values (fields).
  static long long FieldInToRelativeFromBeginning(long long inValue, long long outValue,
                                                  const Data::Sequences::Element& element,
                                                  const DataModel::MediaAssets::MediaAsset& asset,
                                                  const TimePoints::Rate& rate);

  /// The OUT position from the resolved IN position (frames) and the raw OUT value (fields).
  static long long FieldOutToRelativeFromBeginning(long long inPosition, long long outValue,
                                                   const Data::Sequences::Element& element,
                                                   const DataModel::MediaAssets::MediaAsset& asset,
                                                   const TimePoints::Rate& rate);

  static TimelineEngineModel::TransitionEffect ToVideoTransitionBounds(
      const Data::Sequences::Element& element);
  static TimelineEngineModel::TransitionEffect ToAudioTransitionBounds(
      const Data::Sequences::Element& element);
};

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
