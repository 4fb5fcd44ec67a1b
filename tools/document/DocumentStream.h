// DocumentStream: parses the document and reads the elements of the track and
// the assets into records while the parser runs, so that memory grows with the
// records and never with a tree of the whole document.
#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "document/JsonNode.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// What the stream reads as the parser goes: the track's elements and the
// assets, each list with its first fault.
struct StreamedRecords {
  std::vector<Kov::Replivo::Data::Sequences::AudioVideoElement> elements;
  std::optional<DocumentError> elementFault;
  std::shared_ptr<Kov::DataModel::MediaAssets::MediaAssetMap> assets =
      std::make_shared<Kov::DataModel::MediaAssets::MediaAssetMap>();
  std::vector<DocumentAsset> assetOrder;
  std::optional<DocumentError> assetFault;
  std::map<std::string, std::string> assetPathOfKey;  // where each asset key was given
};

// The document without the streamed lists' contents; faults as DocumentError.
// The careful reader: slower, but it words every fault of the JSON text.
Json ParseStreaming(std::string_view jsonText, StreamedRecords& records);

// The same reading, faster (no callback object per event): false, with
// records and `document` holding nothing of use, when the JSON text is not
// well-formed, and ParseStreaming then words that fault. The faults it raises
// itself (a key given twice, a field's fault) are those ParseStreaming raises.
bool ParseQuickly(std::string_view jsonText, StreamedRecords& records, Json& document);

// The fastest reading, straight from the text into the records: true only
// when the document is well-formed and every element and asset is read
// without a fault, with the same records and `document` as ParseQuickly. On
// anything else it gives up (false, records and `document` holding nothing of
// use) and the readers above read the text again, to word the fault.
bool ReadDirectly(std::string_view jsonText, StreamedRecords& records, Json& document);

}  // namespace TimelineConvert
