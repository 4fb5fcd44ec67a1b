// check: every finding, one per line with its place, then a summary; with
// --errors json one object per finding and no summary. The library's refusal
// goes to standard error as for the other commands.
#include "analysis/Findings.h"
#include "commands/Commands.h"

namespace TimelineConvert {

namespace {

std::string CheckListing(const std::string& file, const std::vector<Finding>& findings,
                         bool refused, bool json) {
  std::string listing;
  std::size_t count = 0;
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::Refusal) {
      continue;  // reported as the refusal, on standard error
    }
    ++count;
    listing += (json ? FindingJson(file, finding) : FindingLine(file, finding)) + "\n";
  }
  if (!json) {
    listing += file + ": " + (refused ? "refused, " : "") +
               (count == 0 ? std::string("no findings")
                           : std::to_string(count) + (count == 1 ? " finding" : " findings")) +
               "\n";
  }
  return listing;
}

}  // namespace

ExitStatus RunCheck(const CommandContext& context) {
  const Outcome outcome = ConvertDocument(context.document, context.Mode());
  const auto findings = FindFindings(context.document, outcome);
  const std::string listing = CheckListing(context.inputName, findings, outcome.refusal.has_value(),
                                           context.options.errors == "json");
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
  }
  const ExitStatus written =
      WriteResult(context, [&listing](std::ostream& out) { out << listing; });
  if (written != ExitStatus::Done) {
    return written;
  }
  const bool found = findings.size() > (outcome.refusal ? 1U : 0U);
  return outcome.refusal ? ExitStatus::Refused : found ? ExitStatus::Findings : ExitStatus::Done;
}

}  // namespace TimelineConvert
