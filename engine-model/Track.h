// SPDX-License-Identifier: Apache-2.0
// Track: one lane of the timeline, sharing its items in timeline order.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../input-models/Identifier.h"
#include "TrackItem.h"

namespace Kov {
namespace TimelineEngineModel {

struct Track {
  /// The track's identifier.
  BusinessEntityModel::BaseTypes::Identifier id;
  /// Every track built by the conversion is of type 1.
  std::int32_t type = 0;
  /// Media and transition items in timeline order.
  std::vector<std::shared_ptr<TrackItem>> items;
};

}  // namespace TimelineEngineModel
}  // namespace Kov
