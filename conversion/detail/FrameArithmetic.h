// Signed 64-bit arithmetic of the conversion. Results that leave the 64-bit
// range wrap as two's complement, computed in unsigned arithmetic so that no
// overflow is ever undefined; the smallest value divided by -1 stays the
// smallest value instead of trapping. Internal to the library.
#pragma once

#include <cstdint>

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

constexpr std::int64_t WrappingAdd(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) + static_cast<std::uint64_t>(b));
}

constexpr std::int64_t WrappingSubtract(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
}

constexpr std::int64_t WrappingMultiply(std::int64_t a, std::int64_t b) {
  return static_cast<std::int64_t>(static_cast<std::uint64_t>(a) * static_cast<std::uint64_t>(b));
}

// Division truncating toward zero; the caller rules out a zero divisor.
constexpr std::int64_t WrappingDivide(std::int64_t dividend, std::int64_t divisor) {
  return divisor == -1 ? WrappingSubtract(0, dividend) : dividend / divisor;
}

// A count of video fields as frames: two fields to a frame, truncating toward
// zero (7 gives 3, -7 gives -3), whatever the rate.
constexpr std::int64_t FieldsToFrames(std::int64_t fields) {
  return fields / 2;
}

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
