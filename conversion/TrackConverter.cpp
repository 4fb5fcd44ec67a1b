// TrackConverter: media and transition items, whole tracks, the aux track.
// One source per converter, so that every rule of the track conversion is
// found under its converter's name; the file is longer than most for that.
#include "TrackConverter.h"

#include <array>
#include <iterator>
#include <limits>
#include <string>
#include <utility>

#include "Refusals.hpp"
#include "detail/AssetLookup.h"
#include "detail/ClipAssets.h"
#include "detail/ConversionParts.h"
#include "detail/FrameArithmetic.h"
#include "detail/GuidText.h"
#include "detail/PlayedParts.h"
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
using detail::EffectValues;
using TimelineEngineModel::FxTransitionItem;
using TimelineEngineModel::MediaSummaryItem;

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
void PullBackIfOverlapping(const Side& side, const EffectValues& effect,
                           CurrentSequencePlayStatus& status) {
  if (effect.kind == kOverlappingEffectKind) {
    status.*side.position = detail::WrappingSubtract(status.*side.position, effect.offset);
  }
}

void CheckBeforeCut(const Side& side, const EffectValues& effect, const MediaSummaryItem& previous,
                    std::int32_t playlistNumber, std::int32_t itemNumber) {
  const std::int64_t previousLength = previous.*side.timelineDuration;
  if (previousLength > 0 && previousLength < effect.offset) {
    detail::RefuseTransitionLongerThanPreviousItem(side.name, playlistNumber, itemNumber);
  }
}

void CheckAfterCut(const Side& side, const EffectValues& effect, const MediaSummaryItem& current,
                   std::int32_t playlistNumber) {
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

// Fills the item from the element's media bounds (the caller sets its mediaId)
// and places it at the status's positions (negative ones clamped to 0), scaled
// by the speed in force; then advances the positions past it.
void PlaceOnTimeline(const Element& element, const MediaBounds& bounds,
                     CurrentSequencePlayStatus& status, MediaSummaryItem& item) {
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

// How the text of an element's transition GUID differs from the text of the
// element's own GUID: in the characters that write the family and the
// category, which are the same for every element. Measured once from the
// GUIDs themselves, on elements whose numbers and servers differ in every
// digit; should the difference ever depend on them, it is not used and every
// transition text is written in full.
struct TextDifference {
  bool usable = true;
  std::size_t count = 0;
  std::array<unsigned char, Data::Guid::kTextLength> positions{};
  std::array<char, Data::Guid::kTextLength> characters{};
};

template <FxTransitionType Kind>
TextDifference MeasureTextDifference() {
  constexpr Data::Sequences::Elements::Guid::Category kCategory =
      Kind == Video ? Data::Sequences::Elements::Guid::VideoTransition
                    : Data::Sequences::Elements::Guid::AudioTransition;
  constexpr std::uint32_t kSamples[] = {0u, 0xFFFFFFFFu, 0x5A3C96E1u};
  TextDifference difference;
  for (std::size_t sample = 0; sample < std::size(kSamples); ++sample) {
    const Data::Servers::ServerId server(~kSamples[sample]);
    char item[Data::Guid::kTextLength + 1];
    char transition[Data::Guid::kTextLength + 1];
    Data::Sequences::Elements::Guid(kSamples[sample], server).ToString(item, sizeof item);
    Data::Sequences::Elements::Guid(kSamples[sample], server, kCategory)
        .ToString(transition, sizeof transition);
    std::size_t count = 0;
    for (std::size_t i = 0; i < Data::Guid::kTextLength; ++i) {
      if (item[i] == transition[i]) {
        continue;
      }
      if (sample == 0) {
        difference.positions[count] = static_cast<unsigned char>(i);
        difference.characters[count] = transition[i];
      } else if (count >= difference.count || difference.positions[count] != i ||
                 difference.characters[count] != transition[i]) {
        difference.usable = false;
      }
      ++count;
    }
    if (sample == 0) {
      difference.count = count;
    } else if (count != difference.count) {
      difference.usable = false;
    }
  }
  return difference;
}

template <FxTransitionType Kind>
const TextDifference& TransitionTextDifference() {
  static const TextDifference difference = MeasureTextDifference<Kind>();
  return difference;
}

// The GUID text of an element's media item, written once; the texts of its
// transition items are made from it.
class ElementText {
 public:
  explicit ElementText(const Element& element) : element_(element) {
    Data::Sequences::Elements::Guid(element.number, element.serverId).ToString(text_, sizeof text_);
  }

  Identifier ItemId() const { return Identifier(std::string(text_, Data::Guid::kTextLength)); }

  template <FxTransitionType Kind>
  Identifier TransitionId() const {
    const TextDifference& difference = TransitionTextDifference<Kind>();
    if (!difference.usable) {
      return ElementIdToTransitionId<Kind>(element_);
    }
    std::string text(text_, Data::Guid::kTextLength);
    for (std::size_t i = 0; i < difference.count; ++i) {
      text[difference.positions[i]] = difference.characters[i];
    }
    return Identifier(std::move(text));
  }

 private:
  const Element& element_;
  char text_[Data::Guid::kTextLength + 1];
};

// What the track conversion reads of its elements, by their exact class: a
// track holds its elements by value, so every element of a
// Track<VideoElement> is exactly a VideoElement, and no kind needs asking.
// The transition effects and the played parts are the ones TimeConverter
// gives for an element of that class.
struct VideoElements {
  using ElementT = VideoElement;
  static constexpr bool kHasVideo = true;
  static constexpr bool kHasAudio = false;
  static EffectValues VideoEffect(const VideoElement& element) {
    return detail::EffectValuesOf(detail::kVideoRules, element.transitionType,
                                  element.transitionDuration);
  }
  template <typename Material>
  static void Resolve(const VideoElement& element, Material& material, MediaBounds& bounds) {
    detail::ResolveSingleSide(element, material, bounds.videoIn, bounds.videoDuration);
  }
};

struct AudioElements {
  using ElementT = AudioElement;
  static constexpr bool kHasVideo = false;
  static constexpr bool kHasAudio = true;
  // The single transition field of an audio element holds the audio kind.
  static std::int32_t AudioKind(const AudioElement& element) { return element.transitionType; }
  static EffectValues AudioEffect(const AudioElement& element) {
    return detail::EffectValuesOf(detail::kAudioRules, element.transitionType,
                                  element.transitionDuration);
  }
  template <typename Material>
  static void Resolve(const AudioElement& element, Material& material, MediaBounds& bounds) {
    detail::ResolveSingleSide(element, material, bounds.audioIn, bounds.audioDuration);
  }
};

struct AudioVideoElements {
  using ElementT = AudioVideoElement;
  static constexpr bool kHasVideo = true;
  static constexpr bool kHasAudio = true;
  static std::int32_t AudioKind(const AudioVideoElement& element) {
    return element.audioTransitionType;
  }
  static EffectValues VideoEffect(const AudioVideoElement& element) {
    return detail::EffectValuesOf(detail::kVideoRules, element.transitionType,
                                  element.videoTransitionDuration);
  }
  static EffectValues AudioEffect(const AudioVideoElement& element) {
    return detail::EffectValuesOf(detail::kAudioRules, element.audioTransitionType,
                                  element.audioTransitionDuration);
  }
  template <typename Material>
  static void Resolve(const AudioVideoElement& element, Material& material, MediaBounds& bounds) {
    detail::ResolveBothSides(element, material, bounds);
  }
};

// The element's transition item of the given class with its effect, or empty
// when the effect is of kind 0 (the item that ToFxVideoTransitionItem and
// ToFxAudioTransitionItem make).
template <typename ItemT, FxTransitionType Kind>
std::shared_ptr<FxTransitionItem> TransitionItem(const ElementText& text,
                                                 const EffectValues& effect) {
  std::unique_ptr<ItemT> item(new ItemT(text.TransitionId<Kind>()));
  // Field by field: the effects of the tables have no name, nor has a new item.
  item->effect.kind = effect.kind;
  item->effect.offset = effect.offset;
  item->effect.duration = effect.duration;
  return item;
}

// Room for every item that a track can get: one per element, and one per
// transition that an element after the first announces (a transition whose
// effect turns out empty leaves its place unused).
template <typename Elements, typename TrackT>
std::size_t MostItems(const TrackT& track) {
  std::size_t count = track.elements.size();
  for (std::size_t i = 1; i < track.elements.size(); ++i) {
    if constexpr (Elements::kHasVideo) {
      count += track.elements[i].transitionType != 0 ? 1 : 0;
    }
    if constexpr (Elements::kHasAudio) {
      count += Elements::AudioKind(track.elements[i]) != 0 ? 1 : 0;
    }
  }
  return count;
}

// The track with its identifier and type and no item yet.
TimelineEngineModel::Track EmptyTrack(const Identifier& timelineId, unsigned index) {
  TimelineEngineModel::Track result;
  result.id = TrackConverter::TimelineIdToTrackId(timelineId, index);
  result.type = kTrackType;
  return result;
}

// One sequence track to one engine track; Elements says which transitions the
// elements carry (video, audio or both, video first). Per element: its
// transitions, which pull the position back and are checked against the
// previous item; its media item; the transitions checked against that item;
// then the items appended in the order transitions, media item. The assets'
// table comes first, before any block of the result (see ClipAssets).
template <typename Elements>
TimelineEngineModel::Track ConvertTrack(
    const Data::Sequences::Track<typename Elements::ElementT>& track, unsigned index,
    const Identifier& timelineId, detail::ClipAssets& assets) {
  TimelineEngineModel::Track result = EmptyTrack(timelineId, index);
  if (track.elements.empty()) {
    return result;
  }
  result.items.reserve(MostItems<Elements>(track));
  // Every refusal of the track names the playlist of its first element.
  const std::int32_t playlistNumber = track.elements.front().playlistNumber;

  CurrentSequencePlayStatus status;
  // The track owns every item; the previous media item is only looked at.
  const MediaSummaryItem* previous = nullptr;
  for (const auto& element : track.elements) {
    const ElementText text(element);
    // A transition joins an element to the one before it, so the first
    // element's transition is never read.
    std::shared_ptr<FxTransitionItem> video;
    std::shared_ptr<FxTransitionItem> audio;
    EffectValues videoEffect;
    EffectValues audioEffect;
    if constexpr (Elements::kHasVideo) {
      if (previous != nullptr && element.transitionType != 0) {
        videoEffect = Elements::VideoEffect(element);
        if (videoEffect.kind != 0) {
          video =
              TransitionItem<TimelineEngineModel::FxVideoTransitionItem, Video>(text, videoEffect);
          PullBackIfOverlapping(kVideoSide, videoEffect, status);
          CheckBeforeCut(kVideoSide, videoEffect, *previous, playlistNumber, element.itemNumber);
        }
      }
    }
    if constexpr (Elements::kHasAudio) {
      if (previous != nullptr && Elements::AudioKind(element) != 0) {
        audioEffect = Elements::AudioEffect(element);
        if (audioEffect.kind != 0) {
          audio =
              TransitionItem<TimelineEngineModel::FxAudioTransitionItem, Audio>(text, audioEffect);
          PullBackIfOverlapping(kAudioSide, audioEffect, status);
          CheckBeforeCut(kAudioSide, audioEffect, *previous, playlistNumber, element.itemNumber);
        }
      }
    }

    std::unique_ptr<MediaSummaryItem> item(new MediaSummaryItem(text.ItemId()));
    {
      // Bounds first: should they throw, the status has not been touched.
      detail::ClipAssets::Asset& asset = assets.Find(element.umId);
      detail::ClipAssets::Length material(asset, assets.Counter());
      MediaBounds bounds;
      Elements::Resolve(element, material, bounds);
      item->mediaId = assets.MediaId(asset);
      PlaceOnTimeline(element, bounds, status, *item);
    }
    if (video) {
      CheckAfterCut(kVideoSide, videoEffect, *item, playlistNumber);
    }
    if (audio) {
      CheckAfterCut(kAudioSide, audioEffect, *item, playlistNumber);
    }

    if (video) {
      result.items.push_back(std::move(video));
    }
    if (audio) {
      result.items.push_back(std::move(audio));
    }
    previous = item.get();
    result.items.push_back(std::shared_ptr<MediaSummaryItem>(std::move(item)));
  }
  return result;
}

// A track handed over on its own: its clips' assets come from the context's map.
template <typename Elements>
TimelineEngineModel::Track ToTrackOnItsOwn(
    const Data::Sequences::Track<typename Elements::ElementT>& track, unsigned index,
    const ExternalSequenceInfo& info) {
  if (track.elements.empty()) {
    return EmptyTrack(info.timelineId, index);
  }
  const detail::FieldCounter counter(info.rate);
  detail::ClipAssets assets(info.mediaAssets.get(), track.elements.size(),
                            detail::ClipAssets::FirstLookup::ByMap, counter);
  return ConvertTrack<Elements>(track, index, info.timelineId, assets);
}

// A transition item of the given class, or empty when its effect is of kind 0.
template <typename ItemT>
std::unique_ptr<FxTransitionItem> ToTransitionItem(
    Identifier id, const TimelineEngineModel::TransitionEffect& effect) {
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
  MediaBounds bounds = TimeConverter::ToMediaBounds(element, info);
  item->mediaId = std::move(bounds.mediaId);
  PlaceOnTimeline(element, bounds, status, *item);
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
  return ToTrackOnItsOwn<VideoElements>(track, index, info);
}

TimelineEngineModel::Track TrackConverter::ToTrack(const Data::Sequences::AudioTrack& track,
                                                   unsigned index,
                                                   const ExternalSequenceInfo& info) {
  return ToTrackOnItsOwn<AudioElements>(track, index, info);
}

TimelineEngineModel::Track TrackConverter::ToTrack(
    const Data::Sequences::Track<AudioVideoElement>& track, unsigned index,
    const ExternalSequenceInfo& info) {
  return ToTrackOnItsOwn<AudioVideoElements>(track, index, info);
}

TimelineEngineModel::Track detail::AudioVideoTrackOf(
    const Data::Sequences::Track<AudioVideoElement>& track, unsigned index,
    const Identifier& timelineId, ClipAssets& assets) {
  return ConvertTrack<AudioVideoElements>(track, index, timelineId, assets);
}

TimelineEngineModel::Track TrackConverter::PlaylistAuxTrackToTrack(
    const Data::Sequences::Playlist& playlist, const ExternalSequenceInfo& info) {
  return detail::AuxTrackOf(playlist, info.timelineId, info.mediaAssets.get());
}

TimelineEngineModel::Track detail::AuxTrackOf(const Data::Sequences::Playlist& playlist,
                                              const Identifier& timelineId,
                                              const DataModel::MediaAssets::MediaAssetMap* assets) {
  TimelineEngineModel::Track track;
  track.id = TrackConverter::TimelineIdToTrackId(timelineId, kAuxTrackIndex);
  track.type = kTrackType;

  std::unique_ptr<MediaSummaryItem> item(
      new MediaSummaryItem(GuidToIdentifier(Data::Sequences::Elements::Guid(
          playlist.number, playlist.serverId, Data::Sequences::Elements::Guid::AuxTrack))));
  item->mediaId = ClipAssetIdentifier(playlist.auxTrackUmId);
  const auto* entry = FindAssetEntry(assets, item->mediaId);
  if (entry == nullptr) {
    RefuseMissingAuxAsset();
  }
  const LimitInAndDuration shortRange =
      TimeConverter::GetShortInAndDurationFromMediaAsset(entry->second, playlist.rate);

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
