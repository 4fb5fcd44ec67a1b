// TimeConverter: an asset's rate, usable length and short range; an element's
// boundaries resolved by kind, also for elements of a caller's own classes;
// the refusals of absolute boundaries and missing assets; the two transition
// tables.
#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Conversion::OppositeLimit;
using Conversion::OtherBoundary;
using Conversion::SameLimit;
using Conversion::TimeConverter;
using Kov::BusinessEntityModel::BaseTypes::MetadataProfile;

const Kov::TimePoints::Rate kRate50 = Kov::TimePoints::VideoRates::Rate50();

// 1000 frames in two ranges of odd field counts: 600 + 400 frames.
Assets::MediaAsset ThousandFrameAsset() {
  return AssetWithRanges("CLIP", {FieldRange(0, 1201), FieldRange(5000, 5801)});
}

std::shared_ptr<Assets::KytOperatorMetadataProfile> OperatorProfile(std::int64_t videoRate) {
  auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
  profile->videoRate = videoRate;
  return profile;
}

struct DerivedOperatorProfile : Assets::KytOperatorMetadataProfile {};

TEST(TimeConverter, AssetRateFollowsTheOperatorVideoRate) {
  const auto derived = std::make_shared<DerivedOperatorProfile>();
  derived->videoRate = 25;
  struct RateCase {
    const char* name;
    std::shared_ptr<MetadataProfile> profile;
    std::int64_t numerator;
  };
  const RateCase cases[] = {
      {"25 Hz", OperatorProfile(25), 50},         {"50 Hz", OperatorProfile(50), 50},
      {"0 Hz", OperatorProfile(0), 60000},        {"24 Hz", OperatorProfile(24), 60000},
      {"30 Hz", OperatorProfile(30), 60000},      {"60 Hz", OperatorProfile(60), 60000},
      {"a subclass of the profile", derived, 50},
  };
  for (const RateCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto asset = ThousandFrameAsset();
    asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] =
        c.profile;
    const auto rate = TimeConverter::GetMediaAssetRate(asset);
    EXPECT_EQ(c.numerator, rate.numerator);
    EXPECT_EQ(c.numerator == 50 ? 1 : 1001, rate.denominator);
  }
}

TEST(TimeConverter, AssetRateRefusals) {
  struct RefusalCase {
    const char* name;
    bool stored;
    std::shared_ptr<MetadataProfile> profile;
    bool withRanges;
    const Refusal& refusal;
  };
  const RefusalCase cases[] = {
      {"no profile", false, nullptr, true, kNoOperatorProfile},
      {"null profile", true, nullptr, true, kNoOperatorProfile},
      {"profile of another class", true, std::make_shared<MetadataProfile>(), true,
       kNoOperatorProfile},
      {"no ranges, checked first", true, OperatorProfile(50), false, kNoRecordedRanges},
  };
  for (const RefusalCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto asset = c.withRanges ? ThousandFrameAsset() : Assets::MediaAsset();
    if (c.stored) {
      asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] =
          c.profile;
    }
    ExpectRefused([&] { TimeConverter::GetMediaAssetRate(asset); }, c.refusal);
  }
}

TEST(TimeConverter, AssetDurationHalvesEachRangeOnItsOwn) {
  const auto asset = AssetWithRanges("CLIP", {FieldRange(0, 101), FieldRange(500, 599)});
  const auto timing = TimeConverter::GetMediaAssetLimitInAndDuration(asset, kRate50);
  EXPECT_EQ(0, timing.limitIn);
  EXPECT_EQ(50 + 49, timing.duration);
  const auto open = AssetWithRanges("CLIP", {FieldRange(0, 100), OpenRange(500)});
  EXPECT_EQ(-1, TimeConverter::GetMediaAssetLimitInAndDuration(open, kRate50).duration);
  ExpectRefused([] { TimeConverter::GetMediaAssetLimitInAndDuration({}, kRate50); },
                kNoRecordedRanges);
}

TEST(TimeConverter, ShortRangeForEveryAssetKindButTheWholeMaterialKind) {
  struct KindCase {
    const char* name;
    std::int32_t assetKind;
    Kov::TimePoints::TimeBounds shortRange;
    std::int64_t limitIn;
    std::int64_t duration;
  };
  const KindCase cases[] = {
      {"kind 0: the short range", 0, FieldRange(1010, 1111), 5, 55 - 5},
      {"kind 2: the short range", 2, FieldRange(1010, 1111), 5, 55 - 5},
      {"kind -1: the short range", -1, FieldRange(1010, 1111), 5, 55 - 5},
      {"kind 0, open short range", 0, OpenRange(1010), 5, -1},
      {"kind 1: the whole material", 1, FieldRange(1010, 1111), 0, 500 + 50},
  };
  for (const KindCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto asset = AssetWithRanges("CLIP", {FieldRange(1000, 2000), FieldRange(3000, 3100)});
    asset.assetKind = c.assetKind;
    asset.shortBounds = c.shortRange;
    const auto timing = TimeConverter::GetShortInAndDurationFromMediaAsset(asset, kRate50);
    EXPECT_EQ(c.limitIn, timing.limitIn);
    EXPECT_EQ(c.duration, timing.duration);
  }
  for (const std::int32_t kind : {0, 1, 2}) {
    Assets::MediaAsset noRanges;
    noRanges.assetKind = kind;
    ExpectRefused([&] { TimeConverter::GetShortInAndDurationFromMediaAsset(noRanges, kRate50); },
                  kNoRecordedRanges);
  }
}

std::string BoundsText(const Conversion::MediaBounds& bounds) {
  return std::to_string(bounds.videoIn) + "+" + std::to_string(bounds.videoDuration) + " " +
         std::to_string(bounds.audioIn) + "+" + std::to_string(bounds.audioDuration);
}

TEST(TimeConverter, BoundariesResolveByKindOnAThousandFrameAsset) {
  struct BoundaryCase {
    const char* name;
    std::int32_t inKind;
    std::int32_t outKind;
    std::int64_t inValue;
    std::int64_t outValue;
    const char* videoInAndLength;
  };
  const BoundaryCase cases[] = {
      {"IN from start, OUT from start", SameLimit, OppositeLimit, 7, 100, "3+47"},
      {"IN truncates toward zero", SameLimit, OppositeLimit, -7, 100, "-3+53"},
      {"IN from start, OUT back from end", SameLimit, SameLimit, 100, 200, "50+850"},
      {"IN back from end, OUT back from end", OppositeLimit, SameLimit, 100, 200, "950+-50"},
      {"IN back from end, OUT from start", OppositeLimit, OppositeLimit, 100, 1960, "950+30"},
      {"IN back from end, OUT a length after", OppositeLimit, OtherBoundary, 100, 40, "950+20"},
      {"IN back from OUT, OUT from start", OtherBoundary, OppositeLimit, 10, 100, "45+5"},
      {"IN back from OUT, OUT back from end", OtherBoundary, SameLimit, 10, 100, "945+5"},
      {"IN from start, OUT a length after", SameLimit, OtherBoundary, 20, 40, "10+20"},
      {"both relative: IN back from end", OtherBoundary, OtherBoundary, 20, 40, "990+20"},
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const BoundaryCase& c : cases) {
    SCOPED_TRACE(c.name);
    const auto element = AvElement("CLIP", c.inKind, c.outKind, c.inValue, c.outValue);
    const auto bounds = TimeConverter::ToMediaBounds(element, info);
    EXPECT_EQ(std::string(c.videoInAndLength) + " " + c.videoInAndLength, BoundsText(bounds));
  }
  // Open-ended material: IN back from its end is negative and passed on.
  const auto open = InfoWith({AssetWithRanges("CLIP", {OpenRange(0)})});
  EXPECT_EQ("-11+61 -11+61", BoundsText(TimeConverter::ToMediaBounds(
                                 AvElement("CLIP", OppositeLimit, OppositeLimit, 20, 100), open)));
}

TEST(TimeConverter, AbsoluteBoundariesAreRefusedInFirst) {
  struct AbsoluteCase {
    const char* name;
    std::int32_t inKind;
    std::int32_t outKind;
    const Refusal& refusal;
  };
  const AbsoluteCase cases[] = {
      {"IN absolute", Conversion::Absolute, OppositeLimit, kAbsoluteIn},
      {"IN of unknown kind 4", 4, OppositeLimit, kAbsoluteIn},
      {"IN of kind -1", -1, OppositeLimit, kAbsoluteIn},
      {"OUT absolute", SameLimit, Conversion::Absolute, kAbsoluteOut},
      {"OUT of unknown kind 4", SameLimit, 4, kAbsoluteOut},
      {"IN back from an absolute OUT", OtherBoundary, Conversion::Absolute, kAbsoluteOut},
      {"both absolute", Conversion::Absolute, Conversion::Absolute, kAbsoluteIn},
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const AbsoluteCase& c : cases) {
    SCOPED_TRACE(c.name);
    ExpectRefused(
        [&] { TimeConverter::ToMediaBounds(AvElement("CLIP", c.inKind, c.outKind, 0, 0), info); },
        c.refusal);
  }
}

// A caller's own element classes: a subclass of a record converts like the
// record; an element that reports a kind whose record it is not has no
// handled kind and gives zeros.
struct TaggedAudioVideoElement : Sequences::AudioVideoElement {};
template <typename Record>
struct ReportingElement : Record {
  explicit ReportingElement(Sequences::Element::Type reported) : reported(reported) {}
  Sequences::Element::Type GetType() const override { return reported; }
  Sequences::Element::Type reported;
};

TEST(TimeConverter, EachElementClassFillsOnlyItsOwnSides) {
  auto both = AvElement("CLIP", SameLimit, OppositeLimit, 10, 110);
  both.audioInValue = 20;
  both.audioOutValue = 60;
  both.transitionType = VideoTransition::kCentredOnCut;
  both.videoTransitionDuration = 25;
  both.audioTransitionType = AudioTransition::kCentredOnCut;
  both.audioTransitionDuration = 31;
  TaggedAudioVideoElement tagged;
  static_cast<Sequences::AudioVideoElement&>(tagged) = both;
  ReportingElement<Sequences::Element> bareClaimingBoth(Sequences::Element::AudioVideo);
  bareClaimingBoth.umId = both.umId;
  bareClaimingBoth.transitionType = VideoTransition::kCentredOnCut;
  ReportingElement<Sequences::AudioVideoElement> bothClaimingVideo(Sequences::Element::Video);
  static_cast<Sequences::AudioVideoElement&>(bothClaimingVideo) = both;
  const auto video =
      SingleSidedElement<Sequences::VideoElement>("CLIP", SameLimit, OppositeLimit, 10, 30);
  const auto audio =
      SingleSidedElement<Sequences::AudioElement>("CLIP", SameLimit, OppositeLimit, 10, 30);
  Sequences::Element bare;  // of no handled kind; its boundary kinds are never read
  bare.umId = both.umId;

  struct ClassCase {
    const char* name;
    const Sequences::Element& element;
    const char* bounds;
    std::int64_t videoOffset;
    std::int64_t audioDuration;
  };
  const ClassCase cases[] = {
      {"audio-video", both, "5+50 10+20", 6, 15},
      {"video", video, "5+10 0+0", 0, 0},
      {"audio", audio, "0+0 5+10", 0, 0},
      {"subclass of the audio-video record", tagged, "5+50 10+20", 6, 15},
      {"bare element", bare, "0+0 0+0", 0, 0},
      {"bare element claiming audio-video", bareClaimingBoth, "0+0 0+0", 0, 0},
      {"audio-video record claiming video", bothClaimingVideo, "0+0 0+0", 0, 0},
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const ClassCase& c : cases) {
    SCOPED_TRACE(c.name);
    const auto bounds = TimeConverter::ToMediaBounds(c.element, info);
    EXPECT_EQ(AssetIdOf("CLIP"), bounds.mediaId);
    EXPECT_EQ(c.bounds, BoundsText(bounds));
    EXPECT_EQ(c.videoOffset, TimeConverter::ToVideoTransitionBounds(c.element).offset);
    EXPECT_EQ(c.audioDuration, TimeConverter::ToAudioTransitionBounds(c.element).duration);
    // The asset is looked up before the kind is examined.
    ExpectRefused([&] { TimeConverter::ToMediaBounds(c.element, InfoWith({})); },
                  kTrackAssetMissing);
  }
  const Conversion::ExternalSequenceInfo withoutMap{"T", kRate50, nullptr};
  ExpectRefused([&] { TimeConverter::ToMediaBounds(both, withoutMap); }, kTrackAssetMissing);
}

TEST(TimeConverter, BoundaryArithmeticWrapsOnOverflow) {
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  // OUT position kMax/2, IN = OUT - kMin/2: leaves the range and wraps.
  const auto bounds =
      TimeConverter::ToMediaBounds(AvElement("CLIP", OtherBoundary, OppositeLimit, kMin, kMax),
                                   InfoWith({ThousandFrameAsset()}));
  const auto expectedIn = static_cast<std::int64_t>(static_cast<std::uint64_t>(kMax / 2) -
                                                    static_cast<std::uint64_t>(kMin / 2));
  EXPECT_EQ(expectedIn, bounds.videoIn);
  EXPECT_EQ(static_cast<std::int64_t>(static_cast<std::uint64_t>(kMax / 2) -
                                      static_cast<std::uint64_t>(expectedIn)),
            bounds.videoDuration);
}

struct EffectCase {
  const char* name;
  std::int32_t kind;
  std::int32_t fields;
  std::int32_t effectKind;
  std::int64_t offset;
  std::int64_t duration;
};

void ExpectEffects(bool video, std::initializer_list<EffectCase> cases) {
  for (const EffectCase& c : cases) {
    SCOPED_TRACE(c.name);
    auto element = AvElement("CLIP", SameLimit, OppositeLimit, 0, 0);
    (video ? element.transitionType : element.audioTransitionType) = c.kind;
    (video ? element.videoTransitionDuration : element.audioTransitionDuration) = c.fields;
    const auto effect = video ? TimeConverter::ToVideoTransitionBounds(element)
                              : TimeConverter::ToAudioTransitionBounds(element);
    EXPECT_EQ(c.effectKind, effect.kind);
    EXPECT_EQ(c.offset, effect.offset);
    EXPECT_EQ(c.duration, effect.duration);
    EXPECT_EQ("", effect.name);
  }
}

// 25 fields are 12 frames.
TEST(TimeConverter, VideoTransitionTable) {
  ExpectEffects(
      true, {
                {"none", VideoTransition::kNone, 25, kNoEffect, 0, 0},
                {"cut", VideoTransition::kCut, 25, kInPlaceEffect, 0, 0},
                {"overlapping 2", 2, 25, kOverlappingEffect, 12, 12},
                {"overlapping 3", 3, 25, kOverlappingEffect, 12, 12},
                {"overlapping 4", 4, 25, kOverlappingEffect, 12, 12},
                {"overlapping 5", 5, 25, kOverlappingEffect, 12, 12},
                {"overlapping 6", 6, 25, kOverlappingEffect, 12, 12},
                {"overlapping 7", 7, 25, kOverlappingEffect, 12, 12},
                {"overlapping 8", 8, 25, kOverlappingEffect, 12, 12},
                {"overlapping 9", 9, 25, kOverlappingEffect, 12, 12},
                {"overlapping 10", 10, 25, kOverlappingEffect, 12, 12},
                {"overlapping 11", 11, 25, kOverlappingEffect, 12, 12},
                {"ending at the cut 12", 12, 25, kInPlaceEffect, 12, 12},
                {"starting at the cut 13", 13, 25, kInPlaceEffect, 0, 12},
                {"centred on the cut 14", 14, 25, kInPlaceEffect, 6, 12},
                {"ending at the cut 15", 15, 25, kInPlaceEffect, 12, 12},
                {"starting at the cut 16", 16, 25, kInPlaceEffect, 0, 12},
                {"centred on the cut 17", 17, 25, kInPlaceEffect, 6, 12},
                {"ending at the cut 18", 18, 25, kInPlaceEffect, 12, 12},
                {"starting at the cut 19", 19, 25, kInPlaceEffect, 0, 12},
                {"centred on the cut 20", 20, 25, kInPlaceEffect, 6, 12},
                {"below the table", -1, 25, kNoEffect, 0, 0},
                {"above the table", 21, 25, kNoEffect, 0, 0},
                {"smallest kind", std::numeric_limits<std::int32_t>::min(), 25, kNoEffect, 0, 0},
                {"negative duration truncates", 17, -25, kInPlaceEffect, -6, -12},
            });
}

TEST(TimeConverter, AudioTransitionTable) {
  ExpectEffects(
      false,
      {
          {"none", AudioTransition::kNone, 25, kNoEffect, 0, 0},
          {"fixed short", AudioTransition::kFixedShort, 25, kInPlaceEffect, 1, 2},
          {"fixed short, long duration", AudioTransition::kFixedShort, 1000, kInPlaceEffect, 1, 2},
          {"cut", AudioTransition::kCut, 25, kInPlaceEffect, 0, 0},
          {"overlapping", AudioTransition::kOverlapping, 25, kOverlappingEffect, 12, 12},
          {"overlapping fixed", AudioTransition::kOverlappingFixed, 25, kOverlappingEffect, 0, 1},
          {"overlapping from the cut", AudioTransition::kOverlappingStartingAtCut, 25,
           kOverlappingEffect, 0, 12},
          {"ending at the cut", AudioTransition::kEndingAtCut, 25, kInPlaceEffect, 12, 12},
          {"starting at the cut", AudioTransition::kStartingAtCut, 25, kInPlaceEffect, 0, 12},
          {"centred on the cut", AudioTransition::kCentredOnCut, 25, kInPlaceEffect, 6, 12},
          {"above the table", 9, 25, kNoEffect, 0, 0},
          {"below the table", -1, 25, kNoEffect, 0, 0},
      });
}

}  // namespace
