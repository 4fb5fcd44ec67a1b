// Element numbers, item numbers and inherited speeds straight from the
// document, one entry per element in document order: the list writer finds
// an item's element by its place in the track (analysis/ItemElements.h), and
// the speed runs on from element to element as the conversion carries it.
// Built without the picture's labels, so that a long playlist costs one small
// entry per element.
#include "export/EdlInput.h"

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

EdlExportInput EdlInputFromDocument(const PlaylistDocument& document) {
  namespace Data = Kov::Replivo::Data;
  EdlExportInput input;
  const auto& playlist = document.playlist;
  input.rate = playlist.rate;
  input.title = playlist.umId.GetUmId();
  for (const auto& asset : document.assetOrder) {
    if (!asset.umId.empty()) {
      input.clipNames[asset.key.Text()] = asset.umId;
    }
  }
  const auto& elements = playlist.audioVideoTrack.elements;
  input.elements.reserve(elements.size());
  Data::Channels::Speed speed{1, 1};
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& element = elements[index];
    if (element.speed != Data::Channels::Speed::Empty() && element.speed.numerator != 0) {
      speed = element.speed;
    }
    input.elements.push_back(
        {element.number, element.itemNumber, speed.numerator, speed.denominator, index});
  }
  input.auxTrack = playlist.auxTrackUmId != Data::Clips::UmId::Empty();
  return input;
}

}  // namespace TimelineConvert
