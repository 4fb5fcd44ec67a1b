// Commands: each of timeline-convert's commands as one short function over
// the stages (read the document, convert it once, find what is wrong, write
// one presentation). main.cpp holds the table that names them.
#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "cli/ErrorReport.h"
#include "cli/ExitStatus.h"

namespace TimelineConvert {

struct CommandOptions {
  std::string input;
  std::string output = "-";
  std::string durationMode = "items";
  std::string format = "engine";
  bool html = false;
  std::string errors = "text";
  // check: which kinds to report, all of each, and what an operator accepts.
  std::vector<std::string> onlyKinds;
  std::vector<std::string> ignoredKinds;
  bool allFindings = false;
  FindingOptions findingOptions;
};

// What every command starts from: the options, the document read once and
// the report of failures in the chosen form.
struct CommandContext {
  const CommandOptions& options;
  const PlaylistDocument& document;
  const FailureReport& report;
  std::string inputName;  // the input as messages name it
  DurationMode Mode() const;
};

ExitStatus RunConvert(const CommandContext& context);
ExitStatus RunAssets(const CommandContext& context);
ExitStatus RunRender(const CommandContext& context);
ExitStatus RunCheck(const CommandContext& context);

// Reads the input and the document, then runs the command with them.
ExitStatus RunCommand(ExitStatus (*command)(const CommandContext&), const CommandOptions& options);

// Writes the whole output, or reports why it could not be written.
ExitStatus WriteResult(const CommandContext& context,
                       const std::function<void(std::ostream&)>& write);

}  // namespace TimelineConvert
