// The asset key of a clip, from the library's own listing of a playlist that
// holds only that clip.
#include "document/AssetKeys.h"

namespace TimelineConvert {

Kov::BusinessEntityModel::BaseTypes::Identifier AssetKeyOfClip(const std::string& umIdText) {
  namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
  Kov::Replivo::Data::Sequences::Playlist playlist;
  playlist.audioVideoTrack.elements.resize(1);
  playlist.audioVideoTrack.elements[0].umId = Kov::Replivo::Data::Clips::UmId(umIdText.c_str());
  return Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist).at(0);
}

}  // namespace TimelineConvert
