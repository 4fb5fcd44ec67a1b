// MediaInfoConverter: asset timing and the track description text.
#include "MediaInfoConverter.h"

#include <string>

#include "Refusals.hpp"
#include "detail/ConversionParts.h"
#include "detail/PlayedParts.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

namespace {

constexpr std::int32_t kPictureTrackKind = 2;
constexpr std::int32_t kSoundTrackKind = 0;

// "V" for every picture track, then "M" for every sound track, joined by "+".
// The tracks are counted first so the text is built once at its final size;
// a short description then needs no allocation at all.
std::string DescribeTracks(const DataModel::MediaAssets::TrackLayout& layout) {
  std::size_t pictureTracks = 0;
  std::size_t soundTracks = 0;
  for (const DataModel::MediaAssets::Track* track : layout.tracks) {
    if (track == nullptr) {
      detail::RefuseMissingLayoutTrack();
    }
    pictureTracks += track->kind == kPictureTrackKind ? 1 : 0;
    soundTracks += track->kind == kSoundTrackKind ? 1 : 0;
  }
  const std::size_t listed = pictureTracks + soundTracks;
  if (listed == 0) {
    return std::string();
  }
  std::string text(2 * listed - 1, '+');
  for (std::size_t i = 0; i < listed; ++i) {
    text[2 * i] = i < pictureTracks ? 'V' : 'M';
  }
  return text;
}

}  // namespace

TimelineEngineModel::MediaInfo MediaInfoConverter::ToMediaInfo(
    const DataModel::MediaAssets::MediaAsset& asset, const TimePoints::Rate& rate) {
  return detail::MediaInfoOf(asset, detail::FieldCounter(rate));
}

TimelineEngineModel::MediaInfo detail::MediaInfoOf(const DataModel::MediaAssets::MediaAsset& asset,
                                                   const FieldCounter& counter) {
  TimelineEngineModel::MediaInfo info;
  info.id = asset.id;
  // Limit-in 0 and the material's length, as GetMediaAssetLimitInAndDuration gives them.
  if (!asset.timeBounds.empty()) {
    info.limitIn = 0;
    info.duration = MaterialFrames(asset, counter).count;
  }

  if (asset.resources.empty() || asset.resources.front().Key().Text().empty()) {
    return info;
  }
  const DataModel::MediaAssets::MediaResource& resource = *asset.resources.front();
  if (resource.trackLayouts.empty() || resource.trackLayouts.front().Key().Text().empty()) {
    return info;
  }
  info.tracksDescription = DescribeTracks(*resource.trackLayouts.front());
  return info;
}

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
