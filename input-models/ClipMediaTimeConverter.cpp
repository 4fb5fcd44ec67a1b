// Exact field counting: the distance and the rate are combined in 128-bit
// unsigned arithmetic on magnitudes, so no intermediate value can overflow.
#include "ClipMediaTimeConverter.h"

#include <limits>
#include <stdexcept>

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace DataModelConversion {

namespace {

__extension__ typedef unsigned __int128 UInt128;

constexpr std::uint64_t kTicksPerSecond = 10'000'000;
constexpr std::uint64_t kFieldsPerFrame = 2;

// scaled / divisor, a half rounded away from zero.
template <typename Unsigned>
Unsigned RoundedQuotient(Unsigned scaled, Unsigned divisor) {
  Unsigned quotient = scaled / divisor;
  const Unsigned remainder = scaled % divisor;
  if (remainder >= divisor - remainder) {
    ++quotient;
  }
  return quotient;
}

}  // namespace

std::int64_t ClipMediaTimeConverter::TimeBoundaryToFields(const TimePoints::TimeBoundary& to,
                                                          const TimePoints::TimeBoundary& from,
                                                          const TimePoints::Rate& rate) {
  if (rate.numerator <= 0 || rate.denominator <= 0) {
    throw std::invalid_argument(
        "TimeBoundaryToFields: the rate needs a positive numerator and denominator");
  }
  // Copies: the packed boundaries cannot be bound to references.
  const std::int64_t toValue = to.value;
  const std::int64_t fromValue = from.value;
  const bool negative = toValue < fromValue;
  // The distance of two 64-bit values fits 64 unsigned bits.
  const std::uint64_t distance =
      negative ? static_cast<std::uint64_t>(fromValue) - static_cast<std::uint64_t>(toValue)
               : static_cast<std::uint64_t>(toValue) - static_cast<std::uint64_t>(fromValue);

  // Both factors are below 2^64, so the product fits 128 unsigned bits exactly.
  // Real distances and rates fit 64 bits, where one hardware division gives
  // quotient and remainder; 128-bit division is a library call, and a slow one.
  const std::uint64_t factor = kFieldsPerFrame * static_cast<std::uint64_t>(rate.numerator);
  std::uint64_t scaled = 0;
  std::uint64_t divisor = 0;
  UInt128 quotient =
      !__builtin_mul_overflow(distance, factor, &scaled) &&
              !__builtin_mul_overflow(static_cast<std::uint64_t>(rate.denominator), kTicksPerSecond,
                                      &divisor)
          ? RoundedQuotient(scaled, divisor)
          : RoundedQuotient(static_cast<UInt128>(distance) * factor,
                            static_cast<UInt128>(rate.denominator) * kTicksPerSecond);

  const UInt128 limit = negative
                            ? static_cast<UInt128>(std::numeric_limits<std::int64_t>::max()) + 1
                            : static_cast<UInt128>(std::numeric_limits<std::int64_t>::max());
  if (quotient > limit) {
    quotient = limit;
  }
  const std::uint64_t magnitude = static_cast<std::uint64_t>(quotient);
  // Negating in unsigned arithmetic keeps 2^63 (the smallest value) representable.
  return negative ? static_cast<std::int64_t>(0 - magnitude) : static_cast<std::int64_t>(magnitude);
}

}  // namespace DataModelConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
