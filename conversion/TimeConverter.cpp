// TimeConverter: asset timing, element boundaries and transition effects.
#include "TimeConverter.h"

#include <array>
#include <stdexcept>
#include <typeinfo>

#include "../input-models/ClipMediaTimeConverter.h"
#include "detail/AssetLookup.h"
#include "detail/FrameArithmetic.h"
#include "detail/GuidText.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

using BusinessEntityModel::BaseTypes::Identifier;
using Data::Sequences::AudioElement;
using Data::Sequences::AudioVideoElement;
using Data::Sequences::Element;
using Data::Sequences::VideoElement;
using DataModel::MediaAssets::KytOperatorMetadataProfile;
using DataModel::MediaAssets::MediaAsset;
using DataModelConversion::ClipMediaTimeConverter;
using TimelineEngineModel::TransitionEffect;

namespace {

constexpr const char kNoPhysicalTimebounds[] = "MediaAsset from Sequence has no PhysicalTimebounds";
constexpr const char kNoOperatorMetadata[] = "MediaAsset from Sequence has no KytOperatorMetadata";
constexpr const char kAbsoluteIn[] =
    "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine";
constexpr const char kAbsoluteOut[] =
    "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine";
constexpr const char kAssetNotFound[] = "MediaAsset for sequence track item not found";

// Frames between two boundaries at a rate.
std::int64_t FramesBetween(const TimePoints::TimeBoundary& to, const TimePoints::TimeBoundary& from,
                           const TimePoints::Rate& rate) {
  return detail::FieldsToFrames(ClipMediaTimeConverter::TimeBoundaryToFields(to, from, rate));
}

bool IsOpenEnded(const TimePoints::TimeBoundary& boundary) {
  return boundary.value == TimePoints::TimePoint::MaxValue().value;
}

void RequireRecordedRanges(const MediaAsset& asset) {
  if (asset.timeBounds.empty()) {
    throw std::invalid_argument(kNoPhysicalTimebounds);
  }
}

// The element's concrete record when its kind names one; elements are read
// through their kind, but a caller's subclass may report a kind whose record it
// is not, and such an element is treated as of no handled kind.
template <typename Concrete>
const Concrete* AsRecord(const Element& element) {
  // Nearly every element is exactly of its record's class: one comparison of
  // type identities instead of a walk through the class hierarchy.
  if (typeid(element) == typeid(Concrete)) {
    return static_cast<const Concrete*>(&element);
  }
  return dynamic_cast<const Concrete*>(&element);
}

std::int64_t AssetDuration(const MediaAsset& asset, const TimePoints::Rate& rate) {
  return TimeConverter::GetMediaAssetLimitInAndDuration(asset, rate).duration;
}

// Transition tables: how the offset and the length follow from the element's
// transition kind and its duration d (frames).
enum class Amount : std::uint8_t { Zero, One, Two, Full, Half };

struct TransitionRule {
  std::int32_t effectKind;
  Amount offset;
  Amount duration;
};

constexpr std::int64_t Resolve(Amount amount, std::int64_t d) {
  switch (amount) {
    case Amount::One:
      return 1;
    case Amount::Two:
      return 2;
    case Amount::Full:
      return d;
    case Amount::Half:
      return d / 2;
    case Amount::Zero:
      break;
  }
  return 0;
}

// Video kinds 1 to 20. Kinds 12 to 20 are three groups of three alignments:
// ending at the cut (offset d), starting at it (0), centred on it (d/2).
constexpr std::array<TransitionRule, 20> kVideoRules = {{
    {1, Amount::Zero, Amount::Zero},  // 1
    {2, Amount::Full, Amount::Full},  // 2
    {2, Amount::Full, Amount::Full},  // 3
    {2, Amount::Full, Amount::Full},  // 4
    {2, Amount::Full, Amount::Full},  // 5
    {2, Amount::Full, Amount::Full},  // 6
    {2, Amount::Full, Amount::Full},  // 7
    {2, Amount::Full, Amount::Full},  // 8
    {2, Amount::Full, Amount::Full},  // 9
    {2, Amount::Full, Amount::Full},  // 10
    {2, Amount::Full, Amount::Full},  // 11
    {1, Amount::Full, Amount::Full},  // 12
    {1, Amount::Zero, Amount::Full},  // 13
    {1, Amount::Half, Amount::Full},  // 14
    {1, Amount::Full, Amount::Full},  // 15
    {1, Amount::Zero, Amount::Full},  // 16
    {1, Amount::Half, Amount::Full},  // 17
    {1, Amount::Full, Amount::Full},  // 18
    {1, Amount::Zero, Amount::Full},  // 19
    {1, Amount::Half, Amount::Full},  // 20
}};

// Audio kinds 1 to 8; kinds 1 and 4 have fixed lengths whatever the duration.
constexpr std::array<TransitionRule, 8> kAudioRules = {{
    {1, Amount::One, Amount::Two},    // 1
    {1, Amount::Zero, Amount::Zero},  // 2
    {2, Amount::Full, Amount::Full},  // 3
    {2, Amount::Zero, Amount::One},   // 4
    {2, Amount::Zero, Amount::Full},  // 5
    {1, Amount::Full, Amount::Full},  // 6
    {1, Amount::Zero, Amount::Full},  // 7
    {1, Amount::Half, Amount::Full},  // 8
}};

// The effect of transition kind k (1-based) with a duration in fields; a kind
// outside the table gives the empty effect.
template <std::size_t N>
TransitionEffect ToEffect(const std::array<TransitionRule, N>& rules, std::int32_t k,
                          std::int32_t durationInFields) {
  TransitionEffect effect;
  if (k < 1 || static_cast<std::size_t>(k) > N) {
    return effect;
  }
  const TransitionRule& rule = rules[static_cast<std::size_t>(k) - 1];
  const std::int64_t d = detail::FieldsToFrames(durationInFields);
  effect.kind = rule.effectKind;
  effect.offset = Resolve(rule.offset, d);
  effect.duration = Resolve(rule.duration, d);
  return effect;
}

}  // namespace

TimePoints::Rate TimeConverter::GetMediaAssetRate(const MediaAsset& asset) {
  RequireRecordedRanges(asset);
  const auto found =
      asset.metadataProfiles.find(KytOperatorMetadataProfile::StaticFullyQualifiedName());
  // A null profile, or one of another class stored under the name, counts as absent.
  const auto* profile = found == asset.metadataProfiles.end()
                            ? nullptr
                            : dynamic_cast<const KytOperatorMetadataProfile*>(found->second.get());
  if (profile == nullptr) {
    throw std::invalid_argument(kNoOperatorMetadata);
  }
  // Everything that is not of the 50 Hz family counts as 59.94, deliberately.
  if (profile->videoRate == 50 || profile->videoRate == 25) {
    return TimePoints::VideoRates::Rate50();
  }
  return TimePoints::VideoRates::Rate5994();
}

LimitInAndDuration TimeConverter::GetMediaAssetLimitInAndDuration(const MediaAsset& asset,
                                                                  const TimePoints::Rate& rate) {
  RequireRecordedRanges(asset);
  if (IsOpenEnded(asset.timeBounds.back().end)) {
    return {0, -1};
  }
  // Gaps between ranges do not count, and each range loses its odd field on its own.
  std::int64_t duration = 0;
  for (const TimePoints::TimeBounds& range : asset.timeBounds) {
    duration = detail::WrappingAdd(duration, FramesBetween(range.end, range.start, rate));
  }
  return {0, duration};
}

LimitInAndDuration TimeConverter::GetShortInAndDurationFromMediaAsset(
    const MediaAsset& asset, const TimePoints::Rate& rate) {
  if (asset.assetKind == 1) {
    return GetMediaAssetLimitInAndDuration(asset, rate);
  }
  RequireRecordedRanges(asset);
  const TimePoints::TimeBoundary first = asset.timeBounds.front().start;
  const std::int64_t limitIn = FramesBetween(asset.shortBounds.start, first, rate);
  if (IsOpenEnded(asset.shortBounds.end)) {
    return {limitIn, -1};
  }
  return {limitIn,
          detail::WrappingSubtract(FramesBetween(asset.shortBounds.end, first, rate), limitIn)};
}

long long TimeConverter::FieldInToRelativeFromBeginning(long long inValue, long long outValue,
                                                        const Element& element,
                                                        const MediaAsset& asset,
                                                        const TimePoints::Rate& rate) {
  const std::int64_t h = detail::FieldsToFrames(inValue);
  switch (element.inBoundaryKind) {
    case SameLimit:
      return h;
    case OppositeLimit:
      return detail::WrappingSubtract(AssetDuration(asset, rate), h);
    case OtherBoundary:
      // Both boundaries relative to each other: IN counts back from the asset's end.
      if (element.outBoundaryKind == OtherBoundary) {
        return detail::WrappingSubtract(AssetDuration(asset, rate), h);
      }
      return detail::WrappingSubtract(
          FieldOutToRelativeFromBeginning(inValue, outValue, element, asset, rate), h);
    default:
      throw std::invalid_argument(kAbsoluteIn);
  }
}

long long TimeConverter::FieldOutToRelativeFromBeginning(long long inPosition, long long outValue,
                                                         const Element& element,
                                                         const MediaAsset& asset,
                                                         const TimePoints::Rate& rate) {
  const std::int64_t h = detail::FieldsToFrames(outValue);
  switch (element.outBoundaryKind) {
    case OppositeLimit:
      return h;
    case SameLimit:
      return detail::WrappingSubtract(AssetDuration(asset, rate), h);
    case OtherBoundary:
      return detail::WrappingAdd(inPosition, h);
    default:
      throw std::invalid_argument(kAbsoluteOut);
  }
}

MediaBounds TimeConverter::ToMediaBounds(const Element& element, const ExternalSequenceInfo& info) {
  MediaBounds bounds;
  bounds.mediaId = detail::ClipAssetIdentifier(element.umId);
  // Looked up before the kind is examined: every element needs its asset.
  const MediaAsset* asset = detail::FindAsset(info, bounds.mediaId);
  if (asset == nullptr) {
    throw std::runtime_error(kAssetNotFound);
  }
  const TimePoints::Rate& rate = info.rate;

  // Resolves one side: IN first, then the OUT position as a length from it.
  const auto resolveSide = [&](std::int64_t inValue, std::int64_t outValue, std::int64_t& in,
                               std::int64_t& duration) {
    in = FieldInToRelativeFromBeginning(inValue, outValue, element, *asset, rate);
    duration = detail::WrappingSubtract(
        FieldOutToRelativeFromBeginning(in, outValue, element, *asset, rate), in);
  };

  switch (element.GetType()) {
    case Element::Video:
      if (const auto* video = AsRecord<VideoElement>(element)) {
        resolveSide(video->inValue, video->outValue, bounds.videoIn, bounds.videoDuration);
      }
      break;
    case Element::Audio:
      if (const auto* audio = AsRecord<AudioElement>(element)) {
        resolveSide(audio->inValue, audio->outValue, bounds.audioIn, bounds.audioDuration);
      }
      break;
    case Element::AudioVideo:
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        // Both IN positions first, then both lengths.
        bounds.videoIn = FieldInToRelativeFromBeginning(both->videoInValue, both->videoOutValue,
                                                        element, *asset, rate);
        bounds.audioIn = FieldInToRelativeFromBeginning(both->audioInValue, both->audioOutValue,
                                                        element, *asset, rate);
        bounds.videoDuration = detail::WrappingSubtract(
            FieldOutToRelativeFromBeginning(bounds.videoIn, both->videoOutValue, element, *asset,
                                            rate),
            bounds.videoIn);
        bounds.audioDuration = detail::WrappingSubtract(
            FieldOutToRelativeFromBeginning(bounds.audioIn, both->audioOutValue, element, *asset,
                                            rate),
            bounds.audioIn);
      }
      break;
    default:
      break;
  }
  return bounds;
}

TransitionEffect TimeConverter::ToVideoTransitionBounds(const Element& element) {
  switch (element.GetType()) {
    case Element::Video:
      if (const auto* video = AsRecord<VideoElement>(element)) {
        return ToEffect(kVideoRules, video->transitionType, video->transitionDuration);
      }
      break;
    case Element::AudioVideo:
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        return ToEffect(kVideoRules, both->transitionType, both->videoTransitionDuration);
      }
      break;
    default:
      break;
  }
  return TransitionEffect();
}

TransitionEffect TimeConverter::ToAudioTransitionBounds(const Element& element) {
  switch (element.GetType()) {
    case Element::Audio:
      if (const auto* audio = AsRecord<AudioElement>(element)) {
        return ToEffect(kAudioRules, audio->transitionType, audio->transitionDuration);
      }
      break;
    case Element::AudioVideo:
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        return ToEffect(kAudioRules, both->audioTransitionType, both->audioTransitionDuration);
      }
      break;
    default:
      break;
  }
  return TransitionEffect();
}

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
