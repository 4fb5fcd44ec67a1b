// Helpers of the timeline-convert tests: the tool runs under /bin/sh.
#include "ToolTestSupport.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <tuple>

namespace tool_testing {

std::string SourcePath(const std::string& relative) {
  return TEC_SOURCE_DIR "/" + relative;
}
std::string WorkPath(const std::string& name) {
  return TEC_WORK_DIR "/" + name;
}

namespace {

// CTest runs tests in parallel; scratch files are kept apart per process.
std::string ScratchPath(const char* name) {
  return WorkPath(std::to_string(getpid()) + "-" + name);
}

}  // namespace

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream(path, std::ios::binary | std::ios::trunc) << content;
}

ToolRun RunScript(const std::string& folder, const std::string& script) {
  const std::string errPath = ScratchPath("tool-stderr.txt");
  const std::string scriptPath = ScratchPath("script.sh");
  WriteFile(scriptPath, script + "\nstatus=$?\nwait\nexit $status\n");
  const std::string command = "cd '" + folder +
                              "' && TOOL='" TEC_TOOL_PATH "' SRC='" TEC_SOURCE_DIR "' sh '" +
                              scriptPath + "' 2>'" + errPath + "'";
  ToolRun run{-1, {}, {}};
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) {
    return run;
  }
  char buffer[4096];
  for (std::size_t got; (got = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    run.out.append(buffer, got);
  }
  const int status = pclose(pipe);
  run.exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  run.err = ReadFile(errPath);
  std::remove(errPath.c_str());
  std::remove(scriptPath.c_str());
  return run;
}

bool IsWellFormedXml(const std::string& text) {
  const std::string path = ScratchPath("well-formed-check.xml");
  WriteFile(path, text);
  const bool wellFormed =
      std::system(("'" TEC_XMLLINT_PATH "' --noout '" + path + "'").c_str()) == 0;
  std::remove(path.c_str());
  return wellFormed;
}

std::shared_ptr<Kov::TimelineEngineModel::TrackItem> Media(const char* id, std::int64_t in,
                                                           std::int64_t length,
                                                           std::int64_t mediaIn,
                                                           std::int64_t mediaLength,
                                                           bool soundOnly) {
  auto item = std::make_shared<Kov::TimelineEngineModel::MediaSummaryItem>(id);
  item->mediaId = id;
  (soundOnly ? std::tie(item->timelineAudioIn, item->timelineAudioDuration, item->mediaAudioIn,
                        item->mediaAudioDuration)
             : std::tie(item->timelineVideoIn, item->timelineVideoDuration, item->mediaVideoIn,
                        item->mediaVideoDuration)) = std::tie(in, length, mediaIn, mediaLength);
  return item;
}

std::shared_ptr<Kov::TimelineEngineModel::TrackItem> Fx(const char* id, int kind, int offset,
                                                        int duration) {
  auto item = std::make_shared<Kov::TimelineEngineModel::FxVideoTransitionItem>(id);
  item->effect = {kind, offset, duration, ""};
  return item;
}

}  // namespace tool_testing
