// ExportFindings: what the interchange exports cannot hold, found before any
// of them writes. An OpenTimelineIO document cannot hold a negative length; an
// edit decision list cannot hold that either, nor more than one item at a
// time, a reverse speed or a frame beyond its timecode labels. Each becomes a
// finding of severity blocks-otio or blocks-edl at its element, so that check
// names it and the export refuses with it, at the same place.
#pragma once

#include <string>
#include <vector>

#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

enum class EdlSide;

class FindingList;

// The kind of finding that blocks the list of one side: not-in-picture-edl,
// not-in-sound-edl or not-in-aux-edl.
FindingKind EdlBlockingKind(EdlSide side);

// Adds the export findings of a converted timeline (none when refused), in
// engine track order.
void AddExportFindings(const PlaylistDocument& document, const Outcome& outcome,
                       FindingList& findings);

// The findings that block one export alone, in the order FindFindings holds
// them: what an export needs to refuse, without judging anything else. The
// lists' are those of `sides` only.
Findings OtioBlockingFindings(const PlaylistDocument& document, const Outcome& outcome);
Findings EdlBlockingFindings(const PlaylistDocument& document, const Outcome& outcome,
                             const std::vector<EdlSide>& sides);

}  // namespace TimelineConvert
