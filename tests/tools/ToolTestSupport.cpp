// Helpers of the timeline-convert tests.
#include "ToolTestSupport.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

namespace tool_testing {

namespace Engine = Kov::TimelineEngineModel;

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

ToolRun RunTool(const std::string& arguments) {
  const std::string errPath = ScratchPath("tool-stderr.txt");
  const std::string command = "'" TEC_TOOL_PATH "' " + arguments + " 2>'" + errPath + "'";
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

Engine::Timeline TimelineFromJson(const std::string& text) {
  const auto json = nlohmann::json::parse(text);
  Engine::Timeline timeline;
  timeline.id = json.at("id").get<std::string>();
  timeline.secondaryId = json.at("secondaryId").get<std::string>();
  timeline.duration = json.at("duration");
  for (const auto& trackJson : json.at("tracks")) {
    Engine::Track track{trackJson.at("id").get<std::string>(), trackJson.at("type"), {}};
    for (const auto& itemJson : trackJson.at("items")) {
      const std::string id = itemJson.at("id");
      if (itemJson.at("type") == Engine::MediaSummary) {
        auto media = std::make_shared<Engine::MediaSummaryItem>(id);
        media->timelineVideoIn = itemJson.at("timelineVideoIn");
        media->timelineVideoDuration = itemJson.at("timelineVideoDuration");
        media->timelineAudioIn = itemJson.at("timelineAudioIn");
        media->timelineAudioDuration = itemJson.at("timelineAudioDuration");
        media->mediaId = itemJson.at("mediaId").get<std::string>();
        media->mediaVideoIn = itemJson.at("mediaVideoIn");
        media->mediaVideoDuration = itemJson.at("mediaVideoDuration");
        media->mediaAudioIn = itemJson.at("mediaAudioIn");
        media->mediaAudioDuration = itemJson.at("mediaAudioDuration");
        media->reservedA = itemJson.at("reservedA");
        media->reservedB = itemJson.at("reservedB");
        track.items.push_back(media);
        continue;
      }
      std::shared_ptr<Engine::FxTransitionItem> transition;
      if (itemJson.at("type") == Engine::FxVideoTransition) {
        transition = std::make_shared<Engine::FxVideoTransitionItem>(id);
      } else {
        transition = std::make_shared<Engine::FxAudioTransitionItem>(id);
      }
      const auto& effect = itemJson.at("effect");
      transition->FxTransition(
          {effect.at("kind"), effect.at("offset"), effect.at("duration"), effect.at("name")});
      track.items.push_back(transition);
    }
    timeline.tracks.push_back(track);
  }
  for (const auto& infoJson : json.at("mediaInfos")) {
    timeline.mediaInfos.push_back({infoJson.at("id").get<std::string>(), infoJson.at("limitIn"),
                                   infoJson.at("duration"), infoJson.at("tracksDescription")});
  }
  return timeline;
}

void ExpectSameTimeline(const Engine::Timeline& actual, const Engine::Timeline& expected) {
  EXPECT_EQ(actual.id, expected.id);
  EXPECT_EQ(actual.secondaryId, expected.secondaryId);
  EXPECT_EQ(actual.duration, expected.duration);
  ASSERT_EQ(actual.tracks.size(), expected.tracks.size());
  for (std::size_t track = 0; track < expected.tracks.size(); ++track) {
    EXPECT_EQ(actual.tracks[track].id, expected.tracks[track].id);
    EXPECT_EQ(actual.tracks[track].type, expected.tracks[track].type);
    ASSERT_EQ(actual.tracks[track].items.size(), expected.tracks[track].items.size());
    for (std::size_t item = 0; item < expected.tracks[track].items.size(); ++item) {
      EXPECT_TRUE(*actual.tracks[track].items[item] == *expected.tracks[track].items[item])
          << "track " << track << ", item " << item;
    }
  }
  ASSERT_EQ(actual.mediaInfos.size(), expected.mediaInfos.size());
  for (std::size_t index = 0; index < expected.mediaInfos.size(); ++index) {
    EXPECT_EQ(actual.mediaInfos[index].id, expected.mediaInfos[index].id);
    EXPECT_EQ(actual.mediaInfos[index].limitIn, expected.mediaInfos[index].limitIn);
    EXPECT_EQ(actual.mediaInfos[index].duration, expected.mediaInfos[index].duration);
    EXPECT_EQ(actual.mediaInfos[index].tracksDescription,
              expected.mediaInfos[index].tracksDescription);
  }
}

}  // namespace tool_testing
