// AssetKeys: the key under which the library looks up the asset of a clip,
// and the keys a playlist uses (what `assets` lists), both asked of the
// library's public API so that the tool always agrees with the look-ups of the
// conversion.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <string>

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// The asset key of a clip id (at most 11 characters, as every clip id the
// reader accepts).
Kov::BusinessEntityModel::BaseTypes::Identifier AssetKeyOfClip(const std::string& umIdText);

// One line per asset identifier that the playlist uses, in the library's order
// (aux clip first, repeats kept): identifier, clip id, and "present" or
// "missing" in the document, separated by tabs.
std::string ListUsedAssets(const PlaylistDocument& document);

}  // namespace TimelineConvert
