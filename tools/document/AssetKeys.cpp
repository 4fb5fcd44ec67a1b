// The asset key of a clip, from the library's own listing of a playlist that
// holds only that clip, and the listing of the keys a whole playlist uses.
#include "document/AssetKeys.h"

#include <map>

namespace TimelineConvert {

Kov::BusinessEntityModel::BaseTypes::Identifier AssetKeyOfClip(const std::string& umIdText) {
  namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
  Kov::Replivo::Data::Sequences::Playlist playlist;
  playlist.audioVideoTrack.elements.resize(1);
  playlist.audioVideoTrack.elements[0].umId = Kov::Replivo::Data::Clips::UmId(umIdText.c_str());
  return Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist).at(0);
}

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
