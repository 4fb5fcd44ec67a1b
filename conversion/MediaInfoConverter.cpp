// MediaInfoConverter: asset timing and the track description text.
#include "MediaInfoConverter.h"

#include <stdexcept>
#include <string>

#include "TimeConverter.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

namespace {

constexpr std::int32_t kPictureTrackKind = 2;
constexpr std::int32_t kSoundTrackKind = 0;
constexpr std::size_t kPictureTextCapacity = 66;
constexpr std::size_t kSoundTextCapacity = 64;

// "V" for every picture track, then "M" for every sound track, joined by "+".
std::string DescribeTracks(const DataModel::MediaAssets::TrackLayout& layout) {
  std::string picture;
  std::string sound;
  picture.reserve(kPictureTextCapacity);
  sound.reserve(kSoundTextCapacity);
  for (const DataModel::MediaAssets::Track* track : layout.tracks) {
    if (track == nullptr) {
      throw std::runtime_error("null pointer");
    }
    if (track->kind == kPictureTrackKind) {
      picture += "+V";
    } else if (track->kind == kSoundTrackKind) {
      sound += "+M";
    }
  }
  picture += sound;
  return picture.empty() ? std::string() : picture.substr(1);
}

}  // namespace

TimelineEngineModel::MediaInfo MediaInfoConverter::ToMediaInfo(
    const DataModel::MediaAssets::MediaAsset& asset, const TimePoints::Rate& rate) {
  TimelineEngineModel::MediaInfo info;
  info.id = asset.id;
  if (!asset.timeBounds.empty()) {
    const LimitInAndDuration timing = TimeConverter::GetMediaAssetLimitInAndDuration(asset, rate);
    info.limitIn = timing.limitIn;
    info.duration = timing.duration;
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
