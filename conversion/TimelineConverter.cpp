// TimelineConverter: the timeline entry point and the asset listing.
#include "TimelineConverter.h"

#include <cstring>

#include "MediaInfoConverter.h"
#include "TimeConverter.h"
#include "TrackConverter.h"
#include "detail/ClipAssets.h"
#include "detail/ConversionParts.h"
#include "detail/FrameArithmetic.h"
#include "detail/GuidText.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

using BusinessEntityModel::BaseTypes::Identifier;
using Data::Clips::UmId;

namespace {

// A playlist names a timeline when its id differs from the empty one within
// this many leading characters. The empty id's text is "", so every id with any
// text differs from it at its first character: only the empty id gives the
// empty timeline id, and the bound never decides. The comparison stays bounded
// all the same, as the rule has it.
constexpr std::size_t kTimelineIdPrefixLength = 8;

Identifier TimelineIdentifier(const UmId& umId) {
  if (std::strncmp(umId.GetUmId(), UmId::Empty().GetUmId(), kTimelineIdPrefixLength) == 0) {
    return Identifier();
  }
  return detail::SequenceIdentifier(umId);
}

// The end of the last media item that has a known end, walking back from the
// last item; transition items and ends of -1 do not count.
std::int64_t DurationFromTrackItems(const TimelineEngineModel::Track& track) {
  for (auto item = track.items.rbegin(); item != track.items.rend(); ++item) {
    if ((*item)->GetType() != TimelineEngineModel::MediaSummary) {
      continue;
    }
    // Every item of type MediaSummary on a track built here is a MediaSummaryItem.
    const auto& media = static_cast<const TimelineEngineModel::MediaSummaryItem&>(**item);
    const std::int64_t videoEnd =
        detail::WrappingAdd(media.timelineVideoIn, media.timelineVideoDuration);
    const std::int64_t audioEnd =
        detail::WrappingAdd(media.timelineAudioIn, media.timelineAudioDuration);
    const std::int64_t end = audioEnd > videoEnd ? audioEnd : videoEnd;
    if (end != -1) {
      return end;
    }
  }
  return 0;
}

}  // namespace

TimelineEngineModel::Timeline TimelineConverter::ToTimeline(
    const Data::Sequences::Playlist& playlist, DurationMode mode,
    std::shared_ptr<DataModel::MediaAssets::MediaAssetMap> mediaAssets) {
  if (!mediaAssets) {
    mediaAssets = std::make_shared<DataModel::MediaAssets::MediaAssetMap>();
  }
  const DataModel::MediaAssets::MediaAssetMap& assets = *mediaAssets;
  // The sequence's rate counts every asset's material; it is checked once here.
  const detail::FieldCounter counter(playlist.rate);
  // The table of the clips' assets before any block of the result (see ClipAssets).
  detail::ClipAssets clips(&assets, playlist.audioVideoTrack.elements.size(),
                           detail::ClipAssets::FirstLookup::ByText, counter);

  TimelineEngineModel::Timeline timeline;
  timeline.id = TimelineIdentifier(playlist.umId);
  timeline.secondaryId = Identifier::Empty();

  // Every asset first, so a bad asset fails the call even when no element uses it.
  // Each asset with recorded ranges is timed here at the sequence's rate; the
  // track takes those lengths instead of counting the ranges again, and finds
  // its clips' assets among the entries added here.
  timeline.mediaInfos.reserve(assets.size());
  for (const auto& entry : assets) {
    timeline.mediaInfos.push_back(detail::MediaInfoOf(entry.second, counter));
    const detail::Frames length{timeline.mediaInfos.back().duration};
    clips.Add(entry, entry.second.timeBounds.empty() ? nullptr : &length);
  }

  const bool hasAuxTrack = playlist.auxTrackUmId != UmId::Empty();
  timeline.tracks.reserve(hasAuxTrack ? 2 : 1);
  timeline.tracks.push_back(
      detail::AudioVideoTrackOf(playlist.audioVideoTrack, 0, timeline.id, clips));

  // Before the aux track is added: the aux track never sets the duration.
  timeline.duration = mode == FromTrackItems ? DurationFromTrackItems(timeline.tracks.back())
                                             : playlist.durationInFields / 2;

  if (hasAuxTrack) {
    timeline.tracks.push_back(detail::AuxTrackOf(playlist, timeline.id, &assets));
  }
  return timeline;
}

std::vector<Identifier> TimelineConverter::ListAssetsFromPlaylist(
    const Data::Sequences::Playlist& playlist) {
  const auto& elements = playlist.audioVideoTrack.elements;
  std::vector<Identifier> assets;
  assets.reserve(elements.size() + 1);
  if (playlist.auxTrackUmId != UmId::Empty()) {
    assets.push_back(detail::ClipAssetIdentifier(playlist.auxTrackUmId));
  }
  for (const auto& element : elements) {
    assets.push_back(detail::ClipAssetIdentifier(element.umId));
  }
  return assets;
}

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
