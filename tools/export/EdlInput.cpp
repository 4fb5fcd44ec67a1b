// Element numbers, item numbers and inherited speeds straight from the
// document: the engine item identifiers are those the conversion gives each
// element (its media item and its two transitions), and the speed runs on
// from element to element as the conversion carries it. Built without the
// picture's labels, so that a long playlist costs one entry per item.
#include "export/EdlInput.h"

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

namespace {

namespace Data = Kov::Replivo::Data;

std::string GuidText(const Data::Guid& guid) {
  char buffer[Data::Guid::kTextLength + 1];
  return guid.ToString(buffer, sizeof buffer);
}

}  // namespace

EdlExportInput EdlInputFromDocument(const PlaylistDocument& document) {
  namespace Elements = Data::Sequences::Elements;
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
  input.elements.reserve(3 * elements.size());
  Data::Channels::Speed speed{1, 1};
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& element = elements[index];
    if (element.speed != Data::Channels::Speed::Empty() && element.speed.numerator != 0) {
      speed = element.speed;
    }
    const EdlElement known{element.number, element.itemNumber, speed.numerator, speed.denominator,
                           index};
    input.elements.emplace(GuidText(Elements::Guid(element.number, element.serverId)), known);
    for (const auto kind : {Elements::Guid::VideoTransition, Elements::Guid::AudioTransition}) {
      input.elements.emplace(GuidText(Elements::Guid(element.number, element.serverId, kind)),
                             known);
    }
  }
  input.auxItemId =
      GuidText(Elements::Guid(playlist.number, playlist.serverId, Elements::Guid::AuxTrack));
  return input;
}

}  // namespace TimelineConvert
