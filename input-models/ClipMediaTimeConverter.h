// SPDX-License-Identifier: Apache-2.0
// Field counting between two time boundaries: the one measurement of absolute
// time that the conversion relies on.
#pragma once

#include <cstdint>

#include "Export.h"
#include "TimePoints.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace DataModelConversion {

class TIMELINE_ENGINE_CONVERSION_API ClipMediaTimeConverter {
 public:
  /// Video fields from `from` to `to` at `rate` (positive when `to` is later).
  /// Boundary values count 100 ns ticks; the count is
  ///   (to - from) * 2 * rate.numerator / (rate.denominator * 10'000'000),
  /// computed exactly, rounded to the nearest integer with halves away from
  /// zero, and saturated to the 64-bit range. A rate whose numerator or
  /// denominator is not positive throws std::invalid_argument.
  static std::int64_t TimeBoundaryToFields(const TimePoints::TimeBoundary& to,
                                           const TimePoints::TimeBoundary& from,
                                           const TimePoints::Rate& rate);
};

}  // namespace DataModelConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
