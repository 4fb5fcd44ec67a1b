// TimeConverter: an asset's rate, usable length and short range; an element's
// boundaries resolved by kind, also for elements of a caller's own classes;
// the refusals of absolute boundaries and missing assets; the transition tables.
#include <gtest/gtest.h>

#include <limits>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"

namespace {

using namespace testing_support;
using Conversion::Absolute;
using Conversion::OppositeLimit;
using Conversion::OtherBoundary;
using Conversion::SameLimit;
using Conversion::TimeConverter;
using Kov::BusinessEntityModel::BaseTypes::MetadataProfile;

const Kov::TimePoints::Rate kRate50 = Kov::TimePoints::VideoRates::Rate50();
const auto& kOperatorProfileName = Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName();

// 1000 frames in two ranges of odd field counts, each halved on its own: 600 +
// 400 frames (1001 if the fields were summed first).
Assets::MediaAsset ThousandFrameAsset() {
  return AssetWithRanges("CLIP", {FieldRange(0, 1201), FieldRange(5000, 5801)});
}

struct DerivedOperatorProfile : Assets::KytOperatorMetadataProfile {};

std::string RateOf(std::shared_ptr<MetadataProfile> profile, std::int64_t videoRate) {
  if (auto* operatorProfile = dynamic_cast<Assets::KytOperatorMetadataProfile*>(profile.get())) {
    operatorProfile->videoRate = videoRate;
  }
  auto asset = ThousandFrameAsset();
  asset.metadataProfiles[kOperatorProfileName] = std::move(profile);
  const auto rate = TimeConverter::GetMediaAssetRate(asset);
  return std::to_string(rate.numerator) + "/" + std::to_string(rate.denominator);
}

TEST(TimeConverter, AssetRateFollowsTheOperatorVideoRate) {
  for (const auto& [videoRate, rate] : {std::pair{25, "50/1"},
                                        {50, "50/1"},
                                        {0, "60000/1001"},
                                        {24, "60000/1001"},
                                        {30, "60000/1001"}}) {
    SCOPED_TRACE(videoRate);
    EXPECT_EQ(rate, RateOf(std::make_shared<Assets::KytOperatorMetadataProfile>(), videoRate));
  }
  EXPECT_EQ("50/1", RateOf(std::make_shared<DerivedOperatorProfile>(), 25));
  // A null profile, or one of another class under the operator's name, is absent.
  ExpectRefused([] { RateOf(nullptr, 50); }, kNoOperatorProfile);
  ExpectRefused([] { RateOf(std::make_shared<MetadataProfile>(), 50); }, kNoOperatorProfile);
  ExpectRefused([] { TimeConverter::GetMediaAssetRate(ThousandFrameAsset()); }, kNoOperatorProfile);
  Assets::MediaAsset noRanges;  // reported before the missing profile
  ExpectRefused([&] { TimeConverter::GetMediaAssetRate(noRanges); }, kNoRecordedRanges);
}

TEST(TimeConverter, ShortRangeForEveryAssetKindButTheWholeMaterialKind) {
  struct KindCase {
    const char* name;
    std::int32_t assetKind;
    Kov::TimePoints::TimeBounds shortRange;
    std::int64_t limitIn;
    std::int64_t duration;
  };
  for (const KindCase& c :
       {KindCase{"kind 0: the short range", 0, FieldRange(1010, 1111), 5, 55 - 5},
        KindCase{"kind 2: the short range", 2, FieldRange(1010, 1111), 5, 55 - 5},
        KindCase{"kind -1: the short range", -1, FieldRange(1010, 1111), 5, 55 - 5},
        KindCase{"kind 0, open short range", 0, OpenRange(1010), 5, -1},
        KindCase{"kind 1: the whole material", 1, FieldRange(1010, 1111), 0, 500 + 50}}) {
    SCOPED_TRACE(c.name);
    auto asset = AssetWithRanges("CLIP", {FieldRange(1000, 2000), FieldRange(3000, 3100)});
    asset.assetKind = c.assetKind;
    asset.shortBounds = c.shortRange;
    const auto timing = TimeConverter::GetShortInAndDurationFromMediaAsset(asset, kRate50);
    EXPECT_EQ(c.limitIn, timing.limitIn);
    EXPECT_EQ(c.duration, timing.duration);
    asset.timeBounds = {};
    ExpectRefused([&] { TimeConverter::GetShortInAndDurationFromMediaAsset(asset, kRate50); },
                  kNoRecordedRanges);
  }
}

std::string BoundsText(const Conversion::MediaBounds& bounds) {
  return std::to_string(bounds.videoIn) + "+" + std::to_string(bounds.videoDuration) + " " +
         std::to_string(bounds.audioIn) + "+" + std::to_string(bounds.audioDuration);
}

// The material length counts every range exactly as TimeBoundaryToFields does
// (nearest field, halves away from zero, each range halved to frames on its
// own), on both sides of the 64-bit products and for rates it refuses.
TEST(TimeConverter, AssetLengthCountsEachRangeAsTheFieldCountDoes) {
  using Kov::TimePoints::Rate;
  using Kov::TimePoints::TimeBounds;
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  const struct {
    const char* name;
    Rate rate;
    std::vector<TimeBounds> ranges;
  } rows[] = {
      {"halves of a field round up", {50, 1}, {{{0, 0}, {50'000, 0}}, {{0, 1}, {150'000, 0}}}},
      {"59.94 counts 119.88 fields as 120", {60000, 1001}, {{{0, 0}, {10'000'000, 0}}}},
      {"a backward range rounds away from zero", {50, 1}, {{{150'000, 0}, {0, 0}}}},
      {"products beyond 64 bits", {60000, 1}, {{{kMin, 0}, {kMax - 1, 0}}, {{0, 0}, {1, 0}}}},
      {"a divisor beyond 64 bits", {50, kMax / 3}, {{{0, 0}, {kMax - 1, 0}}}},
      {"a just-fitting product", {1, 1}, {{{0, 0}, {kMax - 1, 0}}}},
  };
  for (const auto& row : rows) {
    Assets::MediaAsset asset;
    std::int64_t expected = 0;
    for (const auto& range : row.ranges) {
      asset.timeBounds.Insert(range);
      expected +=
          Kov::Replivo::Tollan::DataModelConversion::ClipMediaTimeConverter::TimeBoundaryToFields(
              range.end, range.start, row.rate) /
          2;
    }
    EXPECT_EQ(expected, TimeConverter::GetMediaAssetLimitInAndDuration(asset, row.rate).duration)
        << row.name;
  }

  // A rate that cannot count fields is refused at the first range to count;
  // open-ended material is not counted at all.
  const auto asset = ThousandFrameAsset();
  for (const Rate rate : {Rate{0, 1}, Rate{50, 0}, Rate{-50, 1}}) {
    ExpectRefused([&] { TimeConverter::GetMediaAssetLimitInAndDuration(asset, rate); },
                  kRateNotPositive);
  }
  EXPECT_EQ(-1, TimeConverter::GetMediaAssetLimitInAndDuration(
                    AssetWithRanges("OPEN", {OpenRange(0)}), Rate{0, 1})
                    .duration);
}

TEST(TimeConverter, BoundariesResolveByKindOnAThousandFrameAsset) {
  struct BoundaryCase {
    const char* name;
    std::int32_t inKind, outKind;
    std::int64_t inValue, outValue;
    const char* inAndLength;
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const BoundaryCase& c : {
           BoundaryCase{"IN from start, OUT from start", SameLimit, OppositeLimit, 7, 100, "3+47"},
           {"IN truncates toward zero", SameLimit, OppositeLimit, -7, 100, "-3+53"},
           {"IN from start, OUT back from end", SameLimit, SameLimit, 100, 200, "50+850"},
           {"IN back from end, OUT back from end", OppositeLimit, SameLimit, 100, 200, "950+-50"},
           {"IN back from end, OUT from start", OppositeLimit, OppositeLimit, 100, 1960, "950+30"},
           {"IN back from end, OUT after IN", OppositeLimit, OtherBoundary, 100, 40, "950+20"},
           {"IN back from OUT, OUT from start", OtherBoundary, OppositeLimit, 10, 100, "45+5"},
           {"IN back from OUT, OUT back from end", OtherBoundary, SameLimit, 10, 100, "945+5"},
           {"IN from start, OUT after IN", SameLimit, OtherBoundary, 20, 40, "10+20"},
           {"both relative: IN back from end", OtherBoundary, OtherBoundary, 20, 40, "990+20"},
       }) {
    SCOPED_TRACE(c.name);
    const auto element = AvElement("CLIP", c.inKind, c.outKind, c.inValue, c.outValue);
    EXPECT_EQ(std::string(c.inAndLength) + " " + c.inAndLength,
              BoundsText(TimeConverter::ToMediaBounds(element, info)));
  }
  // Open-ended material: IN back from its end is negative and passed on.
  const auto open = InfoWith({AssetWithRanges("CLIP", {OpenRange(0)})});
  EXPECT_EQ("-11+61 -11+61", BoundsText(TimeConverter::ToMediaBounds(
                                 AvElement("CLIP", OppositeLimit, OppositeLimit, 20, 100), open)));
}

TEST(TimeConverter, AbsoluteBoundariesAreRefusedInFirst) {
  struct AbsoluteCase {
    const char* name;
    std::int32_t inKind, outKind;
    const Refusal& refusal;
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const AbsoluteCase& c :
       {AbsoluteCase{"IN absolute", Absolute, OppositeLimit, kAbsoluteIn},
        {"IN of unknown kind 4", 4, OppositeLimit, kAbsoluteIn},
        {"IN of kind -1", -1, OppositeLimit, kAbsoluteIn},
        {"OUT absolute", SameLimit, Absolute, kAbsoluteOut},
        {"OUT of unknown kind 4", SameLimit, 4, kAbsoluteOut},
        {"IN back from an absolute OUT", OtherBoundary, Absolute, kAbsoluteOut},
        {"both absolute", Absolute, Absolute, kAbsoluteIn}}) {
    SCOPED_TRACE(c.name);
    const auto element = AvElement("CLIP", c.inKind, c.outKind, 0, 0);
    ExpectRefused([&] { TimeConverter::ToMediaBounds(element, info); }, c.refusal);
  }
}

// A caller's own element classes: a subclass of a record converts like the
// record; an element that reports a kind whose record it is not gives zeros.
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
  ReportingElement<Sequences::AudioVideoElement> claimingVideo(Sequences::Element::Video);
  static_cast<Sequences::AudioVideoElement&>(claimingVideo) = both;
  ReportingElement<Sequences::Element> bareClaimingBoth(Sequences::Element::AudioVideo);
  Sequences::Element bare;  // of no handled kind; its boundary kinds are never read
  bare.umId = bareClaimingBoth.umId = both.umId;
  bareClaimingBoth.transitionType = VideoTransition::kCentredOnCut;
  const auto video = SingleSidedElement<Sequences::VideoElement>("CLIP", 1, 2, 10, 30);
  const auto audio = SingleSidedElement<Sequences::AudioElement>("CLIP", 1, 2, 10, 30);

  struct ClassCase {
    const char* name;
    const Sequences::Element& element;
    const char* bounds;
    std::int64_t videoOffset, audioDuration;
  };
  const auto info = InfoWith({ThousandFrameAsset()});
  for (const ClassCase& c :
       {ClassCase{"audio-video", both, "5+50 10+20", 6, 15},
        {"video", video, "5+10 0+0", 0, 0},
        {"audio", audio, "0+0 5+10", 0, 0},
        {"subclass of the audio-video record", tagged, "5+50 10+20", 6, 15},
        {"bare element", bare, "0+0 0+0", 0, 0},
        {"bare element claiming audio-video", bareClaimingBoth, "0+0 0+0", 0, 0},
        {"audio-video record claiming video", claimingVideo, "0+0 0+0", 0, 0}}) {
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
  // OUT = 1000 + 2^62; IN = OUT + 2^62 passes the largest value and wraps.
  const auto bounds = TimeConverter::ToMediaBounds(
      AvElement("CLIP", OtherBoundary, SameLimit, kMin, kMin), InfoWith({ThousandFrameAsset()}));
  EXPECT_EQ(kMin + 1000, bounds.videoIn);
  EXPECT_EQ(kMin / 2, bounds.videoDuration);
}

// "kind: effect kind offset/duration" for kinds -1 to the first above the
// table, at a duration of 25 fields (12 frames).
std::vector<std::string> Effects(bool video, std::int32_t last, std::int32_t fields = 25) {
  std::vector<std::string> effects;
  for (std::int32_t kind = -1; kind <= last + 1; ++kind) {
    auto element = AvElement("CLIP", SameLimit, OppositeLimit, 0, 0);
    (video ? element.transitionType : element.audioTransitionType) = kind;
    element.videoTransitionDuration = element.audioTransitionDuration = fields;
    const auto effect = video ? TimeConverter::ToVideoTransitionBounds(element)
                              : TimeConverter::ToAudioTransitionBounds(element);
    effects.push_back(std::to_string(kind) + ": " + std::to_string(effect.kind) + " " +
                      std::to_string(effect.offset) + "/" + std::to_string(effect.duration) +
                      effect.name);
  }
  return effects;
}

// Kinds 2 to 11 overlap; 12 to 20 end at the cut, start at it, are centred on it.
TEST(TimeConverter, VideoTransitionTable) {
  EXPECT_EQ(
      (std::vector<std::string>{
          "-1: 0 0/0",   "0: 0 0/0",    "1: 1 0/0",   "2: 2 12/12", "3: 2 12/12",  "4: 2 12/12",
          "5: 2 12/12",  "6: 2 12/12",  "7: 2 12/12", "8: 2 12/12", "9: 2 12/12",  "10: 2 12/12",
          "11: 2 12/12", "12: 1 12/12", "13: 1 0/12", "14: 1 6/12", "15: 1 12/12", "16: 1 0/12",
          "17: 1 6/12",  "18: 1 12/12", "19: 1 0/12", "20: 1 6/12", "21: 0 0/0"}),
      Effects(true, 20));
  EXPECT_EQ("17: 1 -6/-12", Effects(true, 20, -25)[18]);  // negative durations truncate too
}

// Kinds 1 and 4 have fixed lengths; 3 to 5 overlap; 6 to 8 align as 12 to 14.
TEST(TimeConverter, AudioTransitionTable) {
  const std::vector<std::string> expected = {"-1: 0 0/0",  "0: 0 0/0",  "1: 1 1/2",  "2: 1 0/0",
                                             "3: 2 12/12", "4: 2 0/1",  "5: 2 0/12", "6: 1 12/12",
                                             "7: 1 0/12",  "8: 1 6/12", "9: 0 0/0"};
  EXPECT_EQ(expected, Effects(false, 8));
  EXPECT_EQ("1: 1 1/2", Effects(false, 8, 1000)[2]);
}

}  // namespace
