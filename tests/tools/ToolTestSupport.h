// Helpers of the timeline-convert tests: running the built program, reading
// files, checking XML with xmllint, and reading the tool's timeline JSON back
// into the engine model so it can be compared with what the library returns.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <string>

namespace tool_testing {

struct ToolRun {
  int exitStatus;
  std::string out;
  std::string err;
};

// Runs timeline-convert with the given shell-quoted arguments.
ToolRun RunTool(const std::string& arguments);

std::string SourcePath(const std::string& relative);
std::string WorkPath(const std::string& name);
std::string ReadFile(const std::string& path);
void WriteFile(const std::string& path, const std::string& content);

bool IsWellFormedXml(const std::string& text);

Kov::TimelineEngineModel::Timeline TimelineFromJson(const std::string& text);

// Every field of both timelines, items through the model's own equality.
void ExpectSameTimeline(const Kov::TimelineEngineModel::Timeline& actual,
                        const Kov::TimelineEngineModel::Timeline& expected);

}  // namespace tool_testing
