// Field counting between time boundaries, by hand-picked cases: the sign of the
// distance, halves rounded away from zero on both sides of zero and on both
// sides of the point where the product leaves 64 bits, saturation, and the
// refusal of rates that cannot count anything.
#include <gtest/gtest.h>

#include <limits>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using Kov::Replivo::Tollan::DataModelConversion::ClipMediaTimeConverter;
using Kov::TimePoints::Rate;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
const Rate kRate50{50, 1};
// Counts exactly half a field per tick: distance * 2 * numerator is
// 10^7 * 2^39 * distance, which leaves 64 bits from a distance of 4 ticks.
const Rate kHalfFieldPerTick{5'000'000LL << 39, 1LL << 40};

std::int64_t Fields(std::int64_t to, std::int64_t from, const Rate& rate) {
  return ClipMediaTimeConverter::TimeBoundaryToFields({to, 0}, {from, 0}, rate);
}

struct CountingCase {
  const char* name;
  std::int64_t to;
  std::int64_t from;
  Rate rate;
  std::int64_t fields;
};

TEST(ClipMediaTimeConverter, CountsFieldsRoundingHalvesAwayFromZero) {
  const CountingCase cases[] = {
      {"one field", 100000, 0, kRate50, 1},
      {"one second", 10'000'000, 0, kRate50, 100},
      {"one second back", 0, 10'000'000, kRate50, -100},
      {"one second at 59.94 (119.88)", 10'000'000, 0, {60000, 1001}, 120},
      {"half a field up", 50000, 0, kRate50, 1},
      {"just below half", 49999, 0, kRate50, 0},
      {"half a field down", 0, 50000, kRate50, -1},
      {"just above minus half", 0, 49999, kRate50, 0},
      {"one and a half", 150000, 0, kRate50, 2},
      {"half in 64 bits", 1, 0, kHalfFieldPerTick, 1},
      {"minus half in 64 bits", 0, 1, kHalfFieldPerTick, -1},
      {"two and a half in 128 bits", 5, 0, kHalfFieldPerTick, 3},
      {"minus two and a half in 128 bits", 0, 5, kHalfFieldPerTick, -3},
      {"divisor beyond 64 bits", kMax, kMin, {1, kMax}, 0},
      {"saturates up", kMax, kMin, {kMax, 1}, kMax},
      {"saturates down", kMin, kMax, {kMax, 1}, kMin},
  };
  for (const CountingCase& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.fields, Fields(c.to, c.from, c.rate));
  }
}

TEST(ClipMediaTimeConverter, RefusesRatesThatAreNotPositive) {
  for (const Rate rate : {Rate{0, 1}, Rate{1, 0}, Rate{-50, 1}, Rate{50, -1}}) {
    SCOPED_TRACE(std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator));
    testing_support::ExpectRefused([&] { Fields(0, 0, rate); }, testing_support::kRateNotPositive);
  }
}

}  // namespace
