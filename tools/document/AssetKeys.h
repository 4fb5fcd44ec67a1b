// AssetKeys: the key under which the library looks up the asset of a clip,
// asked of the library's public API so that the tool always agrees with the
// look-ups of the conversion.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <string>

namespace TimelineConvert {

// The asset key of a clip id (at most 11 characters, as every clip id the
// reader accepts).
Kov::BusinessEntityModel::BaseTypes::Identifier AssetKeyOfClip(const std::string& umIdText);

}  // namespace TimelineConvert
