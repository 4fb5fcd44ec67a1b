// The places of the document and their text.
#include "document/DocumentPlace.h"

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

DocumentPlace DocumentPlace::Element(const PlaylistDocument& document, std::size_t index,
                                     const std::string& field) {
  const auto& element = document.playlist.audioVideoTrack.elements.at(index);
  DocumentPlace place;
  place.source = Source::Element;
  place.element = index;
  place.itemNumber = element.itemNumber;
  place.clip = element.umId.GetUmId();
  place.pointer = "/playlist/audioVideoTrack/elements/" + std::to_string(index) + field;
  return place;
}

DocumentPlace DocumentPlace::Asset(const DocumentAsset& asset, std::size_t position) {
  DocumentPlace place;
  place.source = Source::Asset;
  place.asset = asset.key.Text();
  place.clip = asset.umId;
  place.pointer = "/assets/" + std::to_string(position);
  return place;
}

DocumentPlace DocumentPlace::AuxTrack(const PlaylistDocument& document) {
  DocumentPlace place;
  place.auxTrack = true;
  place.clip = document.playlist.auxTrackUmId.GetUmId();
  place.pointer = "/playlist/auxTrackUmId";
  return place;
}

std::string DescribePlace(const DocumentPlace& place) {
  switch (place.source) {
    case DocumentPlace::Source::Element:
      return "at element " + std::to_string(place.element) + " (item " +
             std::to_string(place.itemNumber) + ", clip " + place.clip + ")";
    case DocumentPlace::Source::Asset:
      return "in asset " + place.asset +
             (place.clip.empty() ? std::string() : " (clip " + place.clip + ")");
    case DocumentPlace::Source::Playlist:
      break;
  }
  return place.auxTrack ? "in the aux track (clip " + place.clip + ")" : std::string();
}

}  // namespace TimelineConvert
