// EdlInput: what the list writer needs from a playlist document (its rate,
// title, clip names, and each engine item's element with the speed in force),
// gathered once so that the writer itself reads nothing but plain values.
#pragma once

#include "export/EdlExport.h"

namespace TimelineConvert {

struct PlaylistDocument;

EdlExportInput EdlInputFromDocument(const PlaylistDocument& document);

}  // namespace TimelineConvert
