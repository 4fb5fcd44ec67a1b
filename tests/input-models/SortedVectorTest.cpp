// The sorted containers of the asset model: insertion at the lower bound with
// one equality test there, the refusal of duplicates, and the comparators of
// ranges, keyed references and track layouts.
#include "input-models/SortedVector.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "input-models/MediaAsset.h"
#include "support/PlaylistBuilders.h"

namespace {

namespace Assets = Kov::DataModel::MediaAssets;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;
using Kov::BusinessEntityModel::BaseTypes::SortedVector;
using Kov::BusinessEntityModel::BaseTypes::SortedVectorSharedPointer;
using Kov::TimePoints::TimeBounds;
using testing_support::ExpectThrowExactly;

constexpr const char* kDuplicate =
    "Kov::DataModel::MediaAssets::SortedVector::Insert: item already present in the collection";

TimeBounds Range(std::int64_t start, std::int64_t end, std::uint8_t endFlag = 0) {
  return {{start, 0}, {end, endFlag}};
}

std::vector<std::string> Values(const Assets::TimeBoundsArray& ranges) {
  std::vector<std::string> values;
  for (const TimeBounds& range : ranges) {
    values.push_back(std::to_string(range.start.value) + ":" + std::to_string(range.end.value) +
                     "/" + std::to_string(range.end.boundaryFlag));
  }
  return values;
}

TEST(SortedVector, RangesOrderByStartThenEndAndIgnoreFlags) {
  const Assets::TimeBoundsCompareLess less;
  const Assets::TimeBoundsCompareEqual equal;
  EXPECT_TRUE(less(Range(5, 9), Range(5, 10)));
  EXPECT_TRUE(less(Range(5, 10), Range(6, 0)));
  EXPECT_FALSE(less(Range(6, 0), Range(5, 10)));
  // Same values, other flag: neither less nor greater, and still not equal.
  EXPECT_FALSE(less(Range(5, 9, 1), Range(5, 9)));
  EXPECT_FALSE(less(Range(5, 9), Range(5, 9, 1)));
  EXPECT_FALSE(equal(Range(5, 9, 1), Range(5, 9)));
  EXPECT_TRUE(equal(Range(5, 9, 1), Range(5, 9, 1)));
}

TEST(SortedVector, InsertsAtTheLowerBound) {
  Assets::TimeBoundsArray ranges;
  ranges.Insert(Range(5, 10));  // into an empty container
  ranges.Insert(Range(6, 0));   // at the end
  ranges.Insert(Range(5, 9));   // before both
  EXPECT_EQ((std::vector<std::string>{"5:9/0", "5:10/0", "6:0/0"}), Values(ranges));

  // A tie that is not equal goes before the held range.
  ranges.Insert(Range(5, 9, 1));
  EXPECT_EQ((std::vector<std::string>{"5:9/1", "5:9/0", "5:10/0", "6:0/0"}), Values(ranges));
}

TEST(SortedVector, TestsEqualityOnlyAtTheLowerBound) {
  Assets::TimeBoundsArray ranges;
  ranges.Insert(Range(5, 9));
  ranges.Insert(Range(5, 9, 1));  // now first: [5:9/1, 5:9/0]
  // Equal to the second tied range, not to the one at the lower bound: inserted again.
  ranges.Insert(Range(5, 9));
  EXPECT_EQ((std::vector<std::string>{"5:9/0", "5:9/1", "5:9/0"}), Values(ranges));
  // Equal to the range at the lower bound: refused, container unchanged.
  ExpectThrowExactly<std::runtime_error>([&] { ranges.Insert(Range(5, 9)); }, kDuplicate);
  EXPECT_EQ(3u, ranges.size());
}

TEST(SortedVector, KeyedReferencesSortByKeyText) {
  SortedVector<SharedReference<Assets::MediaResource>> resources;
  for (const char* key : {"b", "a", "ab"}) {
    resources.Insert(SharedReference<Assets::MediaResource>(nullptr, key));
  }
  ASSERT_EQ(3u, resources.size());
  EXPECT_EQ("a", resources[0].Key().Text());
  EXPECT_EQ("ab", resources[1].Key().Text());
  EXPECT_EQ("b", resources[2].Key().Text());
  ExpectThrowExactly<std::runtime_error>(
      [&] { resources.Insert(SharedReference<Assets::MediaResource>(nullptr, "a")); }, kDuplicate);
  // Reaching through a reference without an object throws instead of crashing.
  ExpectThrowExactly<std::runtime_error>([&] { (void)resources.front()->trackLayouts; },
                                         "null pointer");
}

TEST(SortedVector, TrackLayoutsAreEqualByIdsAndEntries) {
  auto track = std::make_shared<Assets::Track>(Assets::Track{"t", "", 0});
  auto other = std::make_shared<Assets::Track>(Assets::Track{"t", "", 0});
  const auto layout = [](const char* secondId, std::vector<Assets::TrackLayoutEntry> entries) {
    auto made = std::make_shared<Assets::TrackLayout>();
    made->id = "L";
    made->secondId = secondId;
    made->entries = std::move(entries);
    return made;
  };

  SortedVectorSharedPointer<Assets::TrackLayout> layouts;
  layouts.Insert(layout("x", {{"e", "", track}}));
  // Other second id, other entry count, other track object: all distinct.
  layouts.Insert(layout("y", {{"e", "", track}}));
  layouts.Insert(layout("x", {}));
  layouts.Insert(layout("x", {{"e", "", other}}));
  EXPECT_EQ(4u, layouts.size());
  // The lower bound is the first "L" inserted last; the same layout as it is refused.
  ExpectThrowExactly<std::runtime_error>(
      [&] {
        layouts.Insert(layout("x", {{"e", "", other}}));
      },
      kDuplicate);

  std::weak_ptr<Assets::Track> expired;
  {
    auto gone = std::make_shared<Assets::Track>();
    expired = gone;
  }
  ExpectThrowExactly<std::runtime_error>(
      [&] {
        layouts.Insert(layout("x", {{"e", "", expired}}));
      },
      "Kov::DataModel::MediaAssets::CompareEqualWeakPointer: weak pointer object is expired");

  SortedVectorSharedPointer<Assets::Track> tracks;
  tracks.Insert(track);
  ExpectThrowExactly<std::runtime_error>([&] { tracks.Insert(other); }, kDuplicate);
  ExpectThrowExactly<std::runtime_error>([&] { tracks.Insert(nullptr); }, "null pointer");
}

}  // namespace
