// check: every finding, one per line with its place, then a summary; with
// --errors json one object per finding and no summary. The library's refusal
// goes to standard error as for the other commands. --only and --ignore pick
// kinds; past the first 10 findings of a kind the text form counts the rest
// in one line (--all shows them), so that a frequent kind buries no other.
#include <algorithm>
#include <cstdint>
#include <map>

#include "analysis/Findings.h"
#include "commands/Commands.h"

namespace TimelineConvert {

namespace {

constexpr std::size_t kShownPerKind = 10;

bool Listed(const std::vector<std::string>& kinds, const std::string& kind) {
  return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

std::vector<const Finding*> Selected(const std::vector<Finding>& findings,
                                     const CommandOptions& options) {
  std::vector<const Finding*> selected;
  for (const Finding& finding : findings) {
    if (finding.severity == Severity::Refusal) {
      continue;  // reported as the refusal, on standard error
    }
    if ((!options.onlyKinds.empty() && !Listed(options.onlyKinds, finding.kind)) ||
        Listed(options.ignoredKinds, finding.kind)) {
      continue;
    }
    selected.push_back(&finding);
  }
  return selected;
}

std::int64_t NumberOf(const Finding& finding, const char* name) {
  for (const auto& number : finding.numbers) {
    if (number.first == name) {
      return number.second;
    }
  }
  return 0;
}

// The item whose picture and sound start furthest apart, in one line.
std::string DriftSummary(const std::string& file, const std::vector<const Finding*>& selected) {
  const Finding* largest = nullptr;
  std::int64_t apart = 0;
  for (const Finding* finding : selected) {
    const std::int64_t offset = NumberOf(*finding, "offset");
    const std::int64_t size = offset >= 0 ? offset : offset == INT64_MIN ? INT64_MAX : -offset;
    if (finding->kind == "av-drift" && (largest == nullptr || size > apart)) {
      largest = finding;
      apart = size;
    }
  }
  if (largest == nullptr) {
    return "";
  }
  return file + ": picture and sound start up to " + std::to_string(apart) +
         " frames apart (largest " + DescribePlace(largest->place) + ")\n";
}

std::string CheckListing(const std::string& file, const std::vector<const Finding*>& selected,
                         bool refused, const CommandOptions& options) {
  const bool json = options.errors == "json";
  std::string listing;
  std::map<std::string, std::size_t> perKind;
  for (const Finding* finding : selected) {
    const std::size_t seen = ++perKind[finding->kind];
    if (json) {
      listing += FindingJson(file, *finding) + "\n";
    } else if (seen <= kShownPerKind || options.allFindings) {
      listing += FindingLine(file, *finding) + "\n";
    }
  }
  if (json) {
    return listing;
  }
  for (const auto& [kind, count] : perKind) {
    if (count > kShownPerKind && !options.allFindings) {
      listing += file + ": " + std::to_string(count - kShownPerKind) + " more " + kind +
                 " findings (--all shows them)\n";
    }
  }
  listing += DriftSummary(file, selected);
  const std::size_t count = selected.size();
  listing += file + ": " + (refused ? "refused, " : "") +
             (count == 0 ? std::string("no findings")
                         : std::to_string(count) + (count == 1 ? " finding" : " findings")) +
             "\n";
  return listing;
}

}  // namespace

ExitStatus RunCheck(const CommandContext& context) {
  const Outcome outcome = ConvertDocument(context.document, context.Mode());
  const auto findings = FindFindings(context.document, outcome, context.options.findingOptions);
  const auto selected = Selected(findings, context.options);
  const std::string listing =
      CheckListing(context.inputName, selected, outcome.refusal.has_value(), context.options);
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
  }
  const ExitStatus written =
      WriteResult(context, [&listing](std::ostream& out) { out << listing; });
  if (written != ExitStatus::Done) {
    return written;
  }
  // A note alone is no reason for a script to stop.
  const bool found = std::any_of(selected.begin(), selected.end(), [](const Finding* finding) {
    return finding->severity != Severity::Note;
  });
  return outcome.refusal ? ExitStatus::Refused : found ? ExitStatus::Findings : ExitStatus::Done;
}

}  // namespace TimelineConvert
