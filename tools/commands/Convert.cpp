// convert: the timeline as engine JSON, as an OpenTimelineIO document or as
// edit decision lists, the format given or taken from the output's name. A
// refusal of the library is reported with its place and writes nothing; an
// export that cannot hold the timeline is refused with the finding that
// blocks it, at its place, and writes nothing either.
#include <filesystem>

#include "analysis/ExportFindings.h"
#include "analysis/Findings.h"
#include "commands/Commands.h"
#include "export/EdlExport.h"
#include "export/EdlInput.h"
#include "export/EngineJson.h"
#include "export/OtioExport.h"

namespace TimelineConvert {

namespace {

// An export refused by a finding: its message after the export's words, the
// place on the line after it, as for the library's refusals.
ExitStatus RefuseExport(const CommandContext& context, const std::string& what,
                        const Finding& finding) {
  context.report.Refused(context.inputName, Refusal{what + finding.message, finding.place});
  return ExitStatus::Refused;
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

ExitStatus RunEdl(const CommandContext& context, const Outcome& outcome,
                  const std::vector<Finding>& findings) {
  std::vector<EdlSide> sides;
  if (!context.options.side.empty()) {
    sides.push_back(*EdlSideFromName(context.options.side));
  } else {
    sides = EdlSidesOf(outcome.timeline);
  }
  for (const auto& finding : findings) {
    for (const EdlSide side : sides) {
      if (finding.kind == EdlBlockingKind(side)) {
        return RefuseExport(context, "Cannot export to an EDL: ", finding);
      }
    }
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
    const ExitStatus written =
        WriteResultTo(context, ListPath(context, side, intoFolder), list.text);
    if (written != ExitStatus::Done) {
      return written;
    }
  }
  return ExitStatus::Done;
}

}  // namespace

ExitStatus RunConvert(const CommandContext& context) {
  const std::string format =
      ChooseFormat(context, context.options.format, {"engine", "otio", "edl"}, "engine");
  if (format.empty()) {
    return ExitStatus::Unusable;
  }
  const Outcome outcome = ConvertDocument(context.document, context.Mode());
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
    return ExitStatus::Refused;
  }
  if (format == "engine") {
    return WriteResult(context,
                       [&outcome](std::ostream& out) { WriteTimelineJson(out, outcome.timeline); });
  }
  const std::vector<Finding> findings = FindFindings(context.document, outcome);
  if (format == "edl") {
    return RunEdl(context, outcome, findings);
  }
  std::string text;
  try {
    text = ExportOtio(outcome, findings, OtioOptionsFromDocument(context.document, outcome.mode));
  } catch (const OtioExportRefusal& refusal) {
    context.report.Refused(context.inputName, Refusal{refusal.what(), refusal.Place()});
    return ExitStatus::Refused;
  }
  return WriteResultTo(context, context.options.output, text);
}

}  // namespace TimelineConvert
