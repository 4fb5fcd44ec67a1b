// TrackConverter: media and transition items, whole tracks, the aux track.
#include "TrackConverter.h"

#include <limits>
#include <string>
#include <utility>

#include "Refusals.hpp"
#include "detail/AssetLookup.h"
#include "detail/ClipAssets.h"
#include "detail/FrameArithmetic.h"
#include "detail/GuidText.h"
#include "detail/PlayedParts.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

using BusinessEntityModel::BaseTypes::Identifier;
using Data::Sequences::AudioElement;
using Data::Sequences::AudioVideoElement;
using Data::Sequences::Element;
using Data::Sequences::VideoElement;
using TimelineEngineModel::FxTransitionItem;
using TimelineEngineModel::MediaSummaryItem;
using TimelineEngineModel::TransitionEffect;

namespace {

// Every track that the conversion builds is of this engine type.
constexpr std::int32_t kTrackType = 1;
// The effect kind whose transition overlaps the two items it joins.
constexpr std::int32_t kOverlappingEffectKind = 2;
// The aux track's index: -1 as unsigned, so index + 1 wraps to 0.
constexpr unsigned kAuxTrackIndex = std::numeric_limits<unsigned>::max();

// A media length on the timeline at a speed. Open-ended material (-1) takes no
// room; a speed without numerator scales every length to 0.
std::int64_t TimelineLength(std::int64_t mediaLength, const Data::Channels::Speed& speed) {
  if (mediaLength == -1 || speed.numerator == 0) {
    return 0;
  }
  return detail::WrappingDivide(detail::WrappingMultiply(mediaLength, speed.denominator),
                                speed.numerator);
}

// The picture or the sound side of a track, as the transition checks see it:
// its running position and the timeline length of an item on it.
struct Side {
  detail::TrackSide name;
  std::int64_t CurrentSequencePlayStatus::*position;
  std::int64_t MediaSummaryItem::*timelineDuration;
};

constexpr Side kVideoSide{detail::TrackSide::Video, &CurrentSequencePlayStatus::position,
                          &MediaSummaryItem::timelineVideoDuration};
constexpr Side kAudioSide{detail::TrackSide::Audio, &CurrentSequencePlayStatus::secondPosition,
                          &MediaSummaryItem::timelineAudioDuration};

// A transition joins the previous item to the next one. An overlapping one
// (effect kind 2) pulls the next item back by its offset, the part before the
// cut:
//
//   previous  |==========|            position before:  100
//   next                 |======      kind 2, offset 10
//   next after pull-back |=====       starts at 90, overlapping the previous item
//             ..........[tttt]
//
// Whatever its kind, the part before the cut must fit the previous item and
// the part after it (duration - offset) the next one; an item with no length
// is never tested.
void PullBackIfOverlapping(const Side& side, const TransitionEffect& effect,
                           CurrentSequencePlayStatus& status) {
  if (effect.kind == kOverlappingEffectKind) {
    status.*side.position = detail::WrappingSubtract(status.*side.position, effect.offset);
  }
}

void CheckBeforeCut(const Side& side, const TransitionEffect& effect,
                    const MediaSummaryItem& previous, std::int32_t playlistNumber,
                    std::int32_t itemNumber) {
  const std::int64_t previousLength = previous.*side.timelineDuration;
  if (previousLength > 0 && previousLength < effect.offset) {
    detail::RefuseTransitionLongerThanPreviousItem(side.name, playlistNumber, itemNumber);
  }
}

void CheckAfterCut(const Side& side, const TransitionEffect& effect,
                   const MediaSummaryItem& current, std::int32_t playlistNumber) {
  const std::int64_t currentLength = current.*side.timelineDuration;
  if (currentLength > 0 &&
      detail::WrappingSubtract(effect.duration, effect.offset) > currentLength) {
    detail::RefuseTransitionLongerThanCurrentItem(side.name, playlistNumber);
  }
}

// A new media item for the element, with its identifier and nothing else.
std::unique_ptr<MediaSummaryItem> NewMediaItem(const Element& element) {
  return std::unique_ptr<MediaSummaryItem>(new MediaSummaryItem(
      detail::GuidToIdentifier(Data::Sequences::Elements::Guid(element.number, element.serverId))));
}

// Fills the item from the element's media bounds and places it at the status's
// positions (negative ones clamped to 0), scaled by the speed in force; then
// advances the positions past it.
void PlaceOnTimeline(const Element& element, MediaBounds&& bounds,
                     CurrentSequencePlayStatus& status, MediaSummaryItem& item) {
  item.mediaId = std::move(bounds.mediaId);
  item.mediaVideoIn = bounds.videoIn;
  item.mediaVideoDuration = bounds.videoDuration;
  item.mediaAudioIn = bounds.audioIn;
  item.mediaAudioDuration = bounds.audioDuration;

  if (status.position < 0) {
    status.position = 0;
  }
  if (status.secondPosition < 0) {
    status.secondPosition = 0;
  }
  item.timelineVideoIn = status.position;
  item.timelineAudioIn = status.secondPosition;

  // An element without a speed of its own plays at the speed of the one before.
  if (element.speed != Data::Channels::Speed::Empty() && element.speed.numerator != 0) {
    status.speed = element.speed;
  }
  item.timelineVideoDuration = TimelineLength(item.mediaVideoDuration, status.speed);
  item.timelineAudioDuration = TimelineLength(item.mediaAudioDuration, status.speed);

  status.position = detail::WrappingAdd(item.timelineVideoIn, item.timelineVideoDuration);
  status.secondPosition = detail::WrappingAdd(item.timelineAudioIn, item.timelineAudioDuration);
}

// ToMediaSummaryItem with the assets of the whole track at hand: the same item,
// refused at the same point, with the asset found once per clip.
std::unique_ptr<MediaSummaryItem> MediaItemOf(const Element& element,
                                              CurrentSequencePlayStatus& status,
                                              detail::ClipAssets& assets) {
  std::unique_ptr<MediaSummaryItem> item = NewMediaItem(element);
  // Bounds first: should they throw, the status has not been touched.
  MediaBounds bounds;
  detail::MaterialLength& material = assets.Find(element.umId, bounds.mediaId);
  detail::ResolvePlayedParts(element, material, bounds);
  PlaceOnTimeline(element, std::move(bounds), status, *item);
  return item;
}

// The audio transition kind of an element: its own field on an audio-video
// element, the single transition field on an audio element.
std::int32_t AudioTransitionKind(const AudioVideoElement& element) {
  return element.audioTransitionType;
}
std::int32_t AudioTransitionKind(const AudioElement& element) {
  return element.transitionType;
}

// Room for every item that a track can get: one per element, and one per
// transition that an element after the first announces (a transition whose
// effect turns out empty leaves its place unused).
template <bool kHasVideo, bool kHasAudio, typename TrackT>
std::size_t MostItems(const TrackT& track) {
  std::size_t count = track.elements.size();
  for (std::size_t i = 1; i < track.elements.size(); ++i) {
    if constexpr (kHasVideo) {
      count += track.elements[i].transitionType != 0 ? 1 : 0;
    }
    if constexpr (kHasAudio) {
      count += AudioTransitionKind(track.elements[i]) != 0 ? 1 : 0;
    }
  }
  return count;
}

// One sequence track to one engine track; Kind says which transitions the
// elements of TrackT carry (video, audio or both, video first). Per element:
// its transitions, which pull the position back and are checked against the
// previous item; its media item; the transitions checked against that item;
// then the items appended in the order transitions, media item.
template <Element::Type Kind, typename TrackT>
TimelineEngineModel::Track ToTrackCommon(const TrackT& track, unsigned index,
                                         const ExternalSequenceInfo& info,
                                         const detail::AssetLengths* known = nullptr) {
  constexpr bool kHasVideo = Kind != Element::Audio;
  constexpr bool kHasAudio = Kind != Element::Video;

  TimelineEngineModel::Track result;
  result.id = TrackConverter::TimelineIdToTrackId(info.timelineId, index);
  result.type = kTrackType;
  if (track.elements.empty()) {
    return result;
  }
  result.items.reserve(MostItems<kHasVideo, kHasAudio>(track));
  // Every refusal of the track names the playlist of its first element.
  const std::int32_t playlistNumber = track.elements.at(0).playlistNumber;

  CurrentSequencePlayStatus status;
  detail::ClipAssets assets(info, known);
  // The track owns every item; the previous media item is only looked at.
  const MediaSummaryItem* previous = nullptr;
  for (const auto& element : track.elements) {
    // A transition joins an element to the one before it, so the first
    // element's transition is never read.
    std::shared_ptr<FxTransitionItem> video;
    std::shared_ptr<FxTransitionItem> audio;
    if constexpr (kHasVideo) {
      if (previous != nullptr && element.transitionType != 0) {
        video = TrackConverter::ToFxVideoTransitionItem(element);
      }
      if (video) {
        PullBackIfOverlapping(kVideoSide, video->FxTransition(), status);
        CheckBeforeCut(kVideoSide, video->FxTransition(), *previous, playlistNumber,
                       element.itemNumber);
      }
    }
    if constexpr (kHasAudio) {
      if (previous != nullptr && AudioTransitionKind(element) != 0) {
        audio = TrackConverter::ToFxAudioTransitionItem(element);
      }
      if (audio) {
        PullBackIfOverlapping(kAudioSide, audio->FxTransition(), status);
        CheckBeforeCut(kAudioSide, audio->FxTransition(), *previous, playlistNumber,
                       element.itemNumber);
      }
    }

    std::shared_ptr<MediaSummaryItem> current = MediaItemOf(element, status, assets);
    if (video) {
      CheckAfterCut(kVideoSide, video->FxTransition(), *current, playlistNumber);
    }
    if (audio) {
      CheckAfterCut(kAudioSide, audio->FxTransition(), *current, playlistNumber);
    }

    if (video) {
      result.items.push_back(std::move(video));
    }
    if (audio) {
      result.items.push_back(std::move(audio));
    }
    previous = current.get();
    result.items.push_back(std::move(current));
  }
  return result;
}

// A transition item of the given class, or empty when its effect is of kind 0.
template <typename ItemT>
std::unique_ptr<FxTransitionItem> ToTransitionItem(Identifier id, const TransitionEffect& effect) {
  std::unique_ptr<FxTransitionItem> item(new ItemT(std::move(id)));
  item->FxTransition(effect);
  if (item->FxTransition().kind == 0) {
    item.reset();
  }
  return item;
}

}  // namespace

std::unique_ptr<MediaSummaryItem> TrackConverter::ToMediaSummaryItem(
    const Element& element, CurrentSequencePlayStatus& status, const ExternalSequenceInfo& info) {
  std::unique_ptr<MediaSummaryItem> item = NewMediaItem(element);
  // Bounds first: should they throw, the status has not been touched.
  PlaceOnTimeline(element, TimeConverter::ToMediaBounds(element, info), status, *item);
  return item;
}

std::unique_ptr<FxTransitionItem> TrackConverter::ToFxVideoTransitionItem(const Element& element) {
  return ToTransitionItem<TimelineEngineModel::FxVideoTransitionItem>(
      ElementIdToTransitionId<Video>(element), TimeConverter::ToVideoTransitionBounds(element));
}

std::unique_ptr<FxTransitionItem> TrackConverter::ToFxAudioTransitionItem(const Element& element) {
  return ToTransitionItem<TimelineEngineModel::FxAudioTransitionItem>(
      ElementIdToTransitionId<Audio>(element), TimeConverter::ToAudioTransitionBounds(element));
}

Identifier TrackConverter::TimelineIdToTrackId(const Identifier& timelineId, unsigned index) {
  // Unsigned on purpose: the aux track's index 4294967295 becomes track number 0.
  const std::string digits = std::to_string(index + 1u);
  const std::string& text = timelineId.Text();
  const std::size_t kept = digits.size() > text.size() ? text.size() : text.size() - digits.size();
  // Built in place at its final size: one allocation, no temporary.
  std::string trackId;
  trackId.reserve(kept + digits.size());
  trackId.append(text, 0, kept).append(digits);
  return Identifier(std::move(trackId));
}

TimelineEngineModel::Track TrackConverter::ToTrack(
    const Data::Sequences::Track<VideoElement>& track, unsigned index,
    const ExternalSequenceInfo& info) {
  return ToTrackCommon<Element::Video>(track, index, info);
}

TimelineEngineModel::Track TrackConverter::ToTrack(const Data::Sequences::AudioTrack& track,
                                                   unsigned index,
                                                   const ExternalSequenceInfo& info) {
  return ToTrackCommon<Element::Audio>(track, index, info);
}

TimelineEngineModel::Track TrackConverter::ToTrack(
    const Data::Sequences::Track<AudioVideoElement>& track, unsigned index,
    const ExternalSequenceInfo& info) {
  return ToTrackCommon<Element::AudioVideo>(track, index, info);
}

TimelineEngineModel::Track detail::ToTrackWithKnownLengths(
    const Data::Sequences::Track<AudioVideoElement>& track, unsigned index,
    const ExternalSequenceInfo& info, const AssetLengths& known) {
  return ToTrackCommon<Element::AudioVideo>(track, index, info, &known);
}

TimelineEngineModel::Track TrackConverter::PlaylistAuxTrackToTrack(
    const Data::Sequences::Playlist& playlist, const ExternalSequenceInfo& info) {
  TimelineEngineModel::Track track;
  track.id = TimelineIdToTrackId(info.timelineId, kAuxTrackIndex);
  track.type = kTrackType;

  std::unique_ptr<MediaSummaryItem> item(
      new MediaSummaryItem(detail::GuidToIdentifier(Data::Sequences::Elements::Guid(
          playlist.number, playlist.serverId, Data::Sequences::Elements::Guid::AuxTrack))));
  item->mediaId = detail::ClipAssetIdentifier(playlist.auxTrackUmId);
  const DataModel::MediaAssets::MediaAsset* asset = detail::FindAsset(info, item->mediaId);
  if (asset == nullptr) {
    detail::RefuseMissingAuxAsset();
  }
  const LimitInAndDuration shortRange =
      TimeConverter::GetShortInAndDurationFromMediaAsset(*asset, playlist.rate);

  // Sound only, from the start of the timeline. The short range's length is
  // halved once more while its in-point is not: that asymmetry is the
  // behaviour the engine's callers rely on. An open end (-1) gives 0 already;
  // a half of -1 is taken as 0 too.
  std::int64_t half = shortRange.duration / 2;
  if (half == -1) {
    half = 0;
  }
  item->mediaAudioIn = shortRange.limitIn;
  item->mediaAudioDuration = half;
  item->timelineAudioDuration = half;
  track.items.push_back(std::move(item));
  return track;
}

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
