// render: the picture of the timeline, as SVG or as the viewer page. A refused
// playlist is drawn up to the refused element and written, and the refusal is
// reported as well.
#include "analysis/Findings.h"
#include "commands/Commands.h"
#include "picture/HtmlPage.h"
#include "picture/TimelineSvg.h"

namespace TimelineConvert {

ExitStatus RunRender(const CommandContext& context) {
  const std::string format =
      ChooseFormat(context, context.options.html ? "html" : "", {"svg", "html"}, "svg");
  if (format.empty()) {
    return ExitStatus::Unusable;
  }
  Outcome outcome = ConvertDocument(context.document, context.Mode());
  Picture drawn = MakePicture(context.document, outcome, FindFindings(context.document, outcome));
  const std::string picture = format == "html" ? PictureToHtml(drawn) : PictureToSvg(drawn);
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
  }
  const ExitStatus written =
      WriteResult(context, [&picture](std::ostream& out) { out << picture; });
  const ExitStatus status = written != ExitStatus::Done ? written
                            : outcome.refusal           ? ExitStatus::Refused
                                                        : ExitStatus::Done;
  LeaveToExit(drawn);
  LeaveToExit(outcome);
  return status;
}

}  // namespace TimelineConvert
