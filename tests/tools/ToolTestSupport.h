// Helpers of the timeline-convert tests: running a shell command line with the
// built program, reading and writing files, checking XML with xmllint.
#pragma once

#include <string>

namespace tool_testing {

struct ToolRun {
  int exitStatus;
  std::string out;
  std::string err;
};

// Runs a shell script in `folder`, with $TOOL the program and $SRC the source
// tree; waits for the script's background jobs before returning.
ToolRun RunScript(const std::string& folder, const std::string& script);

std::string SourcePath(const std::string& relative);
std::string WorkPath(const std::string& name);

// The built program with `arguments` (shell-quoted), run in the work folder.
inline ToolRun RunTool(const std::string& arguments) {
  return RunScript(WorkPath("."), "\"$TOOL\" " + arguments);
}
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

bool IsWellFormedXml(const std::string& text);

}  // namespace tool_testing
