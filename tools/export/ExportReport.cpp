// The report of an export. Lines are grouped by element in one pass, so the
// report stays linear in the size of the playlist.
#include "export/ExportReport.h"

#include "cli/ErrorReport.h"
#include "document/DocumentPlace.h"

namespace TimelineConvert {

namespace {

const char* KindWord(ExportReportLine::Kind kind) {
  return kind == ExportReportLine::Kind::Refused ? "refused" : "approximated";
}

// The lines of each element, then those of the aux clip, then the rest.
struct Grouped {
  std::vector<std::vector<const ExportReportLine*>> elements;
  std::vector<const ExportReportLine*> aux;
  std::vector<const ExportReportLine*> timeline;
};

Grouped Group(const ExportReport& report, std::size_t elementCount) {
  Grouped grouped;
  grouped.elements.resize(elementCount);
  for (const auto& line : report.lines) {
    if (line.element && *line.element < elementCount) {
      grouped.elements[*line.element].push_back(&line);
    } else if (line.aux) {
      grouped.aux.push_back(&line);
    } else {
      grouped.timeline.push_back(&line);
    }
  }
  return grouped;
}

std::string Carried(const std::vector<const ExportReportLine*>& lines) {
  for (const auto* line : lines) {
    if (line->kind == ExportReportLine::Kind::Refused) {
      return "refused";
    }
  }
  return lines.empty() ? "exact" : "approximated";
}

void TextOf(std::string& out, const std::string& where,
            const std::vector<const ExportReportLine*>& lines) {
  if (lines.empty()) {
    out += where + ": carried exactly\n";
  }
  for (const auto* line : lines) {
    out += where + ": " + KindWord(line->kind) + ": " + line->text + "\n";
  }
}

void JsonOf(std::string& out, const std::string& placeMembers,
            const std::vector<const ExportReportLine*>& lines) {
  out += out.back() == '[' ? "\n{" : ",\n{";
  out += placeMembers.empty() ? "" : placeMembers.substr(1) + ",";
  out += "\"carried\":" + JsonString(Carried(lines)) + ",\"notes\":[";
  for (std::size_t index = 0; index < lines.size(); ++index) {
    out += (index == 0 ? "{" : ",{") + std::string("\"kind\":") +
           JsonString(KindWord(lines[index]->kind)) +
           ",\"text\":" + JsonString(lines[index]->text) + "}";
  }
  out += "]}";
}

}  // namespace

std::size_t ExportReport::Approximations() const {
  std::size_t count = 0;
  for (const auto& line : lines) {
    count += line.kind == ExportReportLine::Kind::Approximated ? 1 : 0;
  }
  return count;
}

std::string ExportReport::Summary() const {
  const std::size_t count = Approximations();
  if (count == 0) {
    return "";
  }
  return "timeline-convert: " + file + ": the " + format + " export approximated " +
         std::to_string(count) + (count == 1 ? " thing" : " things") +
         " (--report FILE lists them by element)";
}

std::string ExportReportText(const ExportReport& report, const PlaylistDocument& document) {
  const auto& elements = document.playlist.audioVideoTrack.elements;
  const Grouped grouped = Group(report, elements.size());
  std::string out = "The " + report.format + " export of " + report.file + ", element by element\n";
  for (std::size_t index = 0; index < elements.size(); ++index) {
    TextOf(out, DescribePlace(DocumentPlace::Element(document, index)), grouped.elements[index]);
  }
  if (document.playlist.auxTrackUmId != Kov::Replivo::Data::Clips::UmId::Empty()) {
    TextOf(out, DescribePlace(DocumentPlace::AuxTrack(document)), grouped.aux);
  }
  for (const auto* line : grouped.timeline) {
    out += std::string("the timeline: ") + KindWord(line->kind) + ": " + line->text + "\n";
  }
  out += std::to_string(report.Approximations()) + " approximated\n";
  return out;
}

std::string ExportReportJson(const ExportReport& report, const PlaylistDocument& document) {
  const auto& elements = document.playlist.audioVideoTrack.elements;
  const Grouped grouped = Group(report, elements.size());
  std::string out = "{\"export\":" + JsonString(report.format) +
                    ",\"file\":" + JsonString(report.file) + ",\"elements\":[";
  for (std::size_t index = 0; index < elements.size(); ++index) {
    JsonOf(out, PlaceJsonMembers(DocumentPlace::Element(document, index)), grouped.elements[index]);
  }
  if (document.playlist.auxTrackUmId != Kov::Replivo::Data::Clips::UmId::Empty()) {
    JsonOf(out, PlaceJsonMembers(DocumentPlace::AuxTrack(document)), grouped.aux);
  }
  out += "],\"timeline\":[";
  for (std::size_t index = 0; index < grouped.timeline.size(); ++index) {
    out += (index == 0 ? "{" : ",{") + std::string("\"kind\":") +
           JsonString(KindWord(grouped.timeline[index]->kind)) +
           ",\"text\":" + JsonString(grouped.timeline[index]->text) + "}";
  }
  out += "],\"approximated\":" + std::to_string(report.Approximations()) + "}\n";
  return out;
}

}  // namespace TimelineConvert
