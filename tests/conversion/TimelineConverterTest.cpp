// TimelineConverter: whole playlists worked out by hand, the timeline
// identifier, the agreement of the asset listing with the look-ups, and every
// refusal of the library reached through the entry point, whole.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Conversion::OppositeLimit;
using Conversion::OtherBoundary;
using Conversion::SameLimit;
using Conversion::TimelineConverter;
using Strings = std::vector<std::string>;

std::shared_ptr<Assets::MediaAssetMap> MapOf(std::initializer_list<Assets::MediaAsset> assets) {
  return InfoWith(assets).mediaAssets;
}

Sequences::AudioVideoElement WithVideoTransition(Sequences::AudioVideoElement element,
                                                 std::int32_t kind, std::int32_t fields) {
  element.transitionType = kind;
  element.videoTransitionDuration = fields;
  return element;
}

Engine::Timeline ByItems(const Sequences::Playlist& playlist,
                         std::shared_ptr<Assets::MediaAssetMap> assets) {
  return TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems,
                                       std::move(assets));
}

TEST(TimelineConverter, HighlightWithOverlapsSpeedChangeAndAuxClip) {
  const auto timeline = ByItems(HighlightPlaylist(), HighlightAssets());
  ASSERT_EQ(2u, timeline.tracks.size());
  EXPECT_EQ((Strings{
                "M 0+100 0+100 | 50+100 50+100",      // E1 at 0; positions 100, 100
                "V 2 20/20",                          // pulls the picture back to 80
                "A 2 10/10",                          // pulls the sound back to 90
                "M 80+100 90+100 | 100+100 100+100",  // positions 180, 190
                "V 1 2/5",                            // no pull-back
                "M 180+60 190+60 | 1070+30 1070+30",  // 30 frames at half speed
                "M 240+100 250+100 | 0+50 0+50",      // speed carried over
            }),
            Describe(timeline.tracks[0]));
  // The larger end of the last media item: sound at 250 + 100.
  EXPECT_EQ(350, timeline.duration);
  EXPECT_EQ(Strings{"M 0+0 0+100 | 0+0 50+100"}, Describe(timeline.tracks[1]));

  const std::string timelineId = GuidText(Data::Sequences::Guid("SEQ-1"));
  EXPECT_EQ(timelineId, timeline.id.Text());
  EXPECT_EQ(timelineId.substr(0, 35) + "1", timeline.tracks[0].id.Text());
  EXPECT_EQ(timelineId.substr(0, 35) + "0", timeline.tracks[1].id.Text());
  EXPECT_EQ("", timeline.secondaryId.Text());
  ASSERT_EQ(3u, timeline.mediaInfos.size());
  for (const auto& info : timeline.mediaInfos) {
    SCOPED_TRACE(info.id.Text());
    const bool cameraA = info.id == AssetIdOf("CAM-A");
    const bool cameraB = info.id == AssetIdOf("CAM-B");
    EXPECT_EQ(cameraA ? 1200 : cameraB ? 500 : 2000, info.duration);
    EXPECT_EQ(cameraB ? "V+M+M" : "", info.tracksDescription);
  }
}

TEST(TimelineConverter, DurationWalkSkipsTransitionsAndEndsOfMinusOne) {
  // E1 ends at 100. E2 plays backwards: 100 - 200 = -100. E3 starts at the
  // clamped 0 with -2 frames at double speed: ends at -1, which does not count;
  // its transition item does not count either, so E2's end decides.
  auto third = WithVideoTransition(AvElement("CLIP", SameLimit, OppositeLimit, 4, 0),
                                   VideoTransition::kCut, 0);
  third.speed = {2, 1};
  const auto playlist = PlaylistOf({AvElement("CLIP", SameLimit, OppositeLimit, 0, 200),
                                    AvElement("CLIP", SameLimit, OppositeLimit, 400, 0), third});
  const auto timeline = ByItems(playlist, MapOf({AssetWithRanges("CLIP", {FieldRange(0, 2000)})}));
  EXPECT_EQ((Strings{"M 0+100 0+100 | 0+100 0+100", "M 100+-200 100+-200 | 200+-200 200+-200",
                     "V 1 0/0", "M 0+-1 0+-1 | 2+-2 2+-2"}),
            Describe(timeline.tracks[0]));
  EXPECT_EQ(-100, timeline.duration);
}

// Any mode but 0 reads the playlist's own duration, truncated to frames; the
// aux track does not count.
TEST(TimelineConverter, PlaylistDurationForEveryModeButTrackItems) {
  struct ModeCase {
    const char* name;
    std::int32_t mode;
    std::int64_t fields, frames;
  };
  auto playlist = HighlightPlaylist();
  for (const ModeCase& c :
       {ModeCase{"from the playlist", TimelineConverter::FromPlaylist, 301, 150},
        {"mode 5", 5, 301, 150},
        {"mode -1", -1, 301, 150},
        {"negative, toward zero", TimelineConverter::FromPlaylist, -7, -3},
        {"from the track items", TimelineConverter::FromTrackItems, 301, 350}}) {
    SCOPED_TRACE(c.name);
    playlist.durationInFields = c.fields;
    EXPECT_EQ(c.frames,
              TimelineConverter::ToTimeline(
                  playlist, static_cast<TimelineConverter::DurationMode>(c.mode), HighlightAssets())
                  .duration);
  }
}

TEST(TimelineConverter, TimelineIdIsTheSequenceGuidOfAnyNonEmptyId) {
  for (const char* umId : {"", "A", "ABCDEFGH", "ABCDEFGHIJ", "ABCDEFGHIJK"}) {
    SCOPED_TRACE(umId);
    Sequences::Playlist playlist;  // no elements, no aux clip, no map
    playlist.umId = Data::Clips::UmId(umId);
    const auto timeline = ByItems(playlist, nullptr);
    const std::string id = *umId == '\0' ? "" : GuidText(Data::Sequences::Guid(umId));
    EXPECT_EQ(id, timeline.id.Text());
    ASSERT_EQ(1u, timeline.tracks.size());
    EXPECT_EQ(id.empty() ? "1" : id.substr(0, 35) + "1", timeline.tracks[0].id.Text());
  }
}

// Generated sequences check the listing against every look-up; here the
// empty id and the aux clip.
TEST(TimelineConverter, ListedAssetsPutTheAuxClipFirstAndKeepRepeats) {
  auto playlist = HighlightPlaylist();
  playlist.audioVideoTrack.elements[1].umId = Data::Clips::UmId("");  // an empty id is a key too
  EXPECT_TRUE(TimelineConverter::ListAssetsFromPlaylist(PlaylistOf({})).empty());
  EXPECT_EQ((std::vector<Identifier>{AssetIdOf("AUX"), AssetIdOf("CAM-A"), AssetIdOf(""),
                                     AssetIdOf("CAM-A"), AssetIdOf("CAM-B")}),
            TimelineConverter::ListAssetsFromPlaylist(playlist));
  auto assets = HighlightAssets();
  ByItems(HighlightPlaylist(), assets);
  EXPECT_EQ(1, assets.use_count());  // the timeline keeps no reference to the map
}

// A refusal from each converter below the entry point reaches the caller
// whole: the highlight changed in one place. Generated sequences plant the
// refusals of elements.
TEST(TimelineConverter, RefusalsReachTheCallerWhole) {
  using Change = void (*)(Sequences::Playlist&, Assets::MediaAssetMap&);
  struct RefusalCase {
    const char* name;
    Change change;
    Refusal refusal;
  };
  const RefusalCase cases[] = {
      {"aux asset missing",
       [](Sequences::Playlist& p, Assets::MediaAssetMap&) {
         p.auxTrackUmId = Data::Clips::UmId("X");
       },
       kAuxAssetMissing},
      {"a resource key without its object",
       [](Sequences::Playlist&, Assets::MediaAssetMap& m) {
         m[AssetIdOf("CAM-A")].resources.Insert({nullptr, "resource"});
       },
       kNullPointer},
  };
  for (const RefusalCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto playlist = HighlightPlaylist();
    auto assets = HighlightAssets();
    c.change(playlist, *assets);
    ExpectRefused([&] { ByItems(playlist, assets); }, c.refusal);
  }
  // A missing map reads as an empty one.
  ExpectRefused([&] { ByItems(HighlightPlaylist(), nullptr); }, kTrackAssetMissing);
}

}  // namespace
