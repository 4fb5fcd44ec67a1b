// EngineJson: the converted timeline as timeline-convert writes it. Every
// field of the engine model appears, in declaration order, so that two
// conversions can be compared with a plain line diff.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <ostream>
#include <string>

namespace TimelineConvert {

// The timeline as a JSON document, indented by two, ending in a newline.
std::string TimelineToJsonText(const Kov::TimelineEngineModel::Timeline& timeline);

// The same text, appended to `text`.
void AppendTimelineJson(std::string& text, const Kov::TimelineEngineModel::Timeline& timeline);

// The same text, handed to a stream a megabyte at a time: memory stays
// small whatever the size of the timeline.
void WriteTimelineJson(std::ostream& out, const Kov::TimelineEngineModel::Timeline& timeline);

}  // namespace TimelineConvert
