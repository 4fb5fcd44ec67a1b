// SPDX-License-Identifier: Apache-2.0
// Time values shared with the base libraries: rates, packed time boundaries and
// ranges as they are exchanged byte for byte, and the largest time point that
// marks material still being recorded.
#pragma once

#include <cstdint>

#include "Export.h"

namespace Kov {
namespace TimePoints {

/// A frame or field rate as a fraction, copied freely.
struct Rate {
  /// Frames (or fields) per numerator/denominator seconds: the numerator.
  std::int64_t numerator = 0;
  /// The denominator; 1 or 1001 in practice.
  std::int64_t denominator = 0;
};

namespace VideoRates {
/// 50/1: the rate of the 50 Hz family.
TIMELINE_ENGINE_CONVERSION_API const Rate& Rate50();
/// 60000/1001: the rate of the 59.94 Hz family.
TIMELINE_ENGINE_CONVERSION_API const Rate& Rate5994();
}  // namespace VideoRates

// Arrays of ranges are exchanged with other libraries byte for byte, so both
// records are packed: 9 and 18 bytes, no padding.
#pragma pack(push, 1)
/// One end of a time range (9 packed bytes).
struct TimeBoundary {
  /// The time point, in ticks of 100 ns; TimePoint::MaxValue() means "no end yet".
  std::int64_t value = 0;
  /// A qualifier of the time point, only ever compared for equality.
  std::uint8_t boundaryFlag = 0;
};

struct TimeBounds {
  /// Where the range begins.
  TimeBoundary start;
  /// Where the range ends; TimePoint::MaxValue() while still being recorded.
  TimeBoundary end;
};
#pragma pack(pop)

static_assert(sizeof(TimeBoundary) == 9, "TimeBoundary is exchanged as 9 packed bytes");
static_assert(sizeof(TimeBounds) == 18, "TimeBounds is exchanged as 18 packed bytes");

struct TimePoint {
  /// The time point, in ticks of 100 ns.
  std::int64_t value = 0;

  /// The largest signed 64-bit time point: the end of material still being recorded.
  TIMELINE_ENGINE_CONVERSION_API static const TimePoint& MaxValue();
};

}  // namespace TimePoints
}  // namespace Kov
