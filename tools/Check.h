// Check: what `timeline-convert check` reports. The library accepts some
// playlists whose timeline is plainly not what anyone meant (a negative speed,
// a transition kind that gives nothing, a 0-frame aux item, assets nobody
// uses...). The check converts the playlist once and reads the result and the
// document side by side, in one pass over the elements and one over the items,
// so that it stays linear in the size of the playlist.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "PlaylistDocument.h"
#include "RefusalLocation.h"

namespace TimelineConvert {

struct Finding {
  std::string kind;    // a stable short name, such as "negative-speed"
  RefusalPlace place;  // where; place.message says what is wrong
};

struct CheckResult {
  std::vector<Finding> findings;
  std::optional<RefusalPlace> refusal;  // set when the library refuses the playlist
};

// Findings of the document alone are reported even when the conversion is
// refused; those that read the converted timeline need a timeline.
CheckResult CheckDocument(
    const PlaylistDocument& document,
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode mode);

// "FILE: at element 2 (item 3, clip CAM-1): message" and its JSON object form.
std::string FindingLine(const std::string& file, const Finding& finding);
std::string FindingJson(const std::string& file, const Finding& finding);

// What `check` writes: one line per finding, then "FILE: N findings" (or
// "FILE: no findings", "FILE: refused, N findings"); as JSON, one object per
// finding and no summary.
std::string CheckListing(const std::string& file, const CheckResult& result, bool json);

// 2 refused, 3 findings only, 0 nothing to report.
int CheckExitStatus(const CheckResult& result);

}  // namespace TimelineConvert
