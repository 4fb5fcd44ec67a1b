// SPDX-License-Identifier: Apache-2.0
// TransitionEffect: what a transition item does around the cut between two
// media items: its effect class, how many frames lie before the cut, its length.
#pragma once

#include <cstdint>
#include <string>

namespace Kov {
namespace TimelineEngineModel {

struct TransitionEffect {
  /// 0 no transition; 1 and 2 the two effect classes, 2 overlapping the items.
  std::int32_t kind = 0;
  /// Frames of the transition before the cut.
  std::int64_t offset = 0;
  /// Length of the transition in frames.
  std::int64_t duration = 0;
  /// The effect's name; the conversion leaves it empty.
  std::string name;
};

}  // namespace TimelineEngineModel
}  // namespace Kov
