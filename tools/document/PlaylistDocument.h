// PlaylistDocument: reads the JSON document that timeline-convert takes (one
// playlist and the media assets it plays) into the library's input records.
// Every fault in the document is reported with its place: line and column for
// broken JSON, the JSON pointer of the offending value for everything else.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace TimelineConvert {

// A document that cannot be used. Where() is "line 3, column 14" or a JSON
// pointer such as "/playlist/rate/numerator"; what() is "<where>: <problem>",
// both with control characters and invalid UTF-8 escaped.
class DocumentError : public std::runtime_error {
 public:
  DocumentError(const std::string& where, const std::string& problem);
  const std::string& Where() const { return where_; }

 private:
  std::string where_;
};

// One asset of the document, in document order: the key it is stored under
// and the clip id it was given by (empty when it was given by identifier).
struct DocumentAsset {
  Kov::BusinessEntityModel::BaseTypes::Identifier key;
  std::string umId;
};

struct PlaylistDocument {
  Kov::Replivo::Data::Sequences::Playlist playlist;
  std::shared_ptr<Kov::DataModel::MediaAssets::MediaAssetMap> assets;
  std::vector<DocumentAsset> assetOrder;
};

// Parses and checks the whole document; throws DocumentError.
PlaylistDocument ReadPlaylistDocument(std::string_view jsonText);

}  // namespace TimelineConvert
