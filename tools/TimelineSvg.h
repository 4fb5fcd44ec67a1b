// TimelineSvg: draws a converted timeline as an SVG picture (one lane per
// track, picture and sound parts of every media item, transitions over the
// overlap they create, a ruler in timecode) and wraps it in an HTML page.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <map>
#include <string>
#include <vector>

#include "PlaylistDocument.h"

namespace TimelineConvert {

// How the picture names things the timeline only knows by identifier.
struct PictureLabels {
  std::string title;
  // Asset identifier and a readable name (its clip id); numbered A1, A2, ...
  // in this order.
  std::vector<std::pair<std::string, std::string>> assets;
  // Media item identifier to the number the operator knows it by.
  std::map<std::string, std::string> itemNumbers;
};

// Assets in document order, items by their element's item number, the aux
// clip's item as "aux".
PictureLabels LabelsFromDocument(const PlaylistDocument& document);

// A self-contained SVG document (no XML declaration, so it can also be
// embedded in HTML). The ruler counts frames at the sequence rate.
std::string TimelineToSvg(const Kov::TimelineEngineModel::Timeline& timeline,
                          const Kov::TimePoints::Rate& sequenceRate, const PictureLabels& labels);

// A self-contained HTML page showing the SVG, scrollable when it is wide.
std::string SvgToHtmlPage(const std::string& svg, const std::string& title);

// Text made safe for XML character data and attribute values.
std::string EscapeXml(const std::string& text);

}  // namespace TimelineConvert
