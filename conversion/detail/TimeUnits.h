// The units of time of the conversion, each a type of its own so that a count
// of one unit cannot be taken for another. Three units meet here:
//
//   ticks   the values of the assets' time boundaries: 100 ns each, 10,000,000
//           to the second. Only ClipMediaTimeConverter measures them, as
//           fields at a rate.
//   fields  what the sequence stores: the elements' IN and OUT values, the
//           transition durations, the playlist's duration. Two fields make a
//           frame, whatever the rate.
//   frames  every position and length that the conversion produces.
//
// One second of material, worked through:
//   at 50/1         10,000,000 ticks = 100 fields                    = 50 frames
//   at 60000/1001   10,000,000 ticks = 119.88 fields, counted as 120 = 60 frames
// Fields become frames by halving toward zero: 7 fields are 3 frames, -7 are -3.
//
// Frames add and subtract with the wrapping arithmetic of FrameArithmetic.h.
// Internal to the library.
#pragma once

#include <cstdint>

#include "../../input-models/ClipMediaTimeConverter.h"
#include "../../input-models/TimePoints.h"
#include "FrameArithmetic.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

struct Fields {
  std::int64_t count = 0;
};

struct Frames {
  std::int64_t count = 0;
};

constexpr Frames ToFrames(Fields fields) {
  return Frames{FieldsToFrames(fields.count)};
}

constexpr Frames operator+(Frames a, Frames b) {
  return Frames{WrappingAdd(a.count, b.count)};
}

constexpr Frames operator-(Frames a, Frames b) {
  return Frames{WrappingSubtract(a.count, b.count)};
}

// The fields from one time boundary (ticks) to another at a rate.
inline Fields FieldsBetween(const TimePoints::TimeBoundary& to,
                            const TimePoints::TimeBoundary& from, const TimePoints::Rate& rate) {
  return Fields{DataModelConversion::ClipMediaTimeConverter::TimeBoundaryToFields(to, from, rate)};
}

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
