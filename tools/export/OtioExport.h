// OtioExport: the converted timeline as an OpenTimelineIO document (.otio), so
// that a sequence can be opened in editing applications and the tools around
// that interchange format. docs/otio.md states the mapping; this is its only
// implementation. Media items become clips placed where the engine plays them,
// transition items become transitions at the cuts, and every object keeps its
// engine fields under metadata["timeline_engine"].
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <map>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "analysis/Findings.h"
#include "analysis/Outcome.h"

namespace TimelineConvert {

// A timeline that the interchange format cannot hold as the engine plays it
// (a negative length, two items of one side on the same frames without an
// overlapping transition, ...). The text names the item.
class OtioExportRefusal : public std::runtime_error {
 public:
  explicit OtioExportRefusal(const std::string& message, DocumentPlace place = {})
      : std::runtime_error(message), place_(std::move(place)) {}
  // The place in the document, when a finding names it.
  const DocumentPlace& Place() const { return place_; }

 private:
  DocumentPlace place_;
};

struct OtioExportOptions {
  // The playlist's rate: every time of the document is in frames at it.
  Kov::TimePoints::Rate rate{50, 1};
  Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode durationMode =
      Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::FromTrackItems;
  // The timeline's name; the timeline identifier when empty.
  std::string timelineName;
  // Clip names by asset identifier; a clip whose asset has none is named by
  // the identifier itself.
  std::map<std::string, std::string> assetNames;
};

// The rate of the document's playlist, its clip id as the timeline's name and
// the clip ids of its assets as clip names.
OtioExportOptions OtioOptionsFromDocument(
    const PlaylistDocument& document,
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode mode);

// The document as a JSON value, keys in the order the format's own writer
// uses. Throws OtioExportRefusal.
nlohmann::ordered_json TimelineToOtio(const Kov::TimelineEngineModel::Timeline& timeline,
                                      const OtioExportOptions& options);

// The same, indented by four, ending in a newline.
std::string TimelineToOtioText(const Kov::TimelineEngineModel::Timeline& timeline,
                               const OtioExportOptions& options);

// The export of a converted outcome: refuses, with the first finding that
// blocks it, what the format cannot hold; otherwise the text above.
std::string ExportOtio(const Outcome& outcome, const std::vector<Finding>& findings,
                       const OtioExportOptions& options);

}  // namespace TimelineConvert
