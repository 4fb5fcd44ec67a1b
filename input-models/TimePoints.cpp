// Shared constant time values, made once on first use.
#include "TimePoints.h"

#include <limits>

namespace Kov {
namespace TimePoints {

const Rate& VideoRates::Rate50() {
  static const Rate rate{50, 1};
  return rate;
}

const Rate& VideoRates::Rate5994() {
  static const Rate rate{60000, 1001};
  return rate;
}

const TimePoint& TimePoint::MaxValue() {
  static const TimePoint maxValue{std::numeric_limits<std::int64_t>::max()};
  return maxValue;
}

}  // namespace TimePoints
}  // namespace Kov
