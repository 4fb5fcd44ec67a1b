// TimelineConverter: whole playlists worked out by hand, every refusal reached
// through the entry point, the agreement of the asset listing with the
// look-ups, and the absence of partial results.
#include "conversion/TimelineConverter.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "engine-model/FxTransitionItem.h"
#include "engine-model/MediaSummaryItem.h"
#include "support/PlaylistBuilders.h"

namespace {

using namespace testing_support;
using Conversion::TimelineConverter;
namespace Engine = Kov::TimelineEngineModel;

// "M tlVideoIn+len tlAudioIn+len | mediaVideoIn+len mediaAudioIn+len" or
// "V kind offset/duration" (A for audio).
std::string Describe(const Engine::TrackItem& item) {
  if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(&item)) {
    return "M " + std::to_string(media->timelineVideoIn) + "+" +
           std::to_string(media->timelineVideoDuration) + " " +
           std::to_string(media->timelineAudioIn) + "+" +
           std::to_string(media->timelineAudioDuration) + " | " +
           std::to_string(media->mediaVideoIn) + "+" + std::to_string(media->mediaVideoDuration) +
           " " + std::to_string(media->mediaAudioIn) + "+" +
           std::to_string(media->mediaAudioDuration);
  }
  const auto& effect = dynamic_cast<const Engine::FxTransitionItem&>(item).FxTransition();
  return std::string(item.GetType() == Engine::FxVideoTransition ? "V " : "A ") +
         std::to_string(effect.kind) + " " + std::to_string(effect.offset) + "/" +
         std::to_string(effect.duration);
}

std::vector<std::string> Describe(const Engine::Track& track) {
  std::vector<std::string> items;
  for (const auto& item : track.items) {
    items.push_back(Describe(*item));
  }
  return items;
}

std::shared_ptr<Assets::MediaAssetMap> MapOf(std::initializer_list<Assets::MediaAsset> assets) {
  return InfoWith(assets).mediaAssets;
}

Sequences::Playlist PlaylistOf(std::vector<Sequences::AudioVideoElement> elements,
                               const char* auxClip = "") {
  Sequences::Playlist playlist;
  playlist.umId = Data::Clips::UmId("SEQ-1");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.audioVideoTrack.elements = std::move(elements);
  playlist.auxTrackUmId = Data::Clips::UmId(auxClip);
  for (auto& element : playlist.audioVideoTrack.elements) {
    element.playlistNumber = 3;
    element.itemNumber = static_cast<std::int32_t>(++playlist.number);
    element.number = playlist.number;
  }
  return playlist;
}

Sequences::AudioVideoElement WithVideoTransition(Sequences::AudioVideoElement element,
                                                 std::int32_t kind, std::int32_t fields) {
  element.transitionType = kind;
  element.videoTransitionDuration = fields;
  return element;
}

// CAM-A: 1000 + 200 frames (the second range's odd field is lost); CAM-B: 500
// frames; AUX: short range 50 frames in, 200 long.
std::shared_ptr<Assets::MediaAssetMap> HighlightAssets() {
  auto aux = AssetWithRanges("AUX", {FieldRange(0, 4000)});
  aux.shortBounds = FieldRange(100, 501);
  return MapOf({AssetWithRanges("CAM-A", {FieldRange(0, 2000), FieldRange(3000, 3401)}),
                AssetWithRanges("CAM-B", {FieldRange(0, 1000)}), aux});
}

Sequences::Playlist HighlightPlaylist() {
  // E2: IN 400 back from the end of CAM-B = 100, OUT 200 from its start; opens
  // with an overlapping video (offset 20) and audio (offset 10) transition.
  auto second = WithVideoTransition(AvElement("CAM-B", 2, 2, 800, 400), 5, 40);
  second.audioTransitionType = 3;
  second.audioTransitionDuration = 20;
  // E3: OUT 100 back from the end of CAM-A = 1100, IN 30 before it; half speed;
  // a centred, non-overlapping transition of 5 frames (offset 2).
  auto third = WithVideoTransition(AvElement("CAM-A", 3, 1, 60, 200), 14, 10);
  third.speed = {1, 2};
  // E4: IN 0, OUT 50 after it, still at half speed.
  return PlaylistOf(
      {AvElement("CAM-A", 1, 2, 100, 300), second, third, AvElement("CAM-B", 1, 3, 0, 100)}, "AUX");
}

TEST(TimelineConverter, HighlightWithOverlapsSpeedChangeAndAuxClip) {
  const auto playlist = HighlightPlaylist();
  const auto timeline =
      TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, HighlightAssets());
  ASSERT_EQ(2u, timeline.tracks.size());
  EXPECT_EQ((std::vector<std::string>{
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
  EXPECT_EQ(std::vector<std::string>{"M 0+0 0+100 | 0+0 50+100"}, Describe(timeline.tracks[1]));

  char buffer[37];
  const std::string timelineId = Data::Sequences::Guid("SEQ-1").ToString(buffer, sizeof buffer);
  EXPECT_EQ(timelineId, timeline.id.Text());
  EXPECT_EQ(timelineId.substr(0, 35) + "1", timeline.tracks[0].id.Text());
  EXPECT_EQ(timelineId.substr(0, 35) + "0", timeline.tracks[1].id.Text());
  EXPECT_EQ("", timeline.secondaryId.Text());
  ASSERT_EQ(3u, timeline.mediaInfos.size());
  for (const auto& info : timeline.mediaInfos) {
    EXPECT_EQ(info.id == AssetIdOf("CAM-A")   ? 1200
              : info.id == AssetIdOf("CAM-B") ? 500
                                              : 2000,
              info.duration);
  }
}

TEST(TimelineConverter, DurationWalkSkipsTransitionsAndEndsOfMinusOne) {
  // E1 ends at 100. E2 plays backwards: 100 - 200 = -100. E3 starts at the
  // clamped 0 with -2 frames at double speed: ends at -1, which does not count;
  // its transition item does not count either, so E2's end decides.
  auto third = WithVideoTransition(AvElement("CLIP", 1, 2, 4, 0), 1, 0);
  third.speed = {2, 1};
  const auto playlist =
      PlaylistOf({AvElement("CLIP", 1, 2, 0, 200), AvElement("CLIP", 1, 2, 400, 0), third});
  const auto assets = MapOf({AssetWithRanges("CLIP", {FieldRange(0, 2000)})});
  const auto timeline =
      TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets);
  EXPECT_EQ((std::vector<std::string>{"M 0+100 0+100 | 0+100 0+100",
                                      "M 100+-200 100+-200 | 200+-200 200+-200", "V 1 0/0",
                                      "M 0+-1 0+-1 | 2+-2 2+-2"}),
            Describe(timeline.tracks[0]));
  EXPECT_EQ(-100, timeline.duration);
}

TEST(TimelineConverter, OpenEndedMaterialAndThePlaylistDuration) {
  // LIVE is still recording: its duration is -1. E1 runs to the (open) end:
  // -1 frames, no room on the timeline. E2: IN 10 back from the end = -11, OUT 50.
  auto aux = AssetWithRanges("AUX", {FieldRange(0, 100), OpenRange(200)});
  aux.assetKind = 1;  // the whole material: open, so the aux item is empty
  const auto assets = MapOf({AssetWithRanges("LIVE", {FieldRange(0, 1000), OpenRange(2000)}), aux});
  auto playlist =
      PlaylistOf({AvElement("LIVE", 1, 1, 0, 0), AvElement("LIVE", 2, 2, 20, 100)}, "AUX");
  playlist.durationInFields = 301;

  const auto byItems =
      TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets);
  EXPECT_EQ((std::vector<std::string>{"M 0+0 0+0 | 0+-1 0+-1", "M 0+61 0+61 | -11+61 -11+61"}),
            Describe(byItems.tracks[0]));
  EXPECT_EQ(61, byItems.duration);
  EXPECT_EQ(std::vector<std::string>{"M 0+0 0+0 | 0+0 0+0"}, Describe(byItems.tracks[1]));
  for (const auto& info : byItems.mediaInfos) {
    EXPECT_EQ(-1, info.duration);
  }

  // Any mode but 0 reads the playlist's own duration, truncated to frames.
  for (const auto mode :
       {TimelineConverter::FromPlaylist, static_cast<TimelineConverter::DurationMode>(5)}) {
    EXPECT_EQ(150, TimelineConverter::ToTimeline(playlist, mode, assets).duration);
  }
  playlist.durationInFields = -7;
  EXPECT_EQ(
      -3,
      TimelineConverter::ToTimeline(playlist, TimelineConverter::FromPlaylist, assets).duration);
}

TEST(TimelineConverter, EmptyPlaylistsAndIds) {
  Sequences::Playlist playlist;  // empty id, no elements, no aux clip, no map
  const auto timeline =
      TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, nullptr);
  EXPECT_EQ("", timeline.id.Text());
  ASSERT_EQ(1u, timeline.tracks.size());
  EXPECT_EQ("1", timeline.tracks[0].id.Text());
  EXPECT_EQ(0, timeline.duration);
  EXPECT_TRUE(timeline.mediaInfos.empty());
  EXPECT_TRUE(TimelineConverter::ListAssetsFromPlaylist(playlist).empty());
}

TEST(TimelineConverter, ListedAssetsAreExactlyTheLookedUpKeys) {
  auto playlist = HighlightPlaylist();
  playlist.audioVideoTrack.elements[1].umId = Data::Clips::UmId("");  // an empty id is a key too
  const auto listed = TimelineConverter::ListAssetsFromPlaylist(playlist);
  ASSERT_EQ(5u, listed.size());
  EXPECT_EQ(AssetIdOf("AUX"), listed[0]);
  EXPECT_EQ(AssetIdOf("CAM-A"), listed[1]);
  EXPECT_EQ(AssetIdOf(""), listed[2]);
  EXPECT_EQ(listed[1], listed[3]);  // repeats kept

  auto assets = std::make_shared<Assets::MediaAssetMap>();
  for (const auto& id : listed) {
    auto asset = AssetWithRanges("ANY", {FieldRange(0, 4000)});
    asset.id = id;
    (*assets)[id] = asset;
  }
  const auto timeline =
      TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets);
  EXPECT_EQ(4u, timeline.mediaInfos.size());  // once per asset, not per use
  EXPECT_EQ(2u, timeline.tracks.size());
  EXPECT_EQ(1, assets.use_count());  // the timeline keeps no reference to the map
}

template <typename Exception = std::runtime_error>
void ExpectRefused(const Sequences::Playlist& playlist,
                   const std::shared_ptr<Assets::MediaAssetMap>& assets,
                   const std::string& message) {
  ExpectThrowExactly<Exception>(
      [&] { TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets); },
      message);
}

TEST(TimelineConverter, EveryRefusalReachesTheCaller) {
  const auto assets = HighlightAssets();
  ExpectRefused(HighlightPlaylist(), nullptr, "MediaAsset for sequence track item not found");
  ExpectRefused(PlaylistOf({}, "OTHER"), assets, "MediaAsset for aux-track not found");

  auto absolute = HighlightPlaylist();
  absolute.audioVideoTrack.elements[2].inBoundaryKind = 0;
  ExpectRefused<std::invalid_argument>(
      absolute, assets,
      "a sequence element contains absolute IN boundaries : not allowed in Timeline "
      "Engine");
  absolute.audioVideoTrack.elements[2].inBoundaryKind = 1;
  absolute.audioVideoTrack.elements[2].outBoundaryKind = 7;
  ExpectRefused<std::invalid_argument>(
      absolute, assets,
      "a sequence element contains absolute OUT boundaries : not allowed in Timeline "
      "Engine");

  // A transition of 120 frames before and after the cut, against 100-frame items.
  const auto tooLong = [&](std::int32_t videoKind, std::int32_t audioKind) {
    auto playlist = HighlightPlaylist();
    auto& second = playlist.audioVideoTrack.elements[1];
    second.transitionType = videoKind;
    second.videoTransitionDuration = 240;
    second.audioTransitionType = audioKind;
    second.audioTransitionDuration = 240;
    return playlist;
  };
  const std::string prefix = "The playlist PL3 cannot be edited - ";
  const std::string suffix = " duration than their transition duration.";
  ExpectRefused<std::logic_error>(tooLong(2, 0), assets,
                                  prefix + "contains track item (2) with a shorter video" + suffix);
  ExpectRefused<std::logic_error>(tooLong(0, 3), assets,
                                  prefix + "contains track item (2) with a shorter audio" + suffix);
  ExpectRefused<std::logic_error>(tooLong(13, 0), assets,
                                  prefix + "it contains track items with a shorter video" + suffix);
  ExpectRefused<std::logic_error>(tooLong(0, 7), assets,
                                  prefix + "it contains track items with a shorter audio" + suffix);

  // An asset that no element uses still fails the whole conversion.
  auto broken = *HighlightAssets();
  auto unused = AssetWithRanges("UNUSED", {});
  unused.resources.Insert({nullptr, "resource"});
  broken.emplace(unused.id, unused);
  ExpectRefused(HighlightPlaylist(), std::make_shared<Assets::MediaAssetMap>(broken),
                "null pointer");

  // Counting from the end of an asset without recorded ranges.
  auto noRanges = *HighlightAssets();
  noRanges[AssetIdOf("CAM-B")].timeBounds = Assets::TimeBoundsArray();
  ExpectRefused<std::invalid_argument>(HighlightPlaylist(),
                                       std::make_shared<Assets::MediaAssetMap>(noRanges),
                                       "MediaAsset from Sequence has no PhysicalTimebounds");

  auto noRate = HighlightPlaylist();
  noRate.rate = {0, 0};
  ExpectRefused<std::invalid_argument>(
      noRate, assets, "TimeBoundaryToFields: the rate needs a positive numerator and denominator");
}

}  // namespace
