// SPDX-License-Identifier: Apache-2.0
// TimelineConverter: the library's entry point. ListAssetsFromPlaylist tells a
// caller which assets a playlist uses; ToTimeline turns the playlist and the
// map of those assets into the editing engine's timeline, or refuses it with
// one of the library's fixed messages.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "../engine-model/Timeline.h"
#include "../input-models/Export.h"
#include "../input-models/Identifier.h"
#include "../input-models/MediaAsset.h"
#include "../input-models/Sequence.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

class TIMELINE_ENGINE_CONVERSION_API TimelineConverter {
 public:
  /// How the timeline's duration is found. Only 0 is tested for: any other
  /// value behaves as FromPlaylist.
  enum DurationMode : std::int32_t {
    /// The end of the last media item of the audio-video track.
    FromTrackItems = 0,
    /// The playlist's own duration (durationInFields), in frames.
    FromPlaylist = 1,
  };

  /// The whole timeline: media infos for every asset of the map (in the map's
  /// order, used or not), the audio-video track, the duration, then the aux
  /// track. A null map reads as an empty one. Throws, and returns nothing, when
  /// any part is refused.
  static TimelineEngineModel::Timeline ToTimeline(
      const Data::Sequences::Playlist& playlist, DurationMode mode,
      std::shared_ptr<DataModel::MediaAssets::MediaAssetMap> mediaAssets);

  /// The asset keys the playlist uses: the aux clip's first, then one per
  /// element of the audio-video track in order, repeats kept.
  static std::vector<BusinessEntityModel::BaseTypes::Identifier> ListAssetsFromPlaylist(
      const Data::Sequences::Playlist& playlist);
};

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
