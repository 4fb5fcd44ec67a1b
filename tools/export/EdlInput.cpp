// Element numbers, item numbers and inherited speeds come from the labels the
// picture uses, so that every output names an item the same way.
#include "export/EdlInput.h"

#include "document/PlaylistDocument.h"
#include "picture/TimelineView.h"

namespace TimelineConvert {

EdlExportInput EdlInputFromDocument(const PlaylistDocument& document) {
  EdlExportInput input;
  input.rate = document.playlist.rate;
  input.title = document.playlist.umId.GetUmId();
  for (const auto& asset : document.assetOrder) {
    if (!asset.umId.empty()) {
      input.clipNames[asset.key.Text()] = asset.umId;
    }
  }
  const PictureLabels labels = LabelsFromDocument(document);
  for (const auto& [itemId, index] : labels.itemElements) {
    const SourceElement& source = labels.elements[index];
    input.elements[itemId] = EdlElement{source.number, source.itemNumber, source.speedNumerator,
                                        source.speedDenominator, source.index};
  }
  for (const auto& [itemId, number] : labels.itemNumbers) {
    if (number == "aux") {
      input.auxItemId = itemId;
    }
  }
  return input;
}

}  // namespace TimelineConvert
