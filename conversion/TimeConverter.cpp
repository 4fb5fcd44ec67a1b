// TimeConverter: asset timing, element boundaries and transition effects.
#include "TimeConverter.h"

#include <typeinfo>

#include "Refusals.hpp"
#include "detail/AssetLookup.h"
#include "detail/GuidText.h"
#include "detail/PlayedParts.h"
#include "detail/TimeUnits.h"
#include "detail/TransitionRules.h"

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
using detail::BoundaryKinds;
using detail::FieldCounter;
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
  return {0, detail::MaterialFrames(asset, FieldCounter(rate)).count};
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
  const FieldCounter counter(rate);
  MaterialLength material(asset, counter);
  return detail::ResolveIn(detail::KindsOf(element), Fields{inValue}, Fields{outValue}, material)
      .count;
}

long long TimeConverter::FieldOutToRelativeFromBeginning(long long inPosition, long long outValue,
                                                         const Element& element,
                                                         const MediaAsset& asset,
                                                         const TimePoints::Rate& rate) {
  const FieldCounter counter(rate);
  MaterialLength material(asset, counter);
  return detail::ResolveOut(detail::KindsOf(element), Frames{inPosition}, Fields{outValue},
                            material)
      .count;
}

MediaBounds TimeConverter::ToMediaBounds(const Element& element, const ExternalSequenceInfo& info) {
  MediaBounds bounds;
  bounds.mediaId = detail::ClipAssetIdentifier(element.umId);
  // Looked up before the kind is examined: every element needs its asset.
  const MediaAsset* asset = detail::FindAsset(info, bounds.mediaId);
  if (asset == nullptr) {
    detail::RefuseMissingElementAsset();
  }
  const FieldCounter counter(info.rate);
  MaterialLength material(*asset, counter);
  detail::ResolvePlayedParts(element, material, bounds);
  return bounds;
}

void detail::ResolvePlayedParts(const Element& element, MaterialLength& material,
                                MediaBounds& bounds) {
  switch (element.GetType()) {
    case Element::Video:
      if (const auto* video = AsRecord<VideoElement>(element)) {
        ResolveSingleSide(*video, material, bounds.videoIn, bounds.videoDuration);
      }
      break;
    case Element::Audio:
      if (const auto* audio = AsRecord<AudioElement>(element)) {
        ResolveSingleSide(*audio, material, bounds.audioIn, bounds.audioDuration);
      }
      break;
    case Element::AudioVideo:
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        ResolveBothSides(*both, material, bounds);
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
        return detail::ToEffect(detail::kVideoRules, video->transitionType,
                                video->transitionDuration);
      }
      break;
    case Element::AudioVideo:
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        return detail::ToEffect(detail::kVideoRules, both->transitionType,
                                both->videoTransitionDuration);
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
        return detail::ToEffect(detail::kAudioRules, audio->transitionType,
                                audio->transitionDuration);
      }
      break;
    case Element::AudioVideo:
      if (const auto* both = AsRecord<AudioVideoElement>(element)) {
        return detail::ToEffect(detail::kAudioRules, both->audioTransitionType,
                                both->audioTransitionDuration);
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
