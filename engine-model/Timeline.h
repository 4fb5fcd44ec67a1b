// SPDX-License-Identifier: Apache-2.0
// Timeline: the editing engine's model of one whole sequence, as the conversion
// returns it: tracks of items and one description per asset.
#pragma once

#include <cstdint>
#include <vector>

#include "../input-models/Identifier.h"
#include "MediaInfo.h"
#include "Track.h"

namespace Kov {
namespace TimelineEngineModel {

struct Timeline {
  /// The timeline's identifier, made from the playlist's clip id.
  BusinessEntityModel::BaseTypes::Identifier id;
  /// A second identifier; the conversion leaves it empty.
  BusinessEntityModel::BaseTypes::Identifier secondaryId;
  /// Length in frames: the end of the last media item, or the playlist's own
  /// length, as the duration mode says.
  std::int64_t duration = 0;
  /// The audio-video track first, then the aux track when there is one.
  std::vector<Track> tracks;
  /// One description per asset of the map, in the map's order.
  std::vector<MediaInfo> mediaInfos;
};

}  // namespace TimelineEngineModel
}  // namespace Kov
