// TrackConverter: media items on the running play position with speed
// scaling, transition items and identifiers, whole tracks with overlapping
// transitions and the four transition checks, and the aux track.
#include "conversion/TrackConverter.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "support/PlaylistBuilders.h"

namespace {

using namespace testing_support;
using Conversion::CurrentSequencePlayStatus;
using Conversion::TrackConverter;
namespace Engine = Kov::TimelineEngineModel;

constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();

// Plays frames [inFrame, outFrame) of a 1000-frame clip on both sides.
Sequences::AudioVideoElement Clip(std::int64_t inFrame, std::int64_t outFrame,
                                  std::int32_t itemNumber = 0) {
  auto element = AvElement("CLIP", Conversion::SameLimit, Conversion::OppositeLimit, 2 * inFrame,
                           2 * outFrame);
  element.number = static_cast<std::uint32_t>(itemNumber);
  element.itemNumber = itemNumber;
  element.playlistNumber = 40 + itemNumber;  // only the first element's number is printed
  return element;
}

Conversion::ExternalSequenceInfo ClipInfo() {
  return InfoWith({AssetWithRanges("CLIP", {FieldRange(0, 2000)})}, "ABC000");
}

const Engine::MediaSummaryItem& Media(const Engine::Track& track, std::size_t index) {
  return dynamic_cast<const Engine::MediaSummaryItem&>(*track.items.at(index));
}

TEST(TrackConverter, MediaItemStartsAtTheClampedPositionAndAdvancesIt) {
  const auto info = ClipInfo();
  CurrentSequencePlayStatus status{-5, 7, {1, 1}};
  const auto item = TrackConverter::ToMediaSummaryItem(Clip(10, 35), status, info);
  EXPECT_EQ(0, item->timelineVideoIn);
  EXPECT_EQ(7, item->timelineAudioIn);
  EXPECT_EQ(25, item->timelineVideoDuration);
  EXPECT_EQ(10, item->mediaVideoIn);
  EXPECT_EQ(AssetIdOf("CLIP"), item->mediaId);
  EXPECT_EQ(25, status.position);
  EXPECT_EQ(32, status.secondPosition);

  // Open-ended material takes no room on the timeline.
  const auto openInfo = InfoWith({AssetWithRanges("CLIP", {OpenRange(0)})});
  CurrentSequencePlayStatus openStatus{-3, 4, {1, 1}};
  const auto open = TrackConverter::ToMediaSummaryItem(
      AvElement("CLIP", Conversion::SameLimit, Conversion::SameLimit, 0, 0), openStatus, openInfo);
  EXPECT_EQ(-1, open->mediaVideoDuration);
  EXPECT_EQ(0, open->timelineVideoDuration);
  EXPECT_EQ(0, openStatus.position);
  EXPECT_EQ(4, openStatus.secondPosition);
}

TEST(TrackConverter, SpeedScalesLengthsAndCarriesOver) {
  const auto info = ClipInfo();
  CurrentSequencePlayStatus status;
  const auto lengthAt = [&](Data::Channels::Speed speed, std::int64_t frames) {
    auto element = Clip(100, 100 + frames);
    element.speed = speed;
    return TrackConverter::ToMediaSummaryItem(element, status, info)->timelineVideoDuration;
  };
  EXPECT_EQ(50, lengthAt({1, 2}, 25));
  EXPECT_EQ(50, lengthAt(Data::Channels::Speed::Empty(), 25));  // keeps 1/2
  EXPECT_EQ(50, lengthAt({0, 5}, 25));                          // keeps 1/2
  EXPECT_EQ(12, lengthAt({2, 1}, 25));                          // truncates
  EXPECT_EQ(-12, lengthAt({2, 1}, -25));
  EXPECT_EQ(2, status.speed.numerator);

  // A status without numerator scales every length to 0 instead of dividing by zero.
  status.speed = {0, 1};
  EXPECT_EQ(0,
            TrackConverter::ToMediaSummaryItem(Clip(0, 25), status, info)->timelineVideoDuration);
}

TEST(TrackConverter, SpeedScalingWrapsInsteadOfTrapping) {
  // IN back from the end at 2^62, OUT at -2^62: a media length of exactly kMin.
  auto element =
      AvElement("CLIP", Conversion::OppositeLimit, Conversion::OppositeLimit, 2000 + kMin, kMin);
  element.speed = {-1, 1};
  CurrentSequencePlayStatus status;
  const auto item = TrackConverter::ToMediaSummaryItem(element, status, ClipInfo());
  EXPECT_EQ(kMin, item->mediaVideoDuration);
  EXPECT_EQ(kMin, item->timelineVideoDuration);  // kMin / -1 stays kMin
  element.speed = {1, 2};
  EXPECT_EQ(0,
            TrackConverter::ToMediaSummaryItem(element, status, ClipInfo())->timelineVideoDuration);
}

TEST(TrackConverter, FailedBoundsLeaveTheStatusUntouched) {
  CurrentSequencePlayStatus status{-5, -6, {3, 4}};
  auto element = Clip(0, 10);
  element.speed = {1, 2};
  ExpectThrowExactly<std::runtime_error>(
      [&] { TrackConverter::ToMediaSummaryItem(element, status, InfoWith({})); },
      "MediaAsset for sequence track item not found");
  EXPECT_EQ(-5, status.position);
  EXPECT_EQ(-6, status.secondPosition);
  EXPECT_EQ((Data::Channels::Speed{3, 4}), status.speed);
}

TEST(TrackConverter, TransitionItemsHaveTheirOwnIdentifiers) {
  auto element = Clip(0, 10, 5);
  element.transitionType = 14;
  element.videoTransitionDuration = 25;
  element.audioTransitionType = 4;
  const auto video = TrackConverter::ToFxVideoTransitionItem(element);
  const auto audio = TrackConverter::ToFxAudioTransitionItem(element);
  ASSERT_TRUE(video && audio);
  EXPECT_EQ(Engine::FxVideoTransition, video->GetType());
  EXPECT_EQ(Engine::FxAudioTransition, audio->GetType());
  EXPECT_EQ(6, video->FxTransition().offset);
  EXPECT_EQ(Conversion::ElementIdToTransitionId<Conversion::Video>(element), video->Id());
  CurrentSequencePlayStatus status;
  const auto media = TrackConverter::ToMediaSummaryItem(element, status, ClipInfo());
  EXPECT_NE(video->Id(), audio->Id());
  EXPECT_NE(video->Id(), media->Id());
  EXPECT_NE(audio->Id(), media->Id());

  element.transitionType = 21;  // effect kind 0: no item
  EXPECT_EQ(nullptr, TrackConverter::ToFxVideoTransitionItem(element));
}

TEST(TrackConverter, TrackIdsOverwriteTheEndOfTheTimelineId) {
  EXPECT_EQ("ABC001", TrackConverter::TimelineIdToTrackId("ABC000", 0).Text());
  EXPECT_EQ("ABC010", TrackConverter::TimelineIdToTrackId("ABC000", 9).Text());
  EXPECT_EQ("ABC000", TrackConverter::TimelineIdToTrackId("ABC001", 4294967295u).Text());
  EXPECT_EQ("AB1000", TrackConverter::TimelineIdToTrackId("AB", 999).Text());  // digits longer
  EXPECT_EQ("1000", TrackConverter::TimelineIdToTrackId("ABCD", 999).Text());
  EXPECT_EQ("1", TrackConverter::TimelineIdToTrackId("", 0).Text());
  EXPECT_EQ("0", TrackConverter::TimelineIdToTrackId("", 4294967295u).Text());
}

TEST(TrackConverter, EmptyAndSingleElementTracks) {
  Sequences::Track<Sequences::AudioVideoElement> track;
  auto converted = TrackConverter::ToTrack(track, 1, ClipInfo());
  EXPECT_EQ("ABC002", converted.id.Text());
  EXPECT_EQ(1, converted.type);
  EXPECT_TRUE(converted.items.empty());

  // The first element's transition is ignored, however long.
  auto first = Clip(0, 10);
  first.transitionType = 2;
  first.videoTransitionDuration = 1000;
  track.elements.push_back(first);
  converted = TrackConverter::ToTrack(track, 0, ClipInfo());
  ASSERT_EQ(1u, converted.items.size());
  EXPECT_EQ(Engine::MediaSummary, converted.items[0]->GetType());
}

// Two 100-frame items; the second opens with a transition of the given kinds.
Engine::Track Joined(std::int32_t videoKind, std::int32_t videoFields, std::int32_t audioKind,
                     std::int32_t audioFields, std::int64_t firstFrames = 100,
                     std::int64_t secondFrames = 100) {
  Sequences::Track<Sequences::AudioVideoElement> track;
  track.elements.push_back(Clip(0, firstFrames, 1));
  auto second = Clip(200, 200 + secondFrames, 2);
  second.transitionType = videoKind;
  second.videoTransitionDuration = videoFields;
  second.audioTransitionType = audioKind;
  second.audioTransitionDuration = audioFields;
  track.elements.push_back(second);
  return TrackConverter::ToTrack(track, 0, ClipInfo());
}

TEST(TrackConverter, OverlappingTransitionsPullTheNextItemBack) {
  // Video kind 2 (overlapping, offset 10), audio kind 6 (offset 8, not overlapping).
  const auto track = Joined(2, 20, 6, 16);
  ASSERT_EQ(4u, track.items.size());
  EXPECT_EQ(Engine::FxVideoTransition, track.items[1]->GetType());
  EXPECT_EQ(Engine::FxAudioTransition, track.items[2]->GetType());
  EXPECT_EQ(90, Media(track, 3).timelineVideoIn);
  EXPECT_EQ(100, Media(track, 3).timelineAudioIn);

  // An effect of kind 0 adds no item and no check.
  const auto none = Joined(25, 100000, 0, 0, 1, 1);
  ASSERT_EQ(2u, none.items.size());
  EXPECT_EQ(1, Media(none, 1).timelineVideoIn);
}

TEST(TrackConverter, TransitionChecksAreStrictAndNameTheRightItems) {
  const char* const previousVideo =
      "The playlist PL41 cannot be edited - contains track item (2) with a shorter video duration "
      "than their transition duration.";
  const char* const previousAudio =
      "The playlist PL41 cannot be edited - contains track item (2) with a shorter audio duration "
      "than their transition duration.";
  const char* const currentVideo =
      "The playlist PL41 cannot be edited - it contains track items with a shorter video duration "
      "than their transition duration.";
  const char* const currentAudio =
      "The playlist PL41 cannot be edited - it contains track items with a shorter audio duration "
      "than their transition duration.";

  // Offset 10 against a previous item of 10 passes, of 9 fails.
  EXPECT_NO_THROW(Joined(2, 20, 0, 0, 10));
  ExpectThrowExactly<std::logic_error>([] { Joined(2, 20, 0, 0, 9); }, previousVideo);
  ExpectThrowExactly<std::logic_error>([] { Joined(0, 0, 3, 20, 9); }, previousAudio);
  // Kind 13: offset 0, 10 frames after the cut against a current item of 10 and 9.
  EXPECT_NO_THROW(Joined(13, 20, 0, 0, 100, 10));
  ExpectThrowExactly<std::logic_error>([] { Joined(13, 20, 0, 0, 100, 9); }, currentVideo);
  ExpectThrowExactly<std::logic_error>([] { Joined(0, 0, 7, 20, 100, 9); }, currentAudio);
  // Order: both previous checks before both current checks.
  ExpectThrowExactly<std::logic_error>([] { Joined(13, 20, 3, 20, 9, 9); }, previousAudio);
  // A previous item without length is never tested.
  EXPECT_NO_THROW(Joined(2, 20000, 0, 0, 0));
}

TEST(TrackConverter, SingleSidedTracksKeepTheirOwnTransitions) {
  Sequences::AudioTrack audioTrack;
  Sequences::Track<Sequences::VideoElement> videoTrack;
  for (int i = 0; i < 2; ++i) {
    // 5 frames of sound, opening with audio kind 3 (offset 10).
    auto audio = SingleSidedElement<Sequences::AudioElement>("CLIP", 1, 2, 0, 10);
    audio.playlistNumber = 7 + i;
    audio.itemNumber = 3 + i;
    audio.transitionType = 3;
    audio.transitionDuration = 20;
    audioTrack.elements.push_back(audio);
    // 20 frames of picture, opening with video kind 3 (overlapping, offset 10).
    auto video = SingleSidedElement<Sequences::VideoElement>("CLIP", 1, 2, 0, 40);
    video.transitionType = 3;
    video.transitionDuration = 20;
    videoTrack.elements.push_back(video);
  }
  ExpectThrowExactly<std::logic_error>(
      [&] { TrackConverter::ToTrack(audioTrack, 0, ClipInfo()); },
      "The playlist PL7 cannot be edited - contains track item (4) with a shorter audio duration "
      "than their transition duration.");
  const auto converted = TrackConverter::ToTrack(videoTrack, 0, ClipInfo());
  ASSERT_EQ(3u, converted.items.size());
  EXPECT_EQ(Engine::FxVideoTransition, converted.items[1]->GetType());
  EXPECT_EQ(10, Media(converted, 2).timelineVideoIn);
  EXPECT_EQ(0, Media(converted, 2).timelineAudioDuration);
}

Engine::Track AuxTrackFor(Assets::MediaAsset asset, const char* auxClip = "AUX") {
  Sequences::Playlist playlist;
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.auxTrackUmId = Data::Clips::UmId(auxClip);
  return TrackConverter::PlaylistAuxTrackToTrack(playlist, InfoWith({asset}, "ABC001"));
}

std::int64_t AuxLength(Kov::TimePoints::TimeBounds shortRange) {
  auto asset = AssetWithRanges("AUX", {FieldRange(1000, 5000)});
  asset.shortBounds = shortRange;
  return Media(AuxTrackFor(asset), 0).timelineAudioDuration;
}

TEST(TrackConverter, AuxTrackHalvesTheShortRangeOnceMore) {
  EXPECT_EQ(50, AuxLength(FieldRange(1000, 1200)));  // 100 frames
  EXPECT_EQ(50, AuxLength(FieldRange(1000, 1202)));  // 101 frames
  EXPECT_EQ(0, AuxLength(OpenRange(1000)));          // open: -1 / 2
  EXPECT_EQ(0, AuxLength(FieldRange(1000, 994)));    // -3 frames: -1 taken as 0
  EXPECT_EQ(-2, AuxLength(FieldRange(1000, 992)));   // -4 frames

  auto asset = AssetWithRanges("AUX", {FieldRange(1000, 5000)});
  asset.shortBounds = FieldRange(1100, 1300);
  const auto track = AuxTrackFor(asset);
  EXPECT_EQ("ABC000", track.id.Text());
  const auto& item = Media(track, 0);
  EXPECT_EQ(50, item.mediaAudioIn);  // the in-point is not halved again
  EXPECT_EQ(50, item.mediaAudioDuration);
  EXPECT_EQ(0, item.timelineAudioIn + item.timelineVideoIn + item.timelineVideoDuration +
                   item.mediaVideoDuration);
  EXPECT_EQ(AssetIdOf("AUX"), item.mediaId);

  ExpectThrowExactly<std::runtime_error>([&] { AuxTrackFor(asset, "aux"); },
                                         "MediaAsset for aux-track not found");
}

}  // namespace
