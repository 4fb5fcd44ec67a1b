// TimelineHtml: the render command's outputs. The HTML form is an offline
// viewer in one file: the timeline's marks and every item's fields as JSON,
// and the viewer's own script and style, built into the tool.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <optional>
#include <string>

#include "PlaylistDocument.h"
#include "RefusalLocation.h"
#include "TimelineView.h"

namespace TimelineConvert {

// The viewer page for a converted (or partly converted) timeline.
std::string TimelineToHtml(const Kov::TimelineEngineModel::Timeline& timeline,
                           const Kov::TimePoints::Rate& sequenceRate, const PictureLabels& labels);

// Converts the document and draws it as SVG or as the viewer page. When the
// library refuses the playlist, the picture shows the elements up to the
// refused one, marks it and carries the refusal; `refusal` then holds its
// place and the library's message, unchanged.
std::string RenderDocument(
    const PlaylistDocument& document,
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode mode, bool html,
    std::optional<RefusalPlace>& refusal);

// The viewer's script and style sheet, as kept in tools/viewer.
const char* ViewerScript();
const char* ViewerStyle();

}  // namespace TimelineConvert
