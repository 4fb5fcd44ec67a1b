// MediaInfoConverter: timing only for assets with recorded ranges, and the
// track text of the first layout of the first resource, picture tracks first.
#include <gtest/gtest.h>

#include <vector>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Conversion::MediaInfoConverter;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;

const Kov::TimePoints::Rate kRate50 = Kov::TimePoints::VideoRates::Rate50();

// Tracks of the given kinds; the layout lists them in order.
struct LayoutFixture {
  std::vector<std::shared_ptr<Assets::Track>> tracks;
  std::shared_ptr<Assets::TrackLayout> layout = std::make_shared<Assets::TrackLayout>();

  explicit LayoutFixture(std::vector<std::int32_t> kinds) {
    for (const std::int32_t kind : kinds) {
      tracks.push_back(std::make_shared<Assets::Track>(Assets::Track{"t", "", kind}));
      layout->tracks.push_back(tracks.back().get());
    }
  }
};

Assets::MediaAsset AssetWithLayout(const std::shared_ptr<Assets::TrackLayout>& layout,
                                   const char* layoutKey = "layout",
                                   const char* resourceKey = "resource") {
  auto resource = std::make_shared<Assets::MediaResource>();
  resource->trackLayouts.Insert(SharedReference<Assets::TrackLayout>(layout, layoutKey));
  Assets::MediaAsset asset = AssetWithRanges("CLIP", {FieldRange(0, 200)});
  asset.resources.Insert(SharedReference<Assets::MediaResource>(resource, resourceKey));
  return asset;
}

TEST(MediaInfoConverter, TimingComesFromTheRecordedRanges) {
  Assets::MediaAsset bare;
  bare.id = "bare";
  auto info = MediaInfoConverter::ToMediaInfo(bare, kRate50);
  EXPECT_EQ("bare", info.id.Text());
  EXPECT_EQ(0, info.limitIn);
  EXPECT_EQ(0, info.duration);
  EXPECT_EQ("", info.tracksDescription);

  info = MediaInfoConverter::ToMediaInfo(
      AssetWithRanges("CLIP", {FieldRange(0, 10), OpenRange(90)}), kRate50);
  EXPECT_EQ(AssetIdOf("CLIP"), info.id);
  EXPECT_EQ(-1, info.duration);
  EXPECT_EQ(100,
            MediaInfoConverter::ToMediaInfo(AssetWithRanges("CLIP", {FieldRange(0, 200)}), kRate50)
                .duration);
  ExpectRefused(
      [] {
        MediaInfoConverter::ToMediaInfo(AssetWithRanges("CLIP", {FieldRange(0, 2)}), {0, 1});
      },
      kRateNotPositive);
}

TEST(MediaInfoConverter, ListsPictureTracksBeforeSoundTracks) {
  struct KindsCase {
    const char* name;
    std::vector<std::int32_t> kinds;
    const char* text;
  };
  const KindsCase cases[] = {
      {"sound, picture, sound", {0, 2, 0}, "V+M+M"},
      {"other kinds left out", {2, 0, 0, 1}, "V+M+M"},
      {"sound only", {0, 0}, "M+M"},
      {"picture only", {2, 3, 2}, "V+V"},
      {"no listed kind", {1, -1}, ""},
      {"no tracks", {}, ""},
  };
  for (const KindsCase& c : cases) {
    SCOPED_TRACE(c.name);
    const LayoutFixture fixture(c.kinds);
    EXPECT_EQ(c.text, MediaInfoConverter::ToMediaInfo(AssetWithLayout(fixture.layout), kRate50)
                          .tracksDescription);
  }
}

TEST(MediaInfoConverter, EmptyKeysMeanNoDescriptionAndMissingObjectsThrow) {
  const LayoutFixture fixture({2, 0});
  // Only the first resource counts, and its first layout.
  auto asset = AssetWithLayout(fixture.layout, "layout", "");
  auto complete = std::make_shared<Assets::MediaResource>();
  complete->trackLayouts.Insert(SharedReference<Assets::TrackLayout>(fixture.layout, "layout"));
  asset.resources.Insert(SharedReference<Assets::MediaResource>(complete, "z-resource"));
  EXPECT_EQ("", MediaInfoConverter::ToMediaInfo(asset, kRate50).tracksDescription);
  EXPECT_EQ("", MediaInfoConverter::ToMediaInfo(AssetWithLayout(fixture.layout, ""), kRate50)
                    .tracksDescription);
  EXPECT_EQ(
      "", MediaInfoConverter::ToMediaInfo(AssetWithLayout(nullptr, ""), kRate50).tracksDescription);

  ExpectRefused([] { MediaInfoConverter::ToMediaInfo(AssetWithLayout(nullptr), kRate50); },
                kNullPointer);
  Assets::MediaAsset nullResource = AssetWithRanges("CLIP", {FieldRange(0, 200)});
  nullResource.resources.Insert(SharedReference<Assets::MediaResource>(nullptr, "resource"));
  ExpectRefused([&] { MediaInfoConverter::ToMediaInfo(nullResource, kRate50); }, kNullPointer);
  fixture.layout->tracks.push_back(nullptr);
  ExpectRefused([&] { MediaInfoConverter::ToMediaInfo(AssetWithLayout(fixture.layout), kRate50); },
                kNullPointer);
}

}  // namespace
