// convert: the timeline as engine JSON or as an OpenTimelineIO document. A
// refusal of the library is reported with its place and writes nothing; an
// export that cannot hold the timeline is reported as it stands.
#include "analysis/Findings.h"
#include "commands/Commands.h"
#include "export/EngineJson.h"
#include "export/OtioExport.h"

namespace TimelineConvert {

ExitStatus RunConvert(const CommandContext& context) {
  const Outcome outcome = ConvertDocument(context.document, context.Mode());
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
    return ExitStatus::Refused;
  }
  if (context.options.format != "otio") {
    return WriteResult(context,
                       [&outcome](std::ostream& out) { WriteTimelineJson(out, outcome.timeline); });
  }
  std::string text;
  try {
    text = ExportOtio(outcome, FindFindings(context.document, outcome),
                      OtioOptionsFromDocument(context.document, outcome.mode));
  } catch (const OtioExportRefusal& refusal) {
    context.report.Refused(context.inputName, Refusal{refusal.what(), refusal.Place()});
    return ExitStatus::Refused;
  }
  return WriteResult(context, [&text](std::ostream& out) { out << text; });
}

}  // namespace TimelineConvert
