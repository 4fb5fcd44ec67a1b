// Commands: each of timeline-convert's commands as one short function over
// the stages (read the document, convert it once, find what is wrong, write
// one presentation). main.cpp holds the table that names them.
#pragma once

#include <functional>
#include <ostream>
#include <streambuf>
#include <string>
#include <utility>
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
  // Empty: from the output's file name, else the command's own.
  std::string format;
  bool html = false;
  std::string errors = "text";
  // check: which kinds to report, all of each, and what an operator accepts.
  std::vector<std::string> onlyKinds;
  std::vector<std::string> ignoredKinds;
  bool allFindings = false;
  FindingOptions findingOptions;
  std::string side;      // convert --format edl: one side only
  std::string mediaUrl;  // convert --format otio: where the media files are
  std::string report;    // convert: what each export carried, approximated, refused
  bool compact = false;  // JSON without indentation
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

// What a command has finished with when the process is about to end. The
// process ends after its one command, and giving a large timeline back to the
// allocator piece by piece costs about a tenth of a check, so the values are
// kept, reachable, until the process ends and its memory goes at once.
namespace LeftToExit {
struct Left {
  Left* previous = nullptr;
};
template <typename Value>
struct LeftValue : Left {
  explicit LeftValue(Value&& value_) : value(std::move(value_)) {}
  Value value;
};
void Keep(Left* left);
}  // namespace LeftToExit

template <typename Value>
void LeaveToExit(Value& value) {
  LeftToExit::Keep(new LeftToExit::LeftValue<Value>(std::move(value)));
}

// Reads the input and the document, then runs the command with them.
ExitStatus RunCommand(ExitStatus (*command)(const CommandContext&), const CommandOptions& options);

// Writes the whole output, or reports why it could not be written.
ExitStatus WriteResult(const CommandContext& context,
                       const std::function<void(std::ostream&)>& write);
ExitStatus WriteResultTo(const CommandContext& context, const std::string& path,
                         const std::string& text);

// The format the output's file name asks for ("otio", "edl", "html", "svg",
// "engine" for .json); empty for any other name.
std::string FormatOfFileName(const std::string& path);

// The output's format: the one asked for, else the file name's, else
// `fallback`. Empty, with the reason reported, when the two contradict or the
// command cannot write that format.
std::string ChooseFormat(const CommandContext& context, const std::string& asked,
                         const std::vector<std::string>& writable, const std::string& fallback);

// Passes indented JSON on without the whitespace between its tokens, so that
// any writer's output can be made compact as it streams.
class CompactJsonBuffer : public std::streambuf {
 public:
  explicit CompactJsonBuffer(std::ostream& out) : out_(out) {}

 protected:
  int_type overflow(int_type next) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;

 private:
  // Whether `c` stays: anything inside a string, no whitespace outside.
  bool Keep(char c);
  std::ostream& out_;
  std::string kept_;
  bool inString_ = false;
  bool escaped_ = false;
};

// A failure of the command line found by a command, as a sentence or JSON.
void ReportUsage(const CommandContext& context, const std::string& message);

}  // namespace TimelineConvert
