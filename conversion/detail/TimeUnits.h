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

// FieldsBetween at one rate, many times over: an asset of 100 recorded ranges
// is 100 counts, and each call of the general count checks the rate and its
// overflow again. Here the rate is checked once, and a count whose product
// fits 64 bits takes one division, rounded exactly as the general count rounds
// (to the nearest, halves away from zero); its quotient is below 2^64 / 10^7,
// so it never needs the general count's saturation. Every other count (a rate
// the general count refuses, a product beyond 64 bits) goes to the general
// count itself, so results and refusals are the same.
class FieldCounter {
 public:
  explicit FieldCounter(const TimePoints::Rate& rate) : rate_(rate) {
    constexpr std::uint64_t kTicksPerSecond = 10'000'000;
    constexpr std::uint64_t kFieldsPerFrame = 2;
    if (rate.numerator > 0 && rate.denominator > 0 &&
        !__builtin_mul_overflow(static_cast<std::uint64_t>(rate.denominator), kTicksPerSecond,
                                &divisor_)) {
      factor_ = kFieldsPerFrame * static_cast<std::uint64_t>(rate.numerator);
      // At most 2^63, as the factor is at least 2: the sum cannot wrap.
      distanceLimit_ = ~std::uint64_t{0} / factor_ + 1;
    }
  }

  // The frames from one time boundary to another: the count of fields
  // halved toward zero.
  Frames FramesBetween(const TimePoints::TimeBoundary& to,
                       const TimePoints::TimeBoundary& from) const {
    bool negative = false;
    std::uint64_t count = 0;
    if (!Count(to, from, negative, count)) {
      return ToFrames(FieldsBetween(to, from, rate_));
    }
    const std::uint64_t frames = count / 2;
    return Frames{negative ? static_cast<std::int64_t>(0 - frames)
                           : static_cast<std::int64_t>(frames)};
  }

 private:
  // The count's magnitude and sign, or false where the general count decides.
  bool Count(const TimePoints::TimeBoundary& to, const TimePoints::TimeBoundary& from,
             bool& negative, std::uint64_t& count) const {
    // Copies: the packed boundaries cannot be bound to references.
    const std::int64_t toValue = to.value;
    const std::int64_t fromValue = from.value;
    negative = toValue < fromValue;
    const std::uint64_t distance =
        negative ? static_cast<std::uint64_t>(fromValue) - static_cast<std::uint64_t>(toValue)
                 : static_cast<std::uint64_t>(toValue) - static_cast<std::uint64_t>(fromValue);
    // The limit is 0 for a rate that the general count refuses.
    if (distance >= distanceLimit_) {
      return false;
    }
    const std::uint64_t scaled = distance * factor_;
    count = scaled / divisor_;
    const std::uint64_t remainder = scaled % divisor_;
    if (remainder >= divisor_ - remainder) {
      ++count;
    }
    return true;
  }

  const TimePoints::Rate& rate_;
  std::uint64_t factor_ = 0;
  std::uint64_t divisor_ = 0;
  // The smallest distance whose product with the factor leaves 64 bits.
  std::uint64_t distanceLimit_ = 0;
};

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
