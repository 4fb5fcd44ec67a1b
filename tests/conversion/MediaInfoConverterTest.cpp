// MediaInfoConverter: timing only for assets with recorded ranges, and the
// track text of the first layout of the first resource, picture tracks first.
#include <gtest/gtest.h>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Conversion::MediaInfoConverter;

const Kov::TimePoints::Rate kRate50 = Kov::TimePoints::VideoRates::Rate50();

// An asset whose first resource's first layout lists tracks of the given kinds.
struct AssetWithLayout {
  std::vector<std::shared_ptr<Assets::Track>> tracks;
  std::shared_ptr<Assets::TrackLayout> layout = std::make_shared<Assets::TrackLayout>();
  Assets::MediaAsset asset = AssetWithRanges("CLIP", {FieldRange(0, 200)});

  AssetWithLayout(std::vector<std::int32_t> kinds, const char* layoutKey = "layout",
                  const char* resourceKey = "resource") {
    for (const std::int32_t kind : kinds) {
      tracks.push_back(std::make_shared<Assets::Track>(Assets::Track{"t", "", kind}));
      layout->tracks.push_back(tracks.back().get());
    }
    auto resource = std::make_shared<Assets::MediaResource>();
    resource->trackLayouts.Insert({*layoutKey == '\0' ? nullptr : layout, layoutKey});
    asset.resources.Insert({resource, resourceKey});
  }
  std::string Text() const {
    return MediaInfoConverter::ToMediaInfo(asset, kRate50).tracksDescription;
  }
};

TEST(MediaInfoConverter, TimingComesFromTheRecordedRanges) {
  Assets::MediaAsset bare;
  bare.id = "bare";
  const auto info = MediaInfoConverter::ToMediaInfo(bare, kRate50);
  EXPECT_EQ("bare 0 0 ", info.id.Text() + " " + std::to_string(info.limitIn) + " " +
                             std::to_string(info.duration) + " " + info.tracksDescription);
  const auto open = AssetWithRanges("CLIP", {FieldRange(0, 10), OpenRange(90)});
  EXPECT_EQ(-1, MediaInfoConverter::ToMediaInfo(open, kRate50).duration);
  ExpectRefused(
      [] {
        MediaInfoConverter::ToMediaInfo(AssetWithRanges("C", {FieldRange(0, 2)}), {0, 1});
      },
      kRateNotPositive);
}

TEST(MediaInfoConverter, ListsPictureTracksBeforeSoundTracks) {
  struct KindsCase {
    const char* name;
    std::vector<std::int32_t> kinds;
    const char* text;
  };
  for (const KindsCase& c : {KindsCase{"sound, picture, sound", {0, 2, 0}, "V+M+M"},
                             {"other kinds left out", {2, 0, 0, 1}, "V+M+M"},
                             {"sound only", {0, 0}, "M+M"},
                             {"picture only", {2, 3, 2}, "V+V"},
                             {"no listed kind", {1, -1}, ""},
                             {"no tracks", {}, ""}}) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(c.text, AssetWithLayout(c.kinds).Text());
  }
}

TEST(MediaInfoConverter, EmptyKeysMeanNoDescriptionAndMissingObjectsThrow) {
  EXPECT_EQ("", AssetWithLayout({2, 0}, "").Text());
  EXPECT_EQ("", AssetWithLayout({2, 0}, "layout", "").Text());
  // Only the first resource counts: a complete one after an empty key is not read.
  AssetWithLayout afterEmptyKey({2, 0}, "layout", "");
  const AssetWithLayout complete({2});
  afterEmptyKey.asset.resources.Insert({complete.asset.resources[0].Pointer(), "z"});
  EXPECT_EQ("", afterEmptyKey.Text());

  AssetWithLayout nullTrack({2, 0});
  nullTrack.layout->tracks.push_back(nullptr);
  ExpectRefused([&] { nullTrack.Text(); }, kNullPointer);
  AssetWithLayout nullLayout({2, 0});
  nullLayout.asset.resources[0]->trackLayouts = {};
  nullLayout.asset.resources[0]->trackLayouts.Insert({nullptr, "layout"});
  ExpectRefused([&] { nullLayout.Text(); }, kNullPointer);
  // A null resource: in TimelineConverter.RefusalsReachTheCallerWhole.
}

}  // namespace
