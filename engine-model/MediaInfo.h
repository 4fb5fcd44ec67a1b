// SPDX-License-Identifier: Apache-2.0
// MediaInfo: the editing engine's description of one media asset: usable start
// and length in frames, and a short text listing its picture and sound tracks.
#pragma once

#include <cstdint>
#include <string>

#include "../input-models/Identifier.h"

namespace Kov {
namespace TimelineEngineModel {

struct MediaInfo {
  /// The asset's key.
  BusinessEntityModel::BaseTypes::Identifier id;
  /// First usable frame, counted from the start of the recorded material.
  std::int64_t limitIn = 0;
  /// Usable length in frames; -1 for open-ended material; 0 when the asset has
  /// no recorded range.
  std::int64_t duration = 0;
  /// Picture tracks first, then sound tracks: "V+M+M".
  std::string tracksDescription;
};

}  // namespace TimelineEngineModel
}  // namespace Kov
