// DocumentStream: parses the document and reads the elements of the track and
// the assets into records while the parser runs, so that memory grows with the
// records and never with a tree of the whole document.
#pragma once

#include <memory>
#include <optional>
#include <string>
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
};

// The document without the streamed lists' contents; faults as DocumentError.
Json ParseStreaming(const std::string& jsonText, StreamedRecords& records);

}  // namespace TimelineConvert
