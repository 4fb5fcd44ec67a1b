// TimelineSvg: draws a converted timeline as an SVG picture: one lane per
// track with picture and sound rows, transitions over the overlap they
// create, a ruler in timecode, and flags for whatever needs a second look
// (speeds, lengths of zero or less, unexplained overlaps, the aux item that
// plays nothing, the element the library refused). What is narrower than the
// picture can show merges into density bands, so the file stays bounded.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <string>

#include "picture/TimelineView.h"

namespace TimelineConvert {

// A self-contained SVG document (no XML declaration, so it can also be
// embedded in HTML). The ruler counts frames at the sequence rate.
std::string TimelineToSvg(const Kov::TimelineEngineModel::Timeline& timeline,
                          const Kov::TimePoints::Rate& sequenceRate, const PictureLabels& labels);

// The same, from a picture whose marks are already worked out.
std::string PictureToSvg(const Picture& picture);

}  // namespace TimelineConvert
