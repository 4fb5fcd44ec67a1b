// SPDX-License-Identifier: Apache-2.0
// TrackConverter: elements to track items, sequence tracks to engine tracks.
// One element becomes one media item placed at the running play position of
// its track, scaled by the play speed, plus the transition items it opens with;
// a whole track lays its media items end to end, pulls the position back where
// an overlapping transition joins two items, and refuses a transition longer
// than the media around it. The aux clip becomes a track of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "../engine-model/FxTransitionItem.h"
#include "../engine-model/MediaSummaryItem.h"
#include "../engine-model/Track.h"
#include "../input-models/Export.h"
#include "../input-models/Identifier.h"
#include "../input-models/Sequence.h"
#include "../input-models/SequenceIdentifiers.h"
#include "TimeConverter.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

/// The running state of one track conversion, carried from element to element.
struct CurrentSequencePlayStatus {
  /// Timeline frame where the picture part of the next media item starts.
  std::int64_t position = 0;
  /// Timeline frame where the sound part of the next media item starts.
  std::int64_t secondPosition = 0;
  /// The play speed in force: a media length L lasts L * denominator / numerator frames.
  Data::Channels::Speed speed{1, 1};
};

/// Which side a transition item belongs to: 0 the picture, 1 the sound.
enum FxTransitionType : std::int32_t { Video = 0, Audio = 1 };

/// The identifier of an element's video or audio transition item: distinct from
/// the element's own media item and from its other transition.
template <FxTransitionType Kind>
BusinessEntityModel::BaseTypes::Identifier ElementIdToTransitionId(
    const Data::Sequences::Element& element) {
  const Data::Sequences::Elements::Guid guid(
      element.number, element.serverId,
      Kind == Video ? Data::Sequences::Elements::Guid::VideoTransition
                    : Data::Sequences::Elements::Guid::AudioTransition);
  // The text always fills the buffer, so its length needs no counting.
  char buffer[Data::Guid::kTextLength + 1];
  return BusinessEntityModel::BaseTypes::Identifier(
      std::string(guid.ToString(buffer, sizeof buffer), Data::Guid::kTextLength));
}

class TIMELINE_ENGINE_CONVERSION_API TrackConverter {
 public:
  /// The element's media item, starting at the status's positions (negative ones
  /// clamped to 0); advances the positions by the item's timeline lengths. An
  /// element speed other than {0, 1} with a non-zero numerator becomes the
  /// status's speed. The status is untouched when the media bounds throw.
  static std::unique_ptr<TimelineEngineModel::MediaSummaryItem> ToMediaSummaryItem(
      const Data::Sequences::Element& element, CurrentSequencePlayStatus& status,
      const ExternalSequenceInfo& info);

  /// The element's transition item, or empty when its effect is of kind 0.
  static std::unique_ptr<TimelineEngineModel::FxTransitionItem> ToFxVideoTransitionItem(
      const Data::Sequences::Element& element);
  static std::unique_ptr<TimelineEngineModel::FxTransitionItem> ToFxAudioTransitionItem(
      const Data::Sequences::Element& element);

  /// The timeline id with its end overwritten by the decimal index + 1 (unsigned,
  /// so index 4294967295 writes "0"); digits longer than the id are appended.
  static BusinessEntityModel::BaseTypes::Identifier TimelineIdToTrackId(
      const BusinessEntityModel::BaseTypes::Identifier& timelineId, unsigned index);

  static TimelineEngineModel::Track ToTrack(
      const Data::Sequences::Track<Data::Sequences::VideoElement>& track, unsigned index,
      const ExternalSequenceInfo& info);
  static TimelineEngineModel::Track ToTrack(const Data::Sequences::AudioTrack& track,
                                            unsigned index, const ExternalSequenceInfo& info);
  static TimelineEngineModel::Track ToTrack(
      const Data::Sequences::Track<Data::Sequences::AudioVideoElement>& track, unsigned index,
      const ExternalSequenceInfo& info);

  /// The aux clip as a track of one sound-only item under the whole timeline.
  static TimelineEngineModel::Track PlaylistAuxTrackToTrack(
      const Data::Sequences::Playlist& playlist, const ExternalSequenceInfo& info);
};

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
