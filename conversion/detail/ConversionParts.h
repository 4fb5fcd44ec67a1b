// The parts of a timeline conversion as the entry point calls them: with the
// sequence's rate checked once for the whole call and the assets of the map
// at hand, they make what the public operations of the same names make.
// Internal to the library.
#pragma once

#include "../../engine-model/MediaInfo.h"
#include "../../engine-model/Track.h"
#include "../../input-models/Identifier.h"
#include "../../input-models/MediaAsset.h"
#include "../../input-models/Sequence.h"
#include "ClipAssets.h"
#include "TimeUnits.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// MediaInfoConverter::ToMediaInfo at the counter's rate.
TimelineEngineModel::MediaInfo MediaInfoOf(const DataModel::MediaAssets::MediaAsset& asset,
                                           const FieldCounter& counter);

// TrackConverter::ToTrack of the audio-video track, its clips' assets found
// through the given table (whose counter has the sequence's rate).
TimelineEngineModel::Track AudioVideoTrackOf(
    const Data::Sequences::Track<Data::Sequences::AudioVideoElement>& track, unsigned index,
    const BusinessEntityModel::BaseTypes::Identifier& timelineId, ClipAssets& assets);

// TrackConverter::PlaylistAuxTrackToTrack; the map may be null (no asset).
TimelineEngineModel::Track AuxTrackOf(const Data::Sequences::Playlist& playlist,
                                      const BusinessEntityModel::BaseTypes::Identifier& timelineId,
                                      const DataModel::MediaAssets::MediaAssetMap* assets);

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
