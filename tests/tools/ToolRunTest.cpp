// The program itself: the shipped examples against the golden files, its
// output read back and compared with the library's own result, exit statuses,
// messages, and no output file at all when a run fails.
#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <nlohmann/json.hpp>

#include "PlaylistDocument.h"
#include "ToolTestSupport.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using tool_testing::ReadFile;
using tool_testing::RunTool;
using tool_testing::SourcePath;
using tool_testing::WorkPath;

const std::string kHighlight = SourcePath("examples/highlight.json");
const std::string kRefused = SourcePath("examples/refused.json");

Kov::TimelineEngineModel::Timeline LibraryTimeline(
    const std::string& path, Conversion::TimelineConverter::DurationMode mode) {
  const auto document = TimelineConvert::ReadPlaylistDocument(ReadFile(path));
  return Conversion::TimelineConverter::ToTimeline(document.playlist, mode, document.assets);
}

TEST(ToolRun, ConvertsTheShippedExampleToTheGoldenJson) {
  const auto run = RunTool("convert '" + kHighlight + "'");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.err, "");
  EXPECT_EQ(run.out, ReadFile(SourcePath("tests/tools/golden/highlight.timeline.json")));
  const auto fromStdin = RunTool("convert - < '" + kHighlight + "'");
  EXPECT_EQ(fromStdin.out, run.out);
}

TEST(ToolRun, OutputReadsBackAsWhatTheLibraryReturns) {
  for (const auto mode : {Conversion::TimelineConverter::FromTrackItems,
                          Conversion::TimelineConverter::FromPlaylist}) {
    const std::string output = WorkPath("highlight.timeline.json");
    std::remove(output.c_str());
    const auto run =
        RunTool("convert '" + kHighlight + "' -o '" + output + "' --duration-mode " +
                (mode == Conversion::TimelineConverter::FromPlaylist ? "playlist" : "items"));
    ASSERT_EQ(run.exitStatus, 0) << run.err;
    tool_testing::ExpectSameTimeline(tool_testing::TimelineFromJson(ReadFile(output)),
                                     LibraryTimeline(kHighlight, mode));
  }
  tool_testing::ExpectSameTimeline(
      tool_testing::TimelineFromJson(
          ReadFile(SourcePath("tests/tools/golden/highlight.timeline.json"))),
      LibraryTimeline(kHighlight, Conversion::TimelineConverter::FromTrackItems));
}

TEST(ToolRun, ListsTheAssetsThePlaylistUses) {
  const auto run = RunTool("assets '" + kHighlight + "'");
  EXPECT_EQ(run.exitStatus, 0);
  EXPECT_EQ(run.out, ReadFile(SourcePath("tests/tools/golden/highlight.assets.txt")));
  // Without the commentary clip's asset, the aux line (always first) says so.
  auto document = nlohmann::json::parse(ReadFile(kHighlight));
  document["assets"].erase(3);
  tool_testing::WriteFile(WorkPath("without-aux-asset.json"), document.dump());
  const auto lacking = RunTool("assets '" + WorkPath("without-aux-asset.json") + "'");
  EXPECT_EQ(lacking.out.substr(0, lacking.out.find('\n')),
            TimelineConvert::AssetIdOfClip("COMMENT-01").Text() + "\tCOMMENT-01\tmissing");
}

TEST(ToolRun, RefusalExitsTwoWithTheLibrarysTextAndWritesNothing) {
  std::string libraryText;
  try {
    LibraryTimeline(kRefused, Conversion::TimelineConverter::FromTrackItems);
  } catch (const std::logic_error& refusal) {
    libraryText = refusal.what();
  }
  EXPECT_EQ(libraryText,
            "The playlist PL13 cannot be edited - contains track item (2) with a shorter video "
            "duration than their transition duration.");
  const std::string output = WorkPath("kept-output.txt");
  for (const char* command : {"convert", "render"}) {
    tool_testing::WriteFile(output, "earlier content");
    const auto run = RunTool(std::string(command) + " '" + kRefused + "' -o '" + output + "'");
    EXPECT_EQ(run.exitStatus, 2);
    // The second line, where the refusal comes from, is DiagnosticsTest's.
    const std::string firstLine = run.err.substr(0, run.err.find('\n') + 1);
    EXPECT_EQ(firstLine, libraryText + "\n");
    EXPECT_EQ(firstLine, ReadFile(SourcePath("tests/tools/golden/refused.stderr.txt")));
    EXPECT_EQ(ReadFile(output), "earlier content");
  }
}

TEST(ToolRun, UnusableInputExitsOneNamingThePlace) {
  const std::string input = WorkPath("malformed.json");
  const std::string output = WorkPath("never-written.json");
  std::remove(output.c_str());
  tool_testing::WriteFile(input, "{\"playlist\": {\"number\": 1}, \"assets\": []}");
  auto run = RunTool("convert '" + input + "' -o '" + output + "'");
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.err, "timeline-convert: " + input + ": /playlist: missing field \"serverId\"\n");
  EXPECT_EQ(std::fopen(output.c_str(), "r"), nullptr);

  run = RunTool("render '" + WorkPath("no-such-file.json") + "'");
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.err, "timeline-convert: cannot read " + WorkPath("no-such-file.json") +
                         ": No such file or directory\n");
  // An output that cannot be written is reported, and left as it was.
  const std::string directory = WorkPath("output-directory");
  std::filesystem::create_directories(directory);
  run = RunTool("convert '" + kHighlight + "' -o '" + directory + "'");
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(run.err, "timeline-convert: cannot write " + directory + ": Is a directory\n");
  EXPECT_TRUE(std::filesystem::is_directory(directory));
  EXPECT_EQ(RunTool("").exitStatus, 1);
  EXPECT_EQ(RunTool("convert '" + kHighlight + "' --duration-mode fields").exitStatus, 1);
}

TEST(ToolRun, RendersWellFormedSvgAndHtml) {
  const auto svg = RunTool("render '" + kHighlight + "'");
  EXPECT_EQ(svg.exitStatus, 0);
  EXPECT_EQ(svg.out.rfind("<svg ", 0), 0U);
  EXPECT_TRUE(tool_testing::IsWellFormedXml(svg.out));
  const auto html = RunTool("render --html '" + kHighlight + "'");
  EXPECT_EQ(html.out.rfind("<!DOCTYPE html>", 0), 0U);
  EXPECT_NE(html.out.find(svg.out), std::string::npos);
  EXPECT_TRUE(tool_testing::IsWellFormedXml(html.out));
}

TEST(ToolRun, HelpOfEachSubcommandExplainsItsArguments) {
  const std::pair<const char*, std::vector<const char*>> subcommands[] = {
      {"convert", {"INPUT", "--output", "--duration-mode", "items", "playlist"}},
      {"assets", {"INPUT", "missing"}},
      {"render", {"INPUT", "--output", "--duration-mode", "--html"}}};
  for (const auto& subcommand : subcommands) {
    const auto run = RunTool(std::string(subcommand.first) + " --help");
    EXPECT_EQ(run.exitStatus, 0);
    for (const char* word : subcommand.second) {
      EXPECT_NE(run.out.find(word), std::string::npos) << subcommand.first << ": " << word;
    }
  }
}

}  // namespace
