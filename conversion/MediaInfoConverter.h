// SPDX-License-Identifier: Apache-2.0
// MediaInfoConverter: one media asset to its description for the editing
// engine: identifier, usable start and length in frames, and the text that
// lists the tracks of its first track layout, picture tracks first ("V+M+M").
#pragma once

#include "../engine-model/MediaInfo.h"
#include "../input-models/Export.h"
#include "../input-models/MediaAsset.h"
#include "../input-models/TimePoints.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

class TIMELINE_ENGINE_CONVERSION_API MediaInfoConverter {
 public:
  /// An asset without recorded ranges keeps limit-in and duration 0. Only the
  /// first resource and its first track layout are described; a reference with
  /// an empty key counts as absent, one with a key but no object throws
  /// std::runtime_error("null pointer").
  static TimelineEngineModel::MediaInfo ToMediaInfo(const DataModel::MediaAssets::MediaAsset& asset,
                                                    const TimePoints::Rate& rate);
};

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
