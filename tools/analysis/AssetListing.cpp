// The assets listing: the library's own list of keys, with the clip each
// comes from and whether the document gives it.
#include "analysis/AssetListing.h"

#include <map>

#include "document/AssetKeys.h"

namespace TimelineConvert {

std::string ListUsedAssets(const PlaylistDocument& document) {
  const auto& playlist = document.playlist;
  std::map<std::string, std::string> clipOfKey;
  clipOfKey[AssetKeyOfClip(playlist.auxTrackUmId.GetUmId()).Text()] =
      playlist.auxTrackUmId.GetUmId();
  for (const auto& element : playlist.audioVideoTrack.elements) {
    clipOfKey[AssetKeyOfClip(element.umId.GetUmId()).Text()] = element.umId.GetUmId();
  }
  std::string listing;
  for (const auto& key :
       Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::ListAssetsFromPlaylist(
           playlist)) {
    listing += key.Text() + "\t" + clipOfKey[key.Text()] + "\t" +
               (document.assets->count(key) != 0 ? "present" : "missing") + "\n";
  }
  return listing;
}

}  // namespace TimelineConvert
