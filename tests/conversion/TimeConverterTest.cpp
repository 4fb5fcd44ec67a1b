// TimeConverter: an asset's rate, usable length and short range; an element's
// boundaries resolved by kind; the refusals of absolute boundaries and missing
// assets; the two transition tables.
#include "conversion/TimeConverter.h"

#include <gtest/gtest.h>

#include <limits>
#include <stdexcept>

#include "support/PlaylistBuilders.h"

namespace {

using namespace testing_support;
using Conversion::TimeConverter;

constexpr const char* kNoRanges = "MediaAsset from Sequence has no PhysicalTimebounds";
constexpr const char* kNoProfile = "MediaAsset from Sequence has no KytOperatorMetadata";
constexpr const char* kAbsoluteIn =
    "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine";
constexpr const char* kAbsoluteOut =
    "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine";
constexpr const char* kNotFound = "MediaAsset for sequence track item not found";

const Kov::TimePoints::Rate kRate50 = Kov::TimePoints::VideoRates::Rate50();

// An asset of 1000 frames (2000 fields).
Assets::MediaAsset ThousandFrameAsset() {
  return AssetWithRanges("CLIP", {FieldRange(0, 2000)});
}

Kov::TimePoints::Rate RateFor(
    const std::shared_ptr<Kov::BusinessEntityModel::BaseTypes::MetadataProfile>& profile) {
  Assets::MediaAsset asset = ThousandFrameAsset();
  asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] = profile;
  return TimeConverter::GetMediaAssetRate(asset);
}

std::shared_ptr<Assets::KytOperatorMetadataProfile> OperatorProfile(std::int64_t videoRate) {
  auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
  profile->videoRate = videoRate;
  return profile;
}

TEST(TimeConverter, AssetRateFollowsTheOperatorVideoRate) {
  for (const std::int64_t videoRate : {25, 50}) {
    EXPECT_EQ(50, RateFor(OperatorProfile(videoRate)).numerator);
  }
  for (const std::int64_t videoRate : {0, 24, 30, 60}) {
    const auto rate = RateFor(OperatorProfile(videoRate));
    EXPECT_EQ(60000, rate.numerator);
    EXPECT_EQ(1001, rate.denominator);
  }
  // A null profile, or one of another class under the operator's name, is absent.
  ExpectThrowExactly<std::invalid_argument>([] { RateFor(nullptr); }, kNoProfile);
  ExpectThrowExactly<std::invalid_argument>(
      [] { RateFor(std::make_shared<Kov::BusinessEntityModel::BaseTypes::MetadataProfile>()); },
      kNoProfile);
  ExpectThrowExactly<std::invalid_argument>(
      [] { TimeConverter::GetMediaAssetRate(ThousandFrameAsset()); }, kNoProfile);
  // The missing ranges are reported first.
  Assets::MediaAsset noRanges;
  noRanges.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] =
      OperatorProfile(50);
  ExpectThrowExactly<std::invalid_argument>([&] { TimeConverter::GetMediaAssetRate(noRanges); },
                                            kNoRanges);
}

TEST(TimeConverter, AssetDurationHalvesEachRangeOnItsOwn) {
  const auto asset = AssetWithRanges("CLIP", {FieldRange(0, 101), FieldRange(500, 599)});
  const auto timing = TimeConverter::GetMediaAssetLimitInAndDuration(asset, kRate50);
  EXPECT_EQ(0, timing.limitIn);
  EXPECT_EQ(50 + 49, timing.duration);

  const auto open = AssetWithRanges("CLIP", {FieldRange(0, 100), OpenRange(500)});
  EXPECT_EQ(-1, TimeConverter::GetMediaAssetLimitInAndDuration(open, kRate50).duration);
  ExpectThrowExactly<std::invalid_argument>(
      [] { TimeConverter::GetMediaAssetLimitInAndDuration(Assets::MediaAsset(), kRate50); },
      kNoRanges);
}

TEST(TimeConverter, ShortRangeIsMeasuredFromTheFirstRecordedStart) {
  auto asset = AssetWithRanges("CLIP", {FieldRange(1000, 2000), FieldRange(3000, 3100)});
  asset.shortBounds = FieldRange(1010, 1111);
  auto timing = TimeConverter::GetShortInAndDurationFromMediaAsset(asset, kRate50);
  EXPECT_EQ(5, timing.limitIn);
  EXPECT_EQ(55 - 5, timing.duration);

  asset.shortBounds = OpenRange(1010);
  timing = TimeConverter::GetShortInAndDurationFromMediaAsset(asset, kRate50);
  EXPECT_EQ(5, timing.limitIn);
  EXPECT_EQ(-1, timing.duration);

  asset.assetKind = 1;  // the whole material
  timing = TimeConverter::GetShortInAndDurationFromMediaAsset(asset, kRate50);
  EXPECT_EQ(0, timing.limitIn);
  EXPECT_EQ(500 + 50, timing.duration);

  ExpectThrowExactly<std::invalid_argument>(
      [] { TimeConverter::GetShortInAndDurationFromMediaAsset(Assets::MediaAsset(), kRate50); },
      kNoRanges);
}

struct BoundaryCase {
  std::int32_t inKind;
  std::int32_t outKind;
  std::int64_t inValue;
  std::int64_t outValue;
  std::int64_t expectedIn;
  std::int64_t expectedDuration;
};

TEST(TimeConverter, BoundariesResolveByKindOnAThousandFrameAsset) {
  const BoundaryCase cases[] = {
      {1, 2, 7, 100, 3, 47},       // IN from the start, truncated; OUT from the start
      {1, 2, -7, 100, -3, 53},     // truncation toward zero
      {2, 1, 100, 200, 950, -50},  // IN back from the end; OUT back from the end
      {3, 2, 10, 100, 45, 5},      // IN counted back from OUT
      {3, 1, 10, 100, 945, 5},     // OUT back from the end, IN back from OUT
      {1, 3, 20, 40, 10, 20},      // OUT a length after IN
      {3, 3, 20, 40, 990, 20},     // both relative: IN from the end, OUT may pass it
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const BoundaryCase& c : cases) {
    const auto element = AvElement("CLIP", c.inKind, c.outKind, c.inValue, c.outValue);
    const auto bounds = TimeConverter::ToMediaBounds(element, info);
    EXPECT_EQ(c.expectedIn, bounds.videoIn) << c.inKind << "/" << c.outKind;
    EXPECT_EQ(c.expectedDuration, bounds.videoDuration) << c.inKind << "/" << c.outKind;
  }
}

TEST(TimeConverter, OpenEndedAssetsGiveNegativePositionsUnchanged) {
  const auto info = InfoWith({AssetWithRanges("CLIP", {OpenRange(0)})});
  const auto bounds = TimeConverter::ToMediaBounds(AvElement("CLIP", 2, 2, 20, 100), info);
  EXPECT_EQ(-1 - 10, bounds.videoIn);
  EXPECT_EQ(50 - (-11), bounds.videoDuration);
}

TEST(TimeConverter, AbsoluteBoundariesAreRefusedInFirst) {
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const std::int32_t absolute : {0, 4, -1}) {
    ExpectThrowExactly<std::invalid_argument>(
        [&] { TimeConverter::ToMediaBounds(AvElement("CLIP", absolute, 2, 0, 0), info); },
        kAbsoluteIn);
    ExpectThrowExactly<std::invalid_argument>(
        [&] { TimeConverter::ToMediaBounds(AvElement("CLIP", 1, absolute, 0, 0), info); },
        kAbsoluteOut);
    // An IN counted from the OUT resolves the OUT first.
    ExpectThrowExactly<std::invalid_argument>(
        [&] { TimeConverter::ToMediaBounds(AvElement("CLIP", 3, absolute, 0, 0), info); },
        kAbsoluteOut);
  }
  ExpectThrowExactly<std::invalid_argument>(
      [&] { TimeConverter::ToMediaBounds(AvElement("CLIP", 0, 0, 0, 0), info); }, kAbsoluteIn);
}

TEST(TimeConverter, MediaBoundsFillOnlyTheSidesTheElementHas) {
  const auto info = InfoWith({ThousandFrameAsset()});
  const auto numbers = [&](const Sequences::Element& element) {
    const auto bounds = TimeConverter::ToMediaBounds(element, info);
    EXPECT_EQ(AssetIdOf("CLIP"), bounds.mediaId);
    return std::array<std::int64_t, 4>{bounds.videoIn, bounds.videoDuration, bounds.audioIn,
                                       bounds.audioDuration};
  };
  auto both = AvElement("CLIP", 1, 2, 10, 110);
  both.audioInValue = 20;
  both.audioOutValue = 60;
  EXPECT_EQ((std::array<std::int64_t, 4>{5, 50, 10, 20}), numbers(both));
  EXPECT_EQ((std::array<std::int64_t, 4>{5, 10, 0, 0}),
            numbers(SingleSidedElement<Sequences::VideoElement>("CLIP", 1, 2, 10, 30)));
  EXPECT_EQ((std::array<std::int64_t, 4>{0, 0, 5, 10}),
            numbers(SingleSidedElement<Sequences::AudioElement>("CLIP", 1, 2, 10, 30)));
}

TEST(TimeConverter, EveryElementNeedsItsAssetWhateverItsKind) {
  Sequences::Element unhandled;  // a bare element is of no handled kind
  unhandled.umId = Data::Clips::UmId("CLIP");
  unhandled.inBoundaryKind = 0;  // never read for such an element
  const auto bounds = TimeConverter::ToMediaBounds(unhandled, InfoWith({ThousandFrameAsset()}));
  EXPECT_EQ(AssetIdOf("CLIP"), bounds.mediaId);
  EXPECT_EQ(0, bounds.videoIn + bounds.videoDuration + bounds.audioIn + bounds.audioDuration);

  ExpectThrowExactly<std::runtime_error>(
      [&] { TimeConverter::ToMediaBounds(unhandled, InfoWith({})); }, kNotFound);
  const Conversion::ExternalSequenceInfo withoutMap{"T", kRate50, nullptr};
  ExpectThrowExactly<std::runtime_error>(
      [&] { TimeConverter::ToMediaBounds(AvElement("CLIP", 1, 2, 0, 0), withoutMap); }, kNotFound);
}

TEST(TimeConverter, BoundaryArithmeticWrapsOnOverflow) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  const auto info = InfoWith({ThousandFrameAsset()});
  // OUT position kMax/2, IN = OUT - kMin/2: leaves the range and wraps.
  const auto bounds = TimeConverter::ToMediaBounds(AvElement("CLIP", 3, 2, kMin, kMax), info);
  const auto expectedIn = static_cast<std::int64_t>(static_cast<std::uint64_t>(kMax / 2) -
                                                    static_cast<std::uint64_t>(kMin / 2));
  EXPECT_EQ(expectedIn, bounds.videoIn);
  EXPECT_EQ(static_cast<std::int64_t>(static_cast<std::uint64_t>(kMax / 2) -
                                      static_cast<std::uint64_t>(expectedIn)),
            bounds.videoDuration);
}

Kov::TimelineEngineModel::TransitionEffect VideoEffect(std::int32_t kind, std::int32_t fields) {
  auto element = AvElement("CLIP", 1, 2, 0, 0);
  element.transitionType = kind;
  element.videoTransitionDuration = fields;
  return TimeConverter::ToVideoTransitionBounds(element);
}

Kov::TimelineEngineModel::TransitionEffect AudioEffect(std::int32_t kind, std::int32_t fields) {
  auto element = AvElement("CLIP", 1, 2, 0, 0);
  element.audioTransitionType = kind;
  element.audioTransitionDuration = fields;
  return TimeConverter::ToAudioTransitionBounds(element);
}

// {effect kind, offset, duration} for a duration of 25 fields (12 frames).
using Effect = std::array<std::int64_t, 3>;
Effect Of(const Kov::TimelineEngineModel::TransitionEffect& effect) {
  EXPECT_TRUE(effect.name.empty());
  return {effect.kind, effect.offset, effect.duration};
}

TEST(TimeConverter, VideoTransitionTable) {
  const Effect expected[] = {
      {0, 0, 0},                                                                    // 0
      {1, 0, 0},                                                                    // 1
      {2, 12, 12}, {2, 12, 12}, {2, 12, 12}, {2, 12, 12}, {2, 12, 12},              // 2-6
      {2, 12, 12}, {2, 12, 12}, {2, 12, 12}, {2, 12, 12}, {2, 12, 12},              // 7-11
      {1, 12, 12}, {1, 0, 12},  {1, 6, 12},  {1, 12, 12}, {1, 0, 12},  {1, 6, 12},  // 12-17
      {1, 12, 12}, {1, 0, 12},  {1, 6, 12},                                         // 18-20
  };
  for (std::int32_t kind = 0; kind <= 20; ++kind) {
    EXPECT_EQ(expected[kind], Of(VideoEffect(kind, 25))) << "kind " << kind;
  }
  for (const std::int32_t unknown : {-1, 21, std::numeric_limits<std::int32_t>::min()}) {
    EXPECT_EQ((Effect{0, 0, 0}), Of(VideoEffect(unknown, 25)));
  }
  EXPECT_EQ((Effect{1, -6, -12}), Of(VideoEffect(17, -25)));  // negative durations truncate too
}

TEST(TimeConverter, AudioTransitionTable) {
  const Effect expected[] = {
      {0, 0, 0},  {1, 1, 2},   {1, 0, 0},  {2, 12, 12}, {2, 0, 1},
      {2, 0, 12}, {1, 12, 12}, {1, 0, 12}, {1, 6, 12},
  };
  for (std::int32_t kind = 0; kind <= 8; ++kind) {
    EXPECT_EQ(expected[kind], Of(AudioEffect(kind, 25))) << "kind " << kind;
  }
  EXPECT_EQ((Effect{0, 0, 0}), Of(AudioEffect(9, 25)));
  EXPECT_EQ((Effect{1, 1, 2}), Of(AudioEffect(1, 1000)));  // fixed lengths
}

TEST(TimeConverter, TransitionsOfTheOtherSideAreEmpty) {
  Sequences::AudioElement audio;
  audio.transitionType = 3;
  audio.transitionDuration = 40;
  EXPECT_EQ((Effect{0, 0, 0}), Of(TimeConverter::ToVideoTransitionBounds(audio)));
  EXPECT_EQ((Effect{2, 20, 20}), Of(TimeConverter::ToAudioTransitionBounds(audio)));

  Sequences::VideoElement video;
  video.transitionType = 3;
  video.transitionDuration = 40;
  EXPECT_EQ((Effect{0, 0, 0}), Of(TimeConverter::ToAudioTransitionBounds(video)));
  EXPECT_EQ((Effect{2, 20, 20}), Of(TimeConverter::ToVideoTransitionBounds(video)));
}

}  // namespace
