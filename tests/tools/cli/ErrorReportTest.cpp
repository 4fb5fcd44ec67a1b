// Where refusals come from, --errors json, and `check`: one row per kind of
// refusal (the shipped examples patched with a JSON Patch) and one document per
// kind of finding, each with its expected listing beside it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "ToolTestSupport.h"
#include "cli/EditDistance.h"
#include "document/AssetKeys.h"
#include "document/DocumentPlace.h"
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
  std::string explanation;
  std::string fix;  // the change the explanation suggests, after which it converts
};

std::string VideoOrAudio(const char* side, bool namesItem, const char* playlist = "12") {
  return std::string("The playlist PL") + playlist + " cannot be edited - " +
         (namesItem ? "contains track item (2)" : "it contains track items") + " with a shorter " +
         side + " duration than their transition duration.";
}

TEST(Diagnostics, EveryKindOfRefusalSaysWhatToChange) {
  const std::string element = R"([{"op": "add", "path": "/playlist/audioVideoTrack/elements/)";
  const std::string videoPrevious = VideoOrAudio("video", true);
  const std::string audioPrevious = VideoOrAudio("audio", true);
  const std::string videoCurrent = VideoOrAudio("video", false);
  const std::string audioCurrent = VideoOrAudio("audio", false);
  const std::string pointer = "/playlist/audioVideoTrack/elements/";
  const auto fix = [&pointer](const std::string& path, const std::string& value) {
    return R"([{"op": "replace", "path": ")" + pointer + path + R"(", "value": )" + value + "}]";
  };
  const RefusalRow rows[] = {
      {"MissingAsset", R"([{"op": "remove", "path": "/assets/2"}])",
       "MediaAsset for sequence track item not found",
       "at element 2 (item 3, clip CAM-SSM-001): the document has no asset for clip CAM-SSM-001 "
       "(asset key " +
           TimelineConvert::AssetKeyOfClip("CAM-SSM-001").Text() +
           "); add it to /assets or change " + pointer + "2/umId",
       fix("2/umId", R"("CAM-A-0031")")},
      {"AbsoluteIn", (element + R"(3/inBoundaryKind", "value": "absolute"}])"),
       "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine",
       "at element 3 (item 4, clip CAM-A-0031): inBoundaryKind (" + pointer +
           "3/inBoundaryKind) is absolute (0), which the engine does not take; use sameLimit, "
           "oppositeLimit or otherBoundary (1, 2 or 3)",
       fix("3/inBoundaryKind", R"("sameLimit")")},
      {"UnknownOut", (element + R"(1/outBoundaryKind", "value": 7}])"),
       "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine",
       "at element 1 (item 2, clip CAM-B-0032): outBoundaryKind (" + pointer +
           "1/outBoundaryKind) is 7, which is not a known boundary kind; use sameLimit, "
           "oppositeLimit or otherBoundary (1, 2 or 3)",
       fix("1/outBoundaryKind", "2")},
      {"VideoLongerThanPrevious", (element + R"(1/videoTransitionDuration", "value": 400}])"),
       videoPrevious,
       "the video transition of element 1 (item 2) needs 200 frames of item 1 (clip CAM-A-0031) "
       "before the cut, which lasts 150; videoTransitionDuration at most 300 fields",
       fix("1/videoTransitionDuration", "300")},
      {"AudioLongerThanPrevious", (element + R"(1/audioTransitionDuration", "value": 400}])"),
       audioPrevious,
       "the audio transition of element 1 (item 2) needs 200 frames of item 1 (clip CAM-A-0031) "
       "before the cut, which lasts 150; audioTransitionDuration at most 300 fields",
       fix("1/audioTransitionDuration", "300")},
      {"VideoLongerThanCurrent",
       (element +
        R"(3/transitionType", "value": 13}, {"op": "replace", "path": )"
        R"("/playlist/audioVideoTrack/elements/3/videoTransitionDuration", "value": 600}])"),
       videoCurrent,
       "the video transition of element 3 (item 4) needs 300 frames of item 4 (clip CAM-A-0031) "
       "after the cut, which lasts 100; videoTransitionDuration at most 200 fields",
       fix("3/videoTransitionDuration", "200")},
      {"AudioLongerThanCurrent",
       (element +
        R"(2/audioTransitionType", "value": 7}, {"op": "add", "path": )"
        R"("/playlist/audioVideoTrack/elements/2/audioTransitionDuration", "value": 1000}])"),
       audioCurrent,
       "the audio transition of element 2 (item 3) needs 500 frames of item 3 (clip CAM-SSM-001) "
       "after the cut, which lasts 200; audioTransitionDuration at most 400 fields",
       fix("2/audioTransitionDuration", "400")},
      // The assets convert first and fail on the rate, but the playlist's rate is what is wrong.
      {"PlaylistRate",
       R"([{"op": "replace", "path": "/playlist/rate/numerator", "value": 0},
           {"op": "replace", "path": "/assets/0/timeBounds", "value": []},
           {"op": "replace", "path": "/assets/2/timeBounds", "value": []},
           {"op": "replace", "path": "/assets/3/timeBounds", "value": []}])",
       "TimeBoundaryToFields: the rate needs a positive numerator and denominator",
       "at /playlist/rate: the playlist's rate 0/1 needs a positive numerator and denominator", ""},
      {"AuxAssetMissing", R"([{"op": "remove", "path": "/assets/3"}])",
       "MediaAsset for aux-track not found",
       "in the aux track (clip COMMENT-01): the document has no asset for clip COMMENT-01 (asset "
       "key " +
           TimelineConvert::AssetKeyOfClip("COMMENT-01").Text() +
           "); add it to /assets or change /playlist/auxTrackUmId",
       R"([{"op": "remove", "path": "/playlist/auxTrackUmId"}])"},
  };
  const auto highlight = nlohmann::json::parse(ReadFile(SourcePath("examples/highlight.json")));
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const std::string input = WorkPath(std::string(row.name) + ".json");
    tool_testing::WriteFile(input, highlight.patch(nlohmann::json::parse(row.patch)).dump());
    const auto run = RunTool("convert '" + input + "'");
    EXPECT_EQ(run.exitStatus, 2);
    EXPECT_EQ(run.err,
              row.message + "\ntimeline-convert: " + input + ": " + row.explanation + "\n");
    if (!row.fix.empty()) {
      const auto fixed = highlight.patch(nlohmann::json::parse(row.patch))
                             .patch(nlohmann::json::parse(row.fix))
                             .dump();
      tool_testing::WriteFile(input, fixed);
      EXPECT_EQ(RunTool("convert -o /dev/null '" + input + "'").err, "");
    }
  }
}

TEST(Diagnostics, ErrorsAsJsonHoldTheFieldsThatApply) {
  const std::string refused = SourcePath("examples/refused.json");
  EXPECT_EQ(RunTool("convert --errors json '" + refused + "'").err,
            R"({"status":"refused","message":")" + VideoOrAudio("video", true, "13") +
                R"(","file":")" + refused +
                R"(","kind":"transition-too-long-before-cut","element":0,"item":1,)"
                R"("clip":"CAM-A-0031","pointer":"/playlist/audioVideoTrack/elements/1/)"
                R"(videoTransitionDuration","explanation":"the video transition of element 1 )"
                R"((item 2) needs 200 frames of item 1 (clip CAM-A-0031) before the cut, which )"
                R"(lasts 150; videoTransitionDuration at most 300 fields","numbers":{"needed":200,)"
                R"("available":150,"transitionElement":1,"maxDurationFields":300}})"
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
  const std::pair<const char*, int> documents[] = {{"check-negative-speed", 3},
                                                   {"check-ignored-speed", 3},
                                                   {"check-negative-duration", 3},
                                                   {"check-overlap", 3},
                                                   {"check-no-transition", 3},
                                                   {"check-aux-no-marked-range", 3},
                                                   {"check-aux-open-end", 3},
                                                   {"check-outside-material", 3},
                                                   {"check-unused-asset", 3},
                                                   {"check-missing-asset", 2},
                                                   {"check-zero-length-part", 3},
                                                   {"check-transition-negative-length", 3},
                                                   {"check-speed-out-of-range", 3},
                                                   {"check-plays-nothing", 3},
                                                   {"check-negative-transition-duration", 3},
                                                   {"check-transition-outside-material", 3},
                                                   {"check-recorded-ranges", 3},
                                                   {"check-negative-playlist-duration", 3},
                                                   {"check-negative-parts", 3},
                                                   {"check-transition-into-empty-part", 3},
                                                   {"check-transition-overlaps-past-item", 3}};
  for (const auto& [name, status] : documents) {
    SCOPED_TRACE(name);
    const std::string path = SourcePath(std::string("tests/tools/documents/") + name);
    const auto run = RunTool("check - < '" + path + ".json'");
    EXPECT_EQ(run.exitStatus, status) << run.err;
    EXPECT_EQ(run.out, ReadFile(path + ".expected.txt"));
  }
  // The example's dissolve pulls the picture of every later item 10 frames early.
  const std::string highlightPath = SourcePath("examples/highlight.json");
  const auto highlight = RunTool("check - < '" + highlightPath + "'");
  EXPECT_EQ(highlight.exitStatus, 3);
  EXPECT_EQ(highlight.out, ReadFile(SourcePath("tests/tools/documents/highlight.expected.txt")));
  const auto accepted = RunTool("check --max-drift 10 '" + highlightPath + "'");
  EXPECT_EQ(accepted.exitStatus, 0);
  EXPECT_EQ(accepted.out, highlightPath + ": no findings\n");
  const auto json = RunTool("check --errors json - < '" +
                            SourcePath("tests/tools/documents/check-unused-asset.json") + "'");
  EXPECT_EQ(json.out, R"({"status":"finding","kind":"unused-asset","message":"no element and not )"
                      R"(the aux track uses this asset","file":"standard input","asset":")" +
                          TimelineConvert::AssetKeyOfClip("SPARE-1").Text() +
                          R"(","clip":"SPARE-1","severity":"warning","pointer":"/assets/1",)"
                          R"("numbers":{}})"
                          "\n");
}

TEST(Diagnostics, DocumentTextsAreEscapedAndNeverCut) {
  const std::pair<std::string, std::string> rows[] = {
      {std::string("a\0b", 3), "a\\u0000b"},
      {"tab\there\nline\\", "tab\\there\\nline\\\\"},
      {"caf\xc3\xa9 \xe2\x82\xac", "caf\xc3\xa9 \xe2\x82\xac"},  // valid UTF-8 stays
      {"bad \xff \xc3", "bad \\xff \\xc3"},
      {"overlong \xc0\xaf and surrogate \xed\xa0\x80",
       "overlong \\xc0\\xaf and surrogate \\xed\\xa0\\x80"},
  };
  for (const auto& [text, shown] : rows) {
    EXPECT_EQ(TimelineConvert::EscapedText(text), shown);
  }
  const std::string input = WorkPath("nul-field.json");
  tool_testing::WriteFile(
      input, R"({"playlist": {"serverId": 1, "number": 1, "umId": "P", "durationInFields": 0,
      "rate": {"numerator": 50, "denominator": 1}, "audioVideoTrack": {"elements": []}},
      "assets": [{"umId": "X", "timeBounds": [], "track\u0001\u00000Layouts": 1}]})");
  const auto run = RunTool("check - < '" + input + "'");
  EXPECT_EQ(run.exitStatus, 1);
  EXPECT_EQ(
      run.err,
      "timeline-convert: standard input: /assets/0/track\\u0001\\u00000Layouts: unknown field "
      "(expected one of: timeBounds, umId, id, assetKind, shortBounds, operatorVideoRate, "
      "resources)\n");
}

TEST(Diagnostics, DidYouMeanOnlyForASlip) {
  const std::vector<std::string> words = {"convert", "assets", "render", "check"};
  const std::pair<const char*, const char*> rows[] = {
      {"chek", "check"}, {"rendr", "render"}, {"covnert", "convert"},
      {"help", ""},      {"ch", ""},          {"xyzzy", ""}};
  for (const auto& [word, nearest] : rows) {
    EXPECT_EQ(TimelineConvert::NearestWord(word, words), nearest) << word;
  }
  EXPECT_EQ(RunTool("help").err,
            "timeline-convert: unknown command \"help\"; the commands are convert, assets, render "
            "and check\n");
  const std::string listsOptions = " (timeline-convert --help lists the commands and options)\n";
  const std::pair<const char*, std::string> parserRows[] = {
      {"check --max-drft 3 x.json", "unknown option --max-drft (did you mean --max-drift?)"},
      {"check --x x.json", "unknown option --x"},
      {"check a.json b.json", "one INPUT only: \"b.json\" is one too many"},
      {"check", "no INPUT: name a playlist document, or - for standard input"},
      {"check --max-drift", "--max-drift needs a value"},
      {"check --max-drift -3 x.json",
       "--max-drift: a count of frames, 0 or more, is expected, not \"-3\""}};
  for (const auto& [arguments, message] : parserRows) {
    const auto run = RunTool(arguments);
    EXPECT_EQ(run.exitStatus, 1) << arguments;
    EXPECT_EQ(run.err, "timeline-convert: " + message + listsOptions) << arguments;
  }
}

// Twelve unused assets: ten lines, then one that counts the other two.
TEST(Diagnostics, CheckPicksKindsAndCountsPastTen) {
  auto document =
      nlohmann::json::parse(ReadFile(SourcePath("tests/tools/documents/check-unused-asset.json")));
  for (int spare = 2; spare <= 12; ++spare) {
    document["assets"].push_back(
        {{"umId", "SPARE-" + std::to_string(spare)}, {"timeBounds", nlohmann::json::array()}});
  }
  const std::string input = WorkPath("many-unused.json");
  tool_testing::WriteFile(input, document.dump());
  const auto count = [](const std::string& text, const std::string& part) {
    std::size_t found = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
      ++found;
    }
    return found;
  };
  const auto capped = RunTool("check - < '" + input + "'");
  EXPECT_EQ(capped.exitStatus, 3);
  EXPECT_EQ(count(capped.out, "no element and not the aux track"), 10U);
  EXPECT_NE(capped.out.find("standard input: 2 more unused-asset findings (--all shows them)\n"
                            "standard input: 12 findings\n"),
            std::string::npos);
  EXPECT_EQ(count(RunTool("check --all - < '" + input + "'").out, "no element and not"), 12U);
  const auto ignored = RunTool("check --ignore unused-asset,av-drift - < '" + input + "'");
  EXPECT_EQ(ignored.exitStatus, 0);
  EXPECT_EQ(ignored.out, "standard input: no findings\n");
  // The exports' kinds are selected like any other.
  EXPECT_EQ(RunTool("check --only overlap,not-in-sound-edl - < '" + input + "'").out,
            "standard input: no findings\n");
  const auto unknown = RunTool("check --only unused-assets - < '" + input + "'");
  EXPECT_EQ(unknown.exitStatus, 1);
  EXPECT_NE(unknown.err.find("unknown finding kind \"unused-assets\" (did you mean "
                             "\"unused-asset\"?)"),
            std::string::npos);
}

}  // namespace
