// The sorted containers of the asset model: insertion at the lower bound with
// one equality test there, the refusal of duplicates, and what each comparator
// counts as the same item (every flag, second id and layout entry).
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;
using Kov::BusinessEntityModel::BaseTypes::SortedVector;
using Kov::BusinessEntityModel::BaseTypes::SortedVectorSharedPointer;
using Kov::TimePoints::TimeBounds;

TimeBounds Range(std::int64_t start, std::int64_t end, std::uint8_t endFlag = 0,
                 std::uint8_t startFlag = 0) {
  return {{start, startFlag}, {end, endFlag}};
}

std::vector<std::string> Values(const Assets::TimeBoundsArray& ranges) {
  std::vector<std::string> values;
  for (const TimeBounds& range : ranges) {
    values.push_back(std::to_string(range.start.value) + ":" + std::to_string(range.end.value) +
                     "/" + std::to_string(range.start.boundaryFlag) +
                     std::to_string(range.end.boundaryFlag));
  }
  return values;
}

// Ranges order by start, then end; flags take no part in the order.
TEST(SortedVector, InsertsAtTheLowerBoundAndTestsEqualityOnlyThere) {
  Assets::TimeBoundsArray ranges;
  ranges.Insert(Range(5, 10));  // into an empty container
  ranges.Insert(Range(6, 0));   // at the end
  ranges.Insert(Range(5, 9));   // before both
  EXPECT_EQ((std::vector<std::string>{"5:9/00", "5:10/00", "6:0/00"}), Values(ranges));
  // A tie that differs only in one flag is another item and goes before the held one.
  ranges.Insert(Range(5, 9, 1));
  ranges.Insert(Range(5, 9, 0, 1));
  EXPECT_EQ((std::vector<std::string>{"5:9/10", "5:9/01", "5:9/00", "5:10/00", "6:0/00"}),
            Values(ranges));
  // Equal to a tied range that is not at the lower bound: inserted again.
  ranges.Insert(Range(5, 9));
  EXPECT_EQ(6u, ranges.size());
  // Equal to the range at the lower bound: refused, container unchanged.
  ExpectRefused([&] { ranges.Insert(Range(5, 9)); }, kDuplicateItem);
  EXPECT_EQ(6u, ranges.size());
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
  ExpectRefused([&] { resources.Insert(SharedReference<Assets::MediaResource>(nullptr, "a")); },
                kDuplicateItem);
  // Reaching through a reference without an object throws instead of crashing.
  ExpectRefused([&] { (void)resources.front()->trackLayouts; }, kNullPointer);
}

TEST(SortedVector, TracksWithTheSameIdAndAnotherSecondIdAreBothKept) {
  SortedVectorSharedPointer<Assets::Track> tracks;
  tracks.Insert(std::make_shared<Assets::Track>(Assets::Track{"t", "first", 0}));
  tracks.Insert(std::make_shared<Assets::Track>(Assets::Track{"t", "second", 0}));
  EXPECT_EQ(2u, tracks.size());
  ExpectRefused(
      [&] {
        tracks.Insert(std::make_shared<Assets::Track>(Assets::Track{"t", "second", 2}));
      },
      kDuplicateItem);
  ExpectRefused([&] { tracks.Insert(nullptr); }, kNullPointer);
}

TEST(SortedVector, TrackLayoutsDifferInIdsAndInEveryPartOfTheirEntries) {
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
  // Each new layout ties with the held ones and goes first, so each is tested
  // against the one inserted just before it.
  layouts.Insert(layout("x", {{"e", "", track}}));
  layouts.Insert(layout("y", {{"e", "", track}}));                      // layout second id
  layouts.Insert(layout("y", {{"e", "s", track}}));                     // entry second id
  layouts.Insert(layout("y", {{"f", "s", track}}));                     // entry id
  layouts.Insert(layout("y", {{"f", "s", other}}));                     // entry track
  layouts.Insert(layout("y", {{"f", "s", other}, {"f", "s", other}}));  // entry count
  EXPECT_EQ(6u, layouts.size());
  ExpectRefused(
      [&] {
        layouts.Insert(layout("y", {{"f", "s", other}, {"f", "s", other}}));
      },
      kDuplicateItem);
  std::weak_ptr<Assets::Track> expired = std::make_shared<Assets::Track>();
  ExpectRefused(
      [&] {
        layouts.Insert(layout("y", {{"f", "s", expired}, {"f", "s", other}}));
      },
      kExpiredTrack);
}

TEST(SortedVector, ValueTypesCompareEveryPart) {
  using Kov::BusinessEntityModel::BaseTypes::FullyQualifiedName;
  EXPECT_EQ(Identifier::Empty(), Identifier(static_cast<const char*>(nullptr)));
  EXPECT_TRUE(FullyQualifiedName("a.B") == FullyQualifiedName("a.B"));
  EXPECT_FALSE(FullyQualifiedName("a.B") == FullyQualifiedName("a.b"));
  EXPECT_TRUE(FullyQualifiedName("a.B") < FullyQualifiedName("a.b"));
  EXPECT_EQ((Data::Channels::Speed{1, 2}), (Data::Channels::Speed{1, 2}));
  EXPECT_NE((Data::Channels::Speed{1, 2}), (Data::Channels::Speed{1, 3}));
  EXPECT_NE((Data::Channels::Speed{1, 2}), (Data::Channels::Speed{2, 2}));
  EXPECT_EQ(Data::Channels::Speed::Empty(), Data::Channels::Speed());
}

}  // namespace
