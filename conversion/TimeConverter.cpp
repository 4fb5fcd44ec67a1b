// TimeConverter: asset timing, element boundaries and transition effects.
#include "TimeConverter.h"

#include <array>
#include <typeinfo>

#include "Refusals.hpp"
#include "detail/AssetLookup.h"
#include "detail/GuidText.h"
#include "detail/PlayedParts.h"
#include "detail/TimeUnits.h"

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
using detail::Fields;
using detail::Frames;
using detail::MaterialLength;
using TimelineEngineModel::TransitionEffect;

namespace {

// Frames between two time boundaries at a rate.
Frames FramesBetween(const TimePoints::TimeBoundary& to, const TimePoints::TimeBoundary& from,
                     const TimePoints::Rate& rate) {
  return detail::ToFrames(detail::FieldsBetween(to, from, rate));
}

bool IsOpenEnded(const TimePoints::TimeBoundary& boundary) {
  return boundary.value == TimePoints::TimePoint::MaxValue().value;
}

void RequireRecordedRanges(const MediaAsset& asset) {
  if (asset.timeBounds.empty()) {
    detail::RefuseAssetWithoutRecordedRanges();
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

// Boundary resolution. An element says how its IN and OUT values are to be
// read through two boundary kinds, shared by both its sides (in and out are
// the element's values in fields, in/2 and out/2 the same in frames):
//
//   kind            IN position (frames)          OUT position (frames)
//   SameLimit       in/2 from the asset's start   out/2 back from its end
//   OppositeLimit   in/2 back from its end        out/2 from its start
//   OtherBoundary   in/2 back from the OUT        out/2 after the IN
//                   (back from the asset's end
//                   when OUT is OtherBoundary too)
//
// The OUT position that counts from an end of the asset needs no IN position,
// so the IN resolution uses it directly and neither resolver calls the other.
struct BoundaryKinds {
  std::int32_t in;
  std::int32_t out;
};

BoundaryKinds KindsOf(const Element& element) {
  return {element.inBoundaryKind, element.outBoundaryKind};
}

// The OUT position for an OUT kind that counts from an end of the asset.
Frames OutFromAssetLimit(std::int32_t outKind, Fields outValue, MaterialLength& material) {
  switch (outKind) {
    case OppositeLimit:
      return detail::ToFrames(outValue);
    case SameLimit:
      return material.Get() - detail::ToFrames(outValue);
    default:
      detail::RefuseAbsoluteOut();
  }
}

Frames ResolveIn(BoundaryKinds kinds, Fields inValue, Fields outValue, MaterialLength& material) {
  const Frames in = detail::ToFrames(inValue);
  switch (kinds.in) {
    case SameLimit:
      return in;
    case OppositeLimit:
      return material.Get() - in;
    case OtherBoundary:
      // Both boundaries relative to each other: IN counts back from the asset's end.
      if (kinds.out == OtherBoundary) {
        return material.Get() - in;
      }
      return OutFromAssetLimit(kinds.out, outValue, material) - in;
    default:
      detail::RefuseAbsoluteIn();
  }
}

Frames ResolveOut(BoundaryKinds kinds, Frames inPosition, Fields outValue,
                  MaterialLength& material) {
  if (kinds.out == OtherBoundary) {
    return inPosition + detail::ToFrames(outValue);
  }
  return OutFromAssetLimit(kinds.out, outValue, material);
}

// One side of an element: IN first, then the length up to the OUT position.
void ResolveSide(BoundaryKinds kinds, Fields inValue, Fields outValue, MaterialLength& material,
                 std::int64_t& in, std::int64_t& length) {
  const Frames inPosition = ResolveIn(kinds, inValue, outValue, material);
  const Frames outPosition = ResolveOut(kinds, inPosition, outValue, material);
  in = inPosition.count;
  length = (outPosition - inPosition).count;
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
  const std::int64_t d = detail::ToFrames(Fields{durationInFields}).count;
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
    detail::RefuseAssetWithoutOperatorMetadata();
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
  Frames duration;
  for (const TimePoints::TimeBounds& range : asset.timeBounds) {
    duration = duration + FramesBetween(range.end, range.start, rate);
  }
  return {0, duration.count};
}

LimitInAndDuration TimeConverter::GetShortInAndDurationFromMediaAsset(
    const MediaAsset& asset, const TimePoints::Rate& rate) {
  if (asset.assetKind == 1) {
    return GetMediaAssetLimitInAndDuration(asset, rate);
  }
  RequireRecordedRanges(asset);
  const TimePoints::TimeBoundary first = asset.timeBounds.front().start;
  const Frames limitIn = FramesBetween(asset.shortBounds.start, first, rate);
  if (IsOpenEnded(asset.shortBounds.end)) {
    return {limitIn.count, -1};
  }
  return {limitIn.count, (FramesBetween(asset.shortBounds.end, first, rate) - limitIn).count};
}

long long TimeConverter::FieldInToRelativeFromBeginning(long long inValue, long long outValue,
                                                        const Element& element,
                                                        const MediaAsset& asset,
                                                        const TimePoints::Rate& rate) {
  MaterialLength material(asset, rate);
  return ResolveIn(KindsOf(element), Fields{inValue}, Fields{outValue}, material).count;
}

long long TimeConverter::FieldOutToRelativeFromBeginning(long long inPosition, long long outValue,
                                                         const Element& element,
                                                         const MediaAsset& asset,
                                                         const TimePoints::Rate& rate) {
  MaterialLength material(asset, rate);
  return ResolveOut(KindsOf(element), Frames{inPosition}, Fields{outValue}, material).count;
}

MediaBounds TimeConverter::ToMediaBounds(const Element& element, const ExternalSequenceInfo& info) {
  MediaBounds bounds;
  bounds.mediaId = detail::ClipAssetIdentifier(element.umId);
  // Looked up before the kind is examined: every element needs its asset.
  const MediaAsset* asset = detail::FindAsset(info, bounds.mediaId);
  if (asset == nullptr) {
    detail::RefuseMissingElementAsset();
  }
  MaterialLength material(*asset, info.rate);
  detail::ResolvePlayedParts(element, material, bounds);
  return bounds;
}

void detail::ResolvePlayedParts(const Element& element, MaterialLength& material,
                                MediaBounds& bounds) {
  const BoundaryKinds kinds = KindsOf(element);
  switch (element.GetType()) {
    case Element::Video:
      if (const auto* video = AsRecord<VideoElement>(element)) {
        ResolveSide(kinds, Fields{video->inValue}, Fields{video->outValue}, material,
                    bounds.videoIn, bounds.videoDuration);
      }
      break;
    case Element::Audio:
      if (const auto* audio = AsRecord<AudioElement>(element)) {
        ResolveSide(kinds, Fields{audio->inValue}, Fields{audio->outValue}, material,
                    bounds.audioIn, bounds.audioDuration);
      }
      break;
    case Element::AudioVideo:
      // Both sides share the boundary kinds, and a refusal depends on nothing
      // else: the picture side resolved whole before the sound side meets any
      // refusal at the same point as both IN positions resolved first.
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        ResolveSide(kinds, Fields{both->videoInValue}, Fields{both->videoOutValue}, material,
                    bounds.videoIn, bounds.videoDuration);
        ResolveSide(kinds, Fields{both->audioInValue}, Fields{both->audioOutValue}, material,
                    bounds.audioIn, bounds.audioDuration);
      }
      break;
    default:
      break;
  }
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
