// check: every finding, one per line with its place, then a summary; with
// --errors json one object per finding and no summary. The library's refusal
// goes to standard error as for the other commands. --only and --ignore pick
// kinds; past the first 10 findings of a kind the text form counts the rest
// in one line (--all shows them), so that a frequent kind buries no other.
#include <algorithm>
#include <array>
#include <cstdint>
#include <map>

#include "analysis/Findings.h"
#include "commands/Commands.h"

namespace TimelineConvert {

namespace {

constexpr std::size_t kShownPerKind = 10;
// The text goes to the output a block at a time: with --errors json a long
// sequence makes far more text than the findings themselves take.
constexpr std::size_t kBlock = 1 << 16;
constexpr std::size_t kKindCount = kFindingKindCount;

bool Listed(const std::vector<std::string>& kinds, const std::string& kind) {
  return std::find(kinds.begin(), kinds.end(), kind) != kinds.end();
}

// Which kinds are reported: not a refusal (reported as the refusal, on
// standard error), and as --only and --ignore say.
std::array<bool, kKindCount> SelectedKinds(const CommandOptions& options) {
  std::array<bool, kKindCount> selected{};
  for (std::size_t index = 0; index < kKindCount; ++index) {
    const auto kind = static_cast<FindingKind>(index);
    const std::string word = KindWord(kind);
    selected[index] = SeverityOf(kind) != Severity::Refusal &&
                      (options.onlyKinds.empty() || Listed(options.onlyKinds, word)) &&
                      !Listed(options.ignoredKinds, word);
  }
  return selected;
}

bool Selected(const std::array<bool, kKindCount>& kinds, const Finding& finding) {
  return finding.severity != Severity::Refusal && kinds[static_cast<std::size_t>(finding.kind)];
}

// The item whose picture and sound start furthest apart, in one line.
std::string DriftSummary(const std::string& file, const Findings& findings,
                         const std::array<bool, kKindCount>& kinds) {
  const Finding* largest = nullptr;
  std::int64_t apart = 0;
  for (const Finding& finding : findings) {
    if (finding.kind != FindingKind::AvDrift || !Selected(kinds, finding)) {
      continue;
    }
    const std::int64_t offset = finding.values[2];
    const std::int64_t size = offset >= 0 ? offset : offset == INT64_MIN ? INT64_MAX : -offset;
    if (largest == nullptr || size > apart) {
      largest = &finding;
      apart = size;
    }
  }
  if (largest == nullptr) {
    return "";
  }
  return file + ": picture and sound start up to " + std::to_string(apart) +
         " frames apart (largest " + DescribePlace(findings.Place(*largest)) + ")\n";
}

// Writes the listing into `out` a block at a time; returns how many findings
// it reported and whether any is more than a note.
std::pair<std::size_t, bool> WriteListing(std::ostream& out, const std::string& file,
                                          const Findings& findings, bool refused,
                                          const CommandOptions& options) {
  const bool json = options.errors == "json";
  const auto kinds = SelectedKinds(options);
  std::string block;
  block.reserve(kBlock + 4096);
  std::map<std::string, std::size_t> perKind;
  std::array<std::size_t, kKindCount> seen{};
  std::size_t count = 0;
  bool found = false;
  for (const Finding& finding : findings) {
    if (!Selected(kinds, finding)) {
      continue;
    }
    ++count;
    // A note alone is no reason for a script to stop.
    found = found || finding.severity != Severity::Note;
    const std::size_t ofKind = ++seen[static_cast<std::size_t>(finding.kind)];
    if (json) {
      AppendFindingJson(block, file, findings, finding);
      block += '\n';
    } else if (ofKind <= kShownPerKind || options.allFindings) {
      AppendFindingLine(block, file, findings, finding);
      block += '\n';
    }
    if (block.size() >= kBlock) {
      out.write(block.data(), static_cast<std::streamsize>(block.size()));
      block.clear();
    }
  }
  if (!json) {
    for (std::size_t index = 0; index < kKindCount; ++index) {
      if (seen[index] != 0) {
        perKind.emplace(KindWord(static_cast<FindingKind>(index)), seen[index]);
      }
    }
    for (const auto& [kind, number] : perKind) {
      if (number > kShownPerKind && !options.allFindings) {
        block += file + ": " + std::to_string(number - kShownPerKind) + " more " + kind +
                 " findings (--all shows them)\n";
      }
    }
    block += DriftSummary(file, findings, kinds);
    block += file + ": " + (refused ? "refused, " : "") +
             (count == 0 ? std::string("no findings")
                         : std::to_string(count) + (count == 1 ? " finding" : " findings")) +
             "\n";
  }
  out.write(block.data(), static_cast<std::streamsize>(block.size()));
  return {count, found};
}

}  // namespace

ExitStatus RunCheck(const CommandContext& context) {
  Outcome outcome = ConvertDocument(context.document, context.Mode());
  Findings findings = FindFindings(context.document, outcome, context.options.findingOptions);
  if (outcome.refusal) {
    context.report.Refused(context.inputName, *outcome.refusal);
  }
  bool found = false;
  const ExitStatus written = WriteResult(context, [&](std::ostream& out) {
    found =
        WriteListing(out, context.inputName, findings, outcome.refusal.has_value(), context.options)
            .second;
  });
  const ExitStatus status = written != ExitStatus::Done ? written
                            : outcome.refusal           ? ExitStatus::Refused
                            : found                     ? ExitStatus::Findings
                                                        : ExitStatus::Done;
  LeaveToExit(findings);
  LeaveToExit(outcome);
  return status;
}

}  // namespace TimelineConvert
