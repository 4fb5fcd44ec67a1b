// HtmlPage: the render command's HTML output, an offline
// viewer in one file: the timeline's marks and every item's fields as JSON,
// and the viewer's own script and style, built into the tool.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <optional>
#include <string>

#include "picture/TimelineView.h"

namespace TimelineConvert {

// The viewer page for a converted (or partly converted) timeline.
std::string TimelineToHtml(const Kov::TimelineEngineModel::Timeline& timeline,
                           const Kov::TimePoints::Rate& sequenceRate, const PictureLabels& labels);

// The same, from a picture whose marks are already worked out.
std::string PictureToHtml(const Picture& picture);

// The viewer's script and style sheet, as kept in tools/viewer.
const char* ViewerScript();
const char* ViewerStyle();

}  // namespace TimelineConvert
