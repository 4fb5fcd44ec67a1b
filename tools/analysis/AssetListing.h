// AssetListing: what `assets` writes, the asset identifiers a playlist uses.
#pragma once

#include <string>

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// One line per asset identifier that the playlist uses, in the library's order
// (aux clip first, repeats kept): identifier, clip id, and "present" or
// "missing" in the document, separated by tabs.
std::string ListUsedAssets(const PlaylistDocument& document);

}  // namespace TimelineConvert
