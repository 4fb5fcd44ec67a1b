// convert: the timeline as engine JSON, as an OpenTimelineIO document or as
// edit decision lists, the format given or taken from the output's name. A
// refusal of the library is reported with its place and writes nothing; an
// export that cannot hold the timeline is refused with the finding that
// blocks it, at its place, and writes nothing either.
#include <filesystem>
#include <iostream>

#include "analysis/ExportFindings.h"
#include "analysis/Findings.h"
#include "analysis/ItemElements.h"
#include "commands/Commands.h"
#include "export/EdlExport.h"
#include "export/EdlInput.h"
#include "export/EngineJson.h"
#include "export/ExportReport.h"
#include "export/OtioExport.h"

namespace TimelineConvert {

namespace {

// An export refused by a finding: its message after the export's words, the
// place on the line after it, as for the library's refusals.
ExitStatus RefuseExport(const CommandContext& context, const std::string& what,
                        const FindingWords& finding, ExportReport& report) {
  context.report.Refused(context.inputName, Refusal{what + finding.message, finding.place});
  ExportReportLine line{ExportReportLine::Kind::Refused, std::nullopt, finding.place.auxTrack,
                        finding.message};
  if (finding.place.source == DocumentPlace::Source::Element) {
    line.element = finding.place.element;
  }
  report.lines.push_back(std::move(line));
  return ExitStatus::Refused;
}

// The report file when asked for, and the summary line on standard error
// when anything was approximated; an export's own status stands unless the
// report cannot be written.
ExitStatus FinishReport(const CommandContext& context, const ExportReport& report,
                        ExitStatus status) {
  const std::string summary = report.Summary();
  if (!summary.empty() && status == ExitStatus::Done) {
    std::cerr << summary << '\n';
  }
  if (context.options.report.empty()) {
    return status;
  }
  const std::string text = context.options.errors == "json"
                               ? ExportReportJson(report, context.document)
                               : ExportReportText(report, context.document);
  const ExitStatus written = WriteResultTo(context, context.options.report, text);
  return written == ExitStatus::Done ? status : written;
}

// The element of the first item of the element track with identifier `id`.
std::optional<std::size_t> ElementOfItem(const Kov::TimelineEngineModel::Timeline& timeline,
                                         std::size_t elementCount, const std::string& id) {
  if (id.empty() || timeline.tracks.size() <= kElementTrack) {
    return std::nullopt;
  }
  ElementWalk walk(true, elementCount);
  for (const auto& item : timeline.tracks[kElementTrack].items) {
    const auto element = walk.Next(item.get());
    if (item && item->Id().Text() == id) {
      return element;
    }
  }
  return std::nullopt;
}

ExportReportLine ReportLine(const EdlNote& note) {
  ExportReportLine line{ExportReportLine::Kind::Approximated, std::nullopt, note.place.aux,
                        note.text};
  if (note.place.element && !note.place.aux) {
    line.element = note.place.element->index;
  }
  return line;
}

// Where each list goes: -o itself for one list, or files named after the
// input inside the folder -o names.
std::string ListPath(const CommandContext& context, EdlSide side, bool intoFolder) {
  if (!intoFolder) {
    return context.options.output;
  }
  const std::filesystem::path input(context.options.input);
  const std::string stem = context.options.input == "-" || input.stem().empty()
                               ? std::string("timeline")
                               : input.stem().string();
  return (std::filesystem::path(context.options.output) / (stem + "." + EdlSideName(side) + ".edl"))
      .string();
}

ExitStatus RunEdl(const CommandContext& context, const Outcome& outcome, ExportReport& report) {
  std::vector<EdlSide> sides;
  if (!context.options.side.empty()) {
    sides.push_back(*EdlSideFromName(context.options.side));
  } else {
    sides = EdlSidesOf(outcome.timeline);
  }
  const Findings blocks = EdlBlockingFindings(context.document, outcome, sides);
  if (!blocks.empty()) {
    return RefuseExport(context, "Cannot export to an EDL: ", blocks.Words(*blocks.begin()),
                        report);
  }
  std::error_code error;
  const bool intoFolder = std::filesystem::is_directory(context.options.output, error);
  if (sides.size() != 1 && !intoFolder) {
    std::string names;
    for (const EdlSide side : sides) {
      names += (names.empty() ? "" : ", ") + std::string(EdlSideName(side));
    }
    ReportUsage(context, sides.empty()
                             ? "the timeline plays nothing on any side: no list to write"
                             : "the timeline makes " + std::to_string(sides.size()) + " lists (" +
                                   names + "): -o must name an existing folder, or --side " +
                                   "choose one");
    return ExitStatus::Unusable;
  }
  const EdlExportInput input = EdlInputFromDocument(context.document);
  for (const EdlSide side : sides) {
    const EdlResult list = TimelineToEdl(outcome.timeline, input, side);
    for (const auto& note : list.approximations) {
      report.lines.push_back(ReportLine(note));
      report.lines.back().text = std::string(EdlSideName(side)) + " list: " + note.text;
    }
    const ExitStatus written =
        WriteResultTo(context, ListPath(context, side, intoFolder), list.text);
    if (written != ExitStatus::Done) {
      return written;
    }
  }
  return ExitStatus::Done;
}

ExitStatus RunOtio(const CommandContext& context, const Outcome& outcome, ExportReport& report) {
  const Findings findings = OtioBlockingFindings(context.document, outcome);
  if (!findings.empty()) {
    return RefuseExport(
        context, "Cannot export to OpenTimelineIO: ", findings.Words(*findings.begin()), report);
  }
  OtioExportOptions options = OtioOptionsFromDocument(context.document, outcome.mode);
  options.mediaUrl = context.options.mediaUrl;
  options.compact = context.options.compact;
  std::vector<OtioNote> notes;
  try {
    CheckOtio(outcome, findings, options, &notes);
  } catch (const OtioExportRefusal& refusal) {
    // A problem met while walking the timeline names its engine item: placed
    // at that item's element, like a finding.
    DocumentPlace place = refusal.Place();
    std::optional<std::size_t> element;
    if (place.pointer.empty()) {
      element = ElementOfItem(outcome.timeline, options.elements.size(), refusal.ItemId());
    }
    if (element) {
      place = DocumentPlace::Element(context.document, *element);
    }
    context.report.Refused(context.inputName, Refusal{refusal.what(), place});
    report.lines.push_back({ExportReportLine::Kind::Refused, element, false, refusal.what()});
    return ExitStatus::Refused;
  }
  for (const auto& note : notes) {
    ExportReportLine line{ExportReportLine::Kind::Approximated, std::nullopt, note.aux, note.text};
    if (!note.aux) {
      line.element = note.element;
    }
    report.lines.push_back(std::move(line));
  }
  const ExitStatus status =
      WriteResult(context, [&](std::ostream& out) { WriteOtio(out, outcome.timeline, options); });
  return status;
}

}  // namespace

ExitStatus RunConvert(const CommandContext& context) {
  const std::string format =
      ChooseFormat(context, context.options.format, {"engine", "otio", "edl"}, "engine");
  if (format.empty()) {
    return ExitStatus::Unusable;
  }
  if (!context.options.side.empty() && format != "edl") {
    ReportUsage(context,
                "--side chooses the side of an edit decision list; the output is " + format);
    return ExitStatus::Unusable;
  }
  if (!context.options.mediaUrl.empty() && format != "otio") {
    ReportUsage(context, "--media-url applies to OpenTimelineIO; the output is " + format);
    return ExitStatus::Unusable;
  }
  Outcome outcome = ConvertDocument(context.document, context.Mode());
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
    return ExitStatus::Refused;
  }
  if (format == "engine") {
    if (!context.options.report.empty()) {
      ReportUsage(context,
                  "--report lists what an interchange export (otio, edl) approximates; "
                  "engine JSON carries everything");
      return ExitStatus::Unusable;
    }
    const ExitStatus written = WriteResult(context, [&](std::ostream& out) {
      if (!context.options.compact) {
        WriteTimelineJson(out, outcome.timeline);
        return;
      }
      CompactJsonBuffer compact(out);
      std::ostream compactOut(&compact);
      WriteTimelineJson(compactOut, outcome.timeline);
      compactOut.flush();
      out << '\n';
    });
    LeaveToExit(outcome);
    return written;
  }
  ExportReport report{format, context.inputName, {}};
  const ExitStatus status =
      format == "edl" ? RunEdl(context, outcome, report) : RunOtio(context, outcome, report);
  const ExitStatus finished = FinishReport(context, report, status);
  LeaveToExit(outcome);
  return finished;
}

}  // namespace TimelineConvert
