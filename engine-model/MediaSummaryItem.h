// SPDX-License-Identifier: Apache-2.0
// MediaSummaryItem: one piece of media placed on the timeline, with the part of
// its asset that it plays (media in-point and length) and where and how long it
// plays on the timeline, separately for picture and sound. All times are frames.
#pragma once

#include <cstdint>

#include "TrackItem.h"

namespace Kov {
namespace TimelineEngineModel {

class TIMELINE_ENGINE_CONVERSION_API MediaSummaryItem : public TrackItem {
 public:
  MediaSummaryItem() : TrackItem(BusinessEntityModel::BaseTypes::Identifier(), MediaSummary) {}
  explicit MediaSummaryItem(BusinessEntityModel::BaseTypes::Identifier id)
      : TrackItem(std::move(id), MediaSummary) {}
  MediaSummaryItem(const MediaSummaryItem&) = default;
  MediaSummaryItem& operator=(const MediaSummaryItem&) = default;
  ~MediaSummaryItem() override = default;

  /// Identifier and type first, then every field in declaration order. The
  /// identifier is tested again through the other item's Id(), which keeps the
  /// result right should a subclass override it. An item whose type says media
  /// summary but which is not one (a bare TrackItem) compares unequal.
  bool operator==(const TrackItem& other) const override {
    if (!TrackItem::operator==(other) || !(Id() == other.Id())) {
      return false;
    }
    const auto* item = dynamic_cast<const MediaSummaryItem*>(&other);
    return item != nullptr && timelineVideoIn == item->timelineVideoIn &&
           timelineVideoDuration == item->timelineVideoDuration &&
           timelineAudioIn == item->timelineAudioIn &&
           timelineAudioDuration == item->timelineAudioDuration && mediaId == item->mediaId &&
           mediaVideoIn == item->mediaVideoIn && mediaVideoDuration == item->mediaVideoDuration &&
           mediaAudioIn == item->mediaAudioIn && mediaAudioDuration == item->mediaAudioDuration &&
           reservedA == item->reservedA && reservedB == item->reservedB;
  }

  /// Timeline frame where the picture starts.
  std::int64_t timelineVideoIn = 0;
  /// Frames the picture lasts on the timeline (media length scaled by the speed).
  std::int64_t timelineVideoDuration = 0;
  /// Timeline frame where the sound starts.
  std::int64_t timelineAudioIn = 0;
  /// Frames the sound lasts on the timeline (media length scaled by the speed).
  std::int64_t timelineAudioDuration = 0;
  /// The key of the asset played.
  BusinessEntityModel::BaseTypes::Identifier mediaId;
  /// First picture frame played, counted from the start of the recorded material.
  std::int64_t mediaVideoIn = 0;
  /// Picture frames played; 0 when the element has no picture part; -1 for
  /// open-ended material.
  std::int64_t mediaVideoDuration = 0;
  /// First sound frame played, counted from the start of the recorded material.
  std::int64_t mediaAudioIn = 0;
  /// Sound frames played; 0 when the element has no sound part; -1 for
  /// open-ended material.
  std::int64_t mediaAudioDuration = 0;
  /// Reserved for the engine; the conversion leaves it 0.
  std::int64_t reservedA = 0;
  /// Reserved for the engine; the conversion leaves it 0.
  std::int64_t reservedB = 0;
};

}  // namespace TimelineEngineModel
}  // namespace Kov
