// Where refusals come from, --errors json, and `check`: one row per kind of
// refusal (the shipped examples patched with a JSON Patch) and one document per
// kind of finding, each with its expected listing beside it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ToolTestSupport.h"
#include "document/AssetKeys.h"
#include "document/PlaylistDocument.h"

namespace {

using tool_testing::ReadFile;
using tool_testing::RunTool;
using tool_testing::SourcePath;
using tool_testing::WorkPath;

struct RefusalRow {
  const char* name;
  std::string patch;  // applied to examples/highlight.json
  std::string message;
  std::string place;
};

std::string VideoOrAudio(const char* side, bool namesItem, const char* playlist = "12") {
  return std::string("The playlist PL") + playlist + " cannot be edited - " +
         (namesItem ? "contains track item (2)" : "it contains track items") + " with a shorter " +
         side + " duration than their transition duration.";
}

TEST(Diagnostics, EveryKindOfRefusalNamesItsPlace) {
  const std::string element = R"([{"op": "add", "path": "/playlist/audioVideoTrack/elements/)";
  const std::string videoPrevious = VideoOrAudio("video", true);
  const std::string audioPrevious = VideoOrAudio("audio", true);
  const std::string videoCurrent = VideoOrAudio("video", false);
  const std::string audioCurrent = VideoOrAudio("audio", false);
  const RefusalRow rows[] = {
      {"MissingAsset", R"([{"op": "remove", "path": "/assets/2"}])",
       "MediaAsset for sequence track item not found", "at element 2 (item 3, clip CAM-SSM-001)"},
      {"AbsoluteIn", (element + R"(3/inBoundaryKind", "value": "absolute"}])"),
       "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine",
       "at element 3 (item 4, clip CAM-A-0031)"},
      {"AbsoluteOut", (element + R"(1/outBoundaryKind", "value": 7}])"),
       "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine",
       "at element 1 (item 2, clip CAM-B-0032)"},
      {"VideoLongerThanPrevious", (element + R"(1/videoTransitionDuration", "value": 400}])"),
       videoPrevious, "at element 1 (item 2, clip CAM-B-0032)"},
      {"AudioLongerThanPrevious", (element + R"(1/audioTransitionDuration", "value": 400}])"),
       audioPrevious, "at element 1 (item 2, clip CAM-B-0032)"},
      {"VideoLongerThanCurrent",
       (element +
        R"(3/transitionType", "value": 13}, {"op": "replace", "path": )"
        R"("/playlist/audioVideoTrack/elements/3/videoTransitionDuration", "value": 600}])"),
       videoCurrent, "at element 3 (item 4, clip CAM-A-0031)"},
      {"AudioLongerThanCurrent",
       (element +
        R"(2/audioTransitionType", "value": 7}, {"op": "add", "path": )"
        R"("/playlist/audioVideoTrack/elements/2/audioTransitionDuration", "value": 1000}])"),
       audioCurrent, "at element 2 (item 3, clip CAM-SSM-001)"},
      // Only the reverse-angle asset keeps recorded ranges, so it is the one that fails.
      {"BadAssetInTheMap",
       R"([{"op": "replace", "path": "/playlist/rate/numerator", "value": 0},
           {"op": "replace", "path": "/assets/0/timeBounds", "value": []},
           {"op": "replace", "path": "/assets/2/timeBounds", "value": []},
           {"op": "replace", "path": "/assets/3/timeBounds", "value": []}])",
       "TimeBoundaryToFields: the rate needs a positive numerator and denominator",
       "in asset " + TimelineConvert::AssetKeyOfClip("CAM-B-0032").Text() + " (clip CAM-B-0032)"},
      {"AuxAssetMissing", R"([{"op": "remove", "path": "/assets/3"}])",
       "MediaAsset for aux-track not found", "in the aux track (clip COMMENT-01)"},
  };
  const auto highlight = nlohmann::json::parse(ReadFile(SourcePath("examples/highlight.json")));
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string input = WorkPath(std::string(row.name) + ".json");
    tool_testing::WriteFile(input, highlight.patch(nlohmann::json::parse(row.patch)).dump());
    const auto run = RunTool("convert '" + input + "'");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.err, row.message + "\ntimeline-convert: " + input + ": " + row.place + "\n");
  }
}

TEST(Diagnostics, ErrorsAsJsonHoldTheFieldsThatApply) {
  const std::string refused = SourcePath("examples/refused.json");
  EXPECT_EQ(RunTool("convert --errors json '" + refused + "'").err,
            R"({"status":"refused","message":")" + VideoOrAudio("video", true, "13") +
                R"(","file":")" + refused +
                R"(","element":1,"item":2,"clip":"CAM-B-0032"})"
                "\n");
  const std::string input = WorkPath("broken.json");
  tool_testing::WriteFile(input, R"({"playlist": {}, "assets": []})");
  EXPECT_EQ(
      RunTool("assets --errors json - < '" + input + "'").err,
      R"({"status":"malformed","message":"missing field \"serverId\"","file":"standard input",)"
      R"("pointer":"/playlist"})"
      "\n");
  tool_testing::WriteFile(input, R"({"playlist" 1})");
  EXPECT_EQ(
      RunTool("convert --errors json - < '" + input + "'").err,
      R"({"status":"malformed","message":"syntax error while parsing object separator - )"
      R"(unexpected number literal; expected ':'","file":"standard input","line":1,"column":13})"
      "\n");
  EXPECT_EQ(RunTool("check --errors json /nonexistent.json").err,
            R"({"status":"io","message":"cannot read: No such file or directory",)"
            R"("file":"/nonexistent.json"})"
            "\n");
}

TEST(Diagnostics, CheckFindsEachKindInItsOwnDocument) {
  const std::pair<const char*, int> documents[] = {
      {"check-negative-speed", 3},    {"check-ignored-speed", 3},
      {"check-negative-duration", 3}, {"check-overlap", 3},
      {"check-no-transition", 3},     {"check-aux-no-marked-range", 3},
      {"check-aux-open-end", 3},      {"check-outside-material", 3},
      {"check-unused-asset", 3},      {"check-missing-asset", 2},
      {"check-zero-length-part", 3},  {"check-transition-negative-length", 3}};
  for (const auto& [name, status] : documents) {
    SCOPED_TRACE(name);
    const std::string path = SourcePath(std::string("tests/tools/documents/") + name);
    const auto run = RunTool("check - < '" + path + ".json'");
    EXPECT_EQ(run.exitStatus, status) << run.err;
    EXPECT_EQ(run.out, ReadFile(path + ".expected.txt"));
  }
  const auto highlight = RunTool("check '" + SourcePath("examples/highlight.json") + "'");
  EXPECT_EQ(highlight.exitStatus, 0);
  EXPECT_EQ(highlight.out, SourcePath("examples/highlight.json") + ": no findings\n");
  const auto json = RunTool("check --errors json - < '" +
                            SourcePath("tests/tools/documents/check-unused-asset.json") + "'");
  EXPECT_EQ(json.out, R"({"status":"finding","kind":"unused-asset","message":"no element and not )"
                      R"(the aux track uses this asset","file":"standard input","asset":")" +
                          TimelineConvert::AssetKeyOfClip("SPARE-1").Text() +
                          R"(","clip":"SPARE-1","severity":"warning","pointer":"/assets/1",)"
                          R"("numbers":{}})"
                          "\n");
}

}  // namespace
