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
  BusinessEntityModel::BaseTypes::Identifier id;
  BusinessEntityModel::BaseTypes::Identifier secondaryId;
  std::int64_t duration = 0;
  std::vector<Track> tracks;
  std::vector<MediaInfo> mediaInfos;
};

}  // namespace TimelineEngineModel
}  // namespace Kov
