// TrackConverter: media items on the running play position with speed
// scaling, transition items and identifiers, whole tracks with overlapping
// transitions, the four transition checks and their order, and the aux track.
#include <gtest/gtest.h>

#include <limits>
#include <optional>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Conversion::CurrentSequencePlayStatus;
using Conversion::OppositeLimit;
using Conversion::SameLimit;
using Conversion::TrackConverter;
using ElementGuid = Data::Sequences::Elements::Guid;
using Strings = std::vector<std::string>;

// Plays the first videoFrames frames of the clip's picture and the first
// audioFrames of its sound. Only the first element's playlist number is printed.
Sequences::AudioVideoElement Clip(std::int64_t videoFrames, std::int64_t audioFrames,
                                  std::int32_t itemNumber = 0, const char* clip = "CLIP") {
  auto element = AvElement(clip, SameLimit, OppositeLimit, 0, 2 * videoFrames);
  element.audioOutValue = 2 * audioFrames;
  element.number = static_cast<std::uint32_t>(itemNumber);
  element.itemNumber = itemNumber;
  element.playlistNumber = 40 + itemNumber;
  return element;
}

// A context whose clip has 1000 frames.
Conversion::ExternalSequenceInfo ClipInfo() {
  return InfoWith({AssetWithRanges("CLIP", {FieldRange(0, 2000)})}, "ABC000");
}

template <typename TrackT = Sequences::Track<Sequences::AudioVideoElement>, typename ElementT>
Strings Converted(std::vector<ElementT> elements) {
  TrackT track;
  track.elements = std::move(elements);
  return Describe(TrackConverter::ToTrack(track, 0, ClipInfo()));
}

TEST(TrackConverter, MediaItemStartsAtTheClampedPositionAndAdvancesIt) {
  CurrentSequencePlayStatus status{-5, 7, {1, 1}};
  auto element = AvElement("CLIP", SameLimit, OppositeLimit, 20, 70);
  const auto item = TrackConverter::ToMediaSummaryItem(element, status, ClipInfo());
  EXPECT_EQ("M 0+25 7+25 | 10+25 10+25", Describe(*item));
  EXPECT_EQ(AssetIdOf("CLIP"), item->mediaId);
  EXPECT_EQ(GuidText(ElementGuid(0, element.serverId)), item->Id().Text());
  EXPECT_EQ(25, status.position);
  EXPECT_EQ(32, status.secondPosition);
  // A refused element leaves the status untouched.
  status = {-5, -6, {3, 4}};
  ExpectRefused([&] { TrackConverter::ToMediaSummaryItem(element, status, InfoWith({})); },
                kTrackAssetMissing);
  EXPECT_EQ(-5, status.position);
  EXPECT_EQ(-6, status.secondPosition);
  EXPECT_EQ((Data::Channels::Speed{3, 4}), status.speed);
  // Open-ended material takes no room on the timeline.
  status = {-3, 4, {1, 1}};
  element = AvElement("CLIP", SameLimit, SameLimit, 0, 0);
  EXPECT_EQ("M 0+0 4+0 | 0+-1 0+-1",
            Describe(*TrackConverter::ToMediaSummaryItem(
                element, status, InfoWith({AssetWithRanges("CLIP", {OpenRange(0)})}))));
  EXPECT_EQ(0, status.position);
}

TEST(TrackConverter, SpeedScalesLengthsAndCarriesOver) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  struct SpeedCase {
    const char* name;
    Data::Channels::Speed speed;
    std::int64_t frames, timelineFrames;
  };
  // In order: each element plays at the speed that the ones before it left.
  CurrentSequencePlayStatus status;
  for (const SpeedCase& c : {
           SpeedCase{"half speed doubles", {1, 2}, 25, 50},
           {"no speed keeps half speed", Data::Channels::Speed::Empty(), 25, 50},
           {"no numerator keeps half speed", {0, 5}, 25, 50},
           {"double speed truncates", {2, 1}, 25, 12},
           {"toward zero", {2, 1}, -25, -12},
       }) {
    SCOPED_TRACE(c.name);
    auto element = Clip(c.frames, c.frames);
    element.speed = c.speed;
    EXPECT_EQ(
        c.timelineFrames,
        TrackConverter::ToMediaSummaryItem(element, status, ClipInfo())->timelineVideoDuration);
  }
  // A media length of exactly kMin (IN 2^62 back from the end, OUT -2^62):
  // backwards it stays kMin, at half speed it wraps to 0.
  auto smallest = AvElement("CLIP", OppositeLimit, OppositeLimit, 2000 + kMin, kMin);
  for (const auto& [speed, length] : {std::pair{Data::Channels::Speed{-1, 1}, kMin},
                                      std::pair{Data::Channels::Speed{1, 2}, std::int64_t{0}}}) {
    smallest.speed = speed;
    EXPECT_EQ(
        length,
        TrackConverter::ToMediaSummaryItem(smallest, status, ClipInfo())->timelineVideoDuration);
  }
  // A status without numerator scales every length to 0 instead of dividing by zero.
  status.speed = {0, 1};
  EXPECT_EQ(
      0,
      TrackConverter::ToMediaSummaryItem(Clip(25, 25), status, ClipInfo())->timelineVideoDuration);
}

TEST(TrackConverter, TransitionItemsHaveTheirOwnIdentifiers) {
  auto element = Clip(10, 10, 5);
  element.serverId = Data::Servers::ServerId(9);
  element.transitionType = VideoTransition::kCentredOnCut;
  element.videoTransitionDuration = 25;
  element.audioTransitionType = AudioTransition::kOverlappingFixed;
  const auto video = TrackConverter::ToFxVideoTransitionItem(element);
  const auto audio = TrackConverter::ToFxAudioTransitionItem(element);
  ASSERT_TRUE(video && audio);
  EXPECT_EQ("V 1 6/12", Describe(*video));
  EXPECT_EQ("A 2 0/1", Describe(*audio));
  EXPECT_EQ(GuidText(ElementGuid(5, element.serverId, ElementGuid::VideoTransition)),
            video->Id().Text());
  EXPECT_EQ(GuidText(ElementGuid(5, element.serverId, ElementGuid::AudioTransition)),
            audio->Id().Text());

  // A track names its items the same way, for numbers and servers of every digit.
  Sequences::Track<Sequences::AudioVideoElement> track;
  track.elements = {Clip(10, 10), element};
  track.elements[1].number = 0x89ABCDEF;
  track.elements[1].serverId = Data::Servers::ServerId(0xF1234567);
  const auto items = TrackConverter::ToTrack(track, 0, ClipInfo()).items;
  ASSERT_EQ(4u, items.size());
  const Data::Servers::ServerId server = track.elements[1].serverId;
  EXPECT_EQ(GuidText(ElementGuid(0x89ABCDEF, server, ElementGuid::VideoTransition)),
            items[1]->Id().Text());
  EXPECT_EQ(GuidText(ElementGuid(0x89ABCDEF, server, ElementGuid::AudioTransition)),
            items[2]->Id().Text());
  EXPECT_EQ(GuidText(ElementGuid(0x89ABCDEF, server)), items[3]->Id().Text());
}

TEST(TrackConverter, TrackIdsOverwriteTheEndOfTheTimelineId) {
  struct IdCase {
    const char* timelineId;
    unsigned index;
    const char* trackId;
  };
  for (const IdCase& c : {IdCase{"ABC000", 0, "ABC001"},
                          {"ABC000", 9, "ABC010"},
                          {"ABC001", 4294967295u, "ABC000"},
                          {"AB", 999, "AB1000"},
                          {"ABCD", 999, "1000"},
                          {"", 0, "1"},
                          {"", 4294967295u, "0"}}) {
    SCOPED_TRACE(std::string(c.timelineId) + " #" + std::to_string(c.index));
    EXPECT_EQ(c.trackId, TrackConverter::TimelineIdToTrackId(c.timelineId, c.index).Text());
  }
}

TEST(TrackConverter, OverlappingTransitionsPullTheNextItemBack) {
  // The first element's transition is ignored, however long.
  auto first = Clip(100, 100, 1);
  first.transitionType = VideoTransition::kOverlapping;
  first.videoTransitionDuration = 1000;
  EXPECT_EQ(Strings{"M 0+100 0+100 | 0+100 0+100"}, Converted(std::vector{first}));
  auto second = Clip(100, 100, 2);
  second.transitionType = VideoTransition::kOverlapping;  // offset 10
  second.videoTransitionDuration = 20;
  second.audioTransitionType = AudioTransition::kEndingAtCut;  // offset 8, in place
  second.audioTransitionDuration = 16;
  EXPECT_EQ((Strings{"M 0+100 0+100 | 0+100 0+100", "V 2 10/10", "A 1 8/8",
                     "M 90+100 100+100 | 0+100 0+100"}),
            Converted(std::vector{first, second}));
  // A transition whose effect comes out empty adds no item and no check.
  second.transitionType = 25;
  second.videoTransitionDuration = 100000;
  second.audioTransitionType = AudioTransition::kNone;
  EXPECT_EQ((Strings{"M 0+1 0+1 | 0+1 0+1", "M 1+100 1+100 | 0+100 0+100"}),
            Converted(std::vector{Clip(1, 1, 1), second}));
}

TEST(TrackConverter, TransitionChecksAreStrictAndUseTheNeighbouringItems) {
  struct CheckCase {
    const char* name;
    std::vector<std::int64_t> lengths;  // frames of each element, both sides
    bool audio;                         // the last element's transition is on this side
    std::int32_t kind, fields;
    std::optional<Refusal> refusal;  // none: the track converts
  };
  const std::int32_t kOverlap = VideoTransition::kOverlapping;
  const std::int32_t kAfter = VideoTransition::kStartingAtCut;
  const Refusal videoBefore = PreviousItemTooShort("video", 41, 2);
  const Refusal audioBefore = PreviousItemTooShort("audio", 41, 2);
  const Refusal videoAfter = CurrentItemTooShort("video", 41);
  const Refusal audioAfter = CurrentItemTooShort("audio", 41);
  const Refusal thirdBefore = PreviousItemTooShort("video", 41, 3);
  const std::int32_t kAudioOverlap = AudioTransition::kOverlapping;
  const std::int32_t kAudioAfter = AudioTransition::kStartingAtCut;
  const CheckCase cases[] = {
      {"before the cut: as long passes", {10, 100}, false, kOverlap, 20, {}},
      {"before the cut: shorter fails", {9, 100}, false, kOverlap, 20, videoBefore},
      {"before the cut: length 0 untested", {0, 100}, false, kOverlap, 20000, {}},
      {"before the cut: negative untested", {-5, 100}, false, kOverlap, 20000, {}},
      {"after the cut: as long passes", {100, 10}, false, kAfter, 20, {}},
      {"after the cut: shorter fails", {100, 9}, false, kAfter, 20, videoAfter},
      {"after the cut: length 0 untested", {100, 0}, false, kAfter, 20000, {}},
      {"after the cut: negative untested", {100, -5}, false, kAfter, 20000, {}},
      {"audio before the cut", {9, 100}, true, kAudioOverlap, 20, audioBefore},
      {"audio before: length 0", {0, 100}, true, kAudioOverlap, 20000, {}},
      {"audio after the cut", {100, 9}, true, kAudioAfter, 20, audioAfter},
      {"audio after: length 0", {100, 0}, true, kAudioAfter, 20000, {}},
      {"the item just before is short", {100, 10, 100}, false, kOverlap, 40, thirdBefore},
      {"only the first item is short", {10, 100, 100}, false, kOverlap, 40, {}},
  };
  for (const CheckCase& c : cases) {
    SCOPED_TRACE(c.name);
    std::vector<Sequences::AudioVideoElement> elements;
    for (const std::int64_t length : c.lengths) {
      elements.push_back(Clip(length, length, static_cast<std::int32_t>(elements.size() + 1)));
    }
    (c.audio ? elements.back().audioTransitionType : elements.back().transitionType) = c.kind;
    (c.audio ? elements.back().audioTransitionDuration : elements.back().videoTransitionDuration) =
        c.fields;
    if (c.refusal) {
      ExpectRefused([&] { Converted(elements); }, *c.refusal);
    } else {
      EXPECT_NO_THROW(Converted(elements));
    }
  }
}

TEST(TrackConverter, ChecksOfOneElementRunInOrderAndTheFirstFailureIsReported) {
  enum Fault { kPreviousVideo, kPreviousAudio, kAssetLookUp, kCurrentVideo, kCurrentAudio };
  const char* const names[] = {"previous video", "previous audio", "asset look-up", "current video",
                               "current audio"};
  const Refusal refusals[] = {PreviousItemTooShort("video", 41, 2),
                              PreviousItemTooShort("audio", 41, 2), kTrackAssetMissing,
                              CurrentItemTooShort("video", 41), CurrentItemTooShort("audio", 41)};
  // The second element opens with a video and an audio transition centred on
  // the cut, 20 frames on each side; a side of 10 frames is too short for it.
  const auto convertWith = [](int first, int second) {
    const auto length = [&](int fault) { return first == fault || second == fault ? 10 : 100; };
    auto next = Clip(length(kCurrentVideo), length(kCurrentAudio), 2,
                     length(kAssetLookUp) == 10 ? "MISSING" : "CLIP");
    next.transitionType = VideoTransition::kCentredOnCut;
    next.audioTransitionType = AudioTransition::kCentredOnCut;
    next.videoTransitionDuration = next.audioTransitionDuration = 80;
    Converted(std::vector{Clip(length(kPreviousVideo), length(kPreviousAudio), 1), next});
  };
  for (int first = kPreviousVideo; first <= kCurrentAudio; ++first) {
    for (int second = first; second <= kCurrentAudio; ++second) {
      SCOPED_TRACE(std::string(names[first]) +
                   (first == second ? " alone" : std::string(" with ") + names[second]));
      ExpectRefused([&] { convertWith(first, second); }, refusals[first]);
    }
  }
}

TEST(TrackConverter, SingleSidedTracksKeepTheirOwnTransitions) {
  // 5 frames of sound, 20 of picture, each opening with an overlapping
  // transition of offset 10.
  auto audio = SingleSidedElement<Sequences::AudioElement>("CLIP", 1, 2, 0, 10);
  audio.transitionType = AudioTransition::kOverlapping;
  auto video = SingleSidedElement<Sequences::VideoElement>("CLIP", 1, 2, 0, 40);
  video.transitionType = VideoTransition::kOverlapping;
  audio.transitionDuration = video.transitionDuration = 20;
  auto secondAudio = audio;
  audio.playlistNumber = 7;
  secondAudio.itemNumber = 4;
  ExpectRefused(
      [&] {
        Converted<Sequences::AudioTrack>(std::vector{audio, secondAudio});
      },
      PreviousItemTooShort("audio", 7, 4));
  EXPECT_EQ((Strings{"M 0+20 0+0 | 0+20 0+0", "V 2 10/10", "M 10+20 0+0 | 0+20 0+0"}),
            Converted<Sequences::Track<Sequences::VideoElement>>(std::vector{video, video}));
}

TEST(TrackConverter, AuxTrackHalvesTheShortRangeOnceMore) {
  struct AuxCase {
    const char* name;
    Kov::TimePoints::TimeBounds shortRange;
    const char* item;
  };
  Sequences::Playlist playlist;
  playlist.number = 12;
  playlist.serverId = Data::Servers::ServerId(3);
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.auxTrackUmId = Data::Clips::UmId("AUX");
  for (const AuxCase& c :
       {AuxCase{"100 frames", FieldRange(1000, 1200), "M 0+0 0+50 | 0+0 0+50"},
        {"101 frames", FieldRange(1000, 1202), "M 0+0 0+50 | 0+0 0+50"},
        {"open: -1 halves to 0", OpenRange(1000), "M 0+0 0+0 | 0+0 0+0"},
        {"-3 frames: -1 taken as 0", FieldRange(1000, 994), "M 0+0 0+0 | 0+0 0+0"},
        {"-4 frames", FieldRange(1000, 992), "M 0+0 0+-2 | 0+0 0+-2"},
        {"the in-point is not halved again", FieldRange(1100, 1300), "M 0+0 0+50 | 0+0 50+50"}}) {
    SCOPED_TRACE(c.name);
    auto asset = AssetWithRanges("AUX", {FieldRange(1000, 5000)});
    asset.shortBounds = c.shortRange;
    const auto track =
        TrackConverter::PlaylistAuxTrackToTrack(playlist, InfoWith({asset}, "ABC001"));
    EXPECT_EQ("ABC000", track.id.Text());
    ASSERT_EQ(Strings{c.item}, Describe(track));
    const auto& item = dynamic_cast<const Engine::MediaSummaryItem&>(*track.items[0]);
    EXPECT_EQ(AssetIdOf("AUX"), item.mediaId);
    EXPECT_EQ(GuidText(ElementGuid(12, playlist.serverId, ElementGuid::AuxTrack)),
              item.Id().Text());
  }
  // The key is the exact text: another letter case is a miss.
  const auto other = InfoWith({AssetWithRanges("aux", {FieldRange(1000, 5000)})});
  ExpectRefused([&] { TrackConverter::PlaylistAuxTrackToTrack(playlist, other); },
                kAuxAssetMissing);
}

}  // namespace
