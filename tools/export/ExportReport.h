// ExportReport: what an export carried exactly, what it approximated and what
// it refused, element by element, for a person to read before importing the
// result (text) or for a script (JSON). Editing applications show such a table
// after an import; here it is known before.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

struct ExportReportLine {
  enum class Kind { Approximated, Refused };
  Kind kind = Kind::Approximated;
  // The element's index in the audio-video track; none for the aux clip or
  // the timeline as a whole.
  std::optional<std::size_t> element;
  bool aux = false;
  std::string text;
};

struct ExportReport {
  std::string format;  // "otio", "edl"
  std::string file;    // the input as messages name it
  std::vector<ExportReportLine> lines;

  std::size_t Approximations() const;
  // One line for standard error, empty when nothing was approximated.
  std::string Summary() const;
};

// Every element in document order (then the aux clip and the timeline),
// each "carried exactly" or with its lines.
std::string ExportReportText(const ExportReport& report, const PlaylistDocument& document);
std::string ExportReportJson(const ExportReport& report, const PlaylistDocument& document);

}  // namespace TimelineConvert
