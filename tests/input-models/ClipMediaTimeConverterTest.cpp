// Field counting between time boundaries: exact rounding, sign, saturation and
// the refusal of rates that cannot count anything.
#include "input-models/ClipMediaTimeConverter.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "support/PlaylistBuilders.h"

namespace {

using Kov::Replivo::Tollan::DataModelConversion::ClipMediaTimeConverter;
using Kov::TimePoints::Rate;
using Kov::TimePoints::TimeBoundary;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

std::int64_t Fields(std::int64_t to, std::int64_t from, Rate rate) {
  return ClipMediaTimeConverter::TimeBoundaryToFields(TimeBoundary{to, 0}, TimeBoundary{from, 0},
                                                      rate);
}

TEST(ClipMediaTimeConverter, CountsFieldsAtTheRateWithTheSignOfTheDistance) {
  const Rate rate50 = Kov::TimePoints::VideoRates::Rate50();
  EXPECT_EQ(1, Fields(100000, 0, rate50));
  EXPECT_EQ(100, Fields(10'000'000, 0, rate50));  // one second
  EXPECT_EQ(-100, Fields(0, 10'000'000, rate50));
  // One second at 60000/1001 is 119.88 fields.
  EXPECT_EQ(120, Fields(10'000'000, 0, Kov::TimePoints::VideoRates::Rate5994()));
}

TEST(ClipMediaTimeConverter, RoundsHalvesAwayFromZero) {
  const Rate rate50 = Kov::TimePoints::VideoRates::Rate50();
  EXPECT_EQ(1, Fields(50000, 0, rate50));   // 0.5
  EXPECT_EQ(0, Fields(49999, 0, rate50));   // just below
  EXPECT_EQ(-1, Fields(0, 50000, rate50));  // -0.5
  EXPECT_EQ(0, Fields(0, 49999, rate50));
  EXPECT_EQ(2, Fields(150000, 0, rate50));  // 1.5
}

TEST(ClipMediaTimeConverter, SaturatesInsteadOfOverflowing) {
  const Rate fast{kMax, 1};
  EXPECT_EQ(kMax, Fields(kMax, kMin, fast));
  EXPECT_EQ(kMin, Fields(kMin, kMax, fast));
  // The widest distance at the slowest rate still counts exactly.
  EXPECT_EQ(0, Fields(kMax, kMin, Rate{1, kMax}));
}

TEST(ClipMediaTimeConverter, RefusesRatesThatAreNotPositive) {
  const char* const message =
      "TimeBoundaryToFields: the rate needs a positive numerator and denominator";
  for (const Rate rate : {Rate{0, 1}, Rate{1, 0}, Rate{-50, 1}, Rate{50, -1}}) {
    testing_support::ExpectThrowExactly<std::invalid_argument>([&] { Fields(0, 0, rate); },
                                                               message);
  }
}

}  // namespace
