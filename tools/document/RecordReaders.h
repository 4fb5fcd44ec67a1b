// RecordReaders: the library's input records (an element of the track, an
// asset with its resources) read from their nodes of the document, every field
// checked for presence, type and range.
#pragma once

#include "document/JsonNode.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

Kov::Replivo::Data::Sequences::AudioVideoElement ReadElement(const Node& node);

// The asset, and in `name` the key it is stored under and the clip it names.
Kov::DataModel::MediaAssets::MediaAsset ReadAsset(const Node& node, DocumentAsset& name);

}  // namespace TimelineConvert
