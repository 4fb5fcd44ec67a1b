// Helpers of the timeline-convert tests: running a shell command line with the
// built program, reading and writing files, checking XML with xmllint, and
// building the engine items that the exports' tests lay on hand-worked tracks.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <memory>
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

// A media item of asset `id` (named like the item) with a picture part only,
// or a sound part only.
std::shared_ptr<Kov::TimelineEngineModel::TrackItem> Media(const char* id, std::int64_t in,
                                                           std::int64_t length,
                                                           std::int64_t mediaIn,
                                                           std::int64_t mediaLength,
                                                           bool soundOnly = false);

// A picture transition of `kind` with its cut `offset` frames into it.
std::shared_ptr<Kov::TimelineEngineModel::TrackItem> Fx(const char* id, int kind, int offset,
                                                        int duration);

}  // namespace tool_testing
