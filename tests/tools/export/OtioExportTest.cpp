// OpenTimelineIO export: each mapping rule and refusal on a small hand-worked
// track, and the shipped example against the golden .otio and the engine's
// places, and the JSON text writer under it. The schemas are checked by the
// OtioSchema test (docs/otio.schema.json).
#include <gtest/gtest.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "ToolTestSupport.h"
#include "document/PlaylistDocument.h"
#include "export/JsonText.h"
#include "export/OtioExport.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Converter = Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;
using Json = nlohmann::ordered_json;
using tool_testing::Fx;
using tool_testing::Media;
using tool_testing::ReadFile;
using tool_testing::SourcePath;

// "track: child, ..." per track, children placed as the format places them:
// a clip or gap as name@end media-start+length (xscalar), a transition as
// name in/out.
std::string Layout(const Json& document) {
  const auto frames = [](const Json& time) {
    std::ostringstream text;
    text << time["value"].get<double>();
    return text.str();
  };
  std::string layout;
  for (const auto& track : document["tracks"]["children"]) {
    layout += (layout.empty() ? "" : "; ") + track["name"].get<std::string>() + ":";
    std::int64_t end = 0;
    for (const auto& child : track["children"]) {
      const std::string name = child["OTIO_SCHEMA"] == "Gap.1" ? "gap" : child["name"];
      if (child.contains("in_offset")) {
        layout += " " + name + " " + frames(child["in_offset"]) + "/" + frames(child["out_offset"]);
      } else {
        const auto& range = child["source_range"];
        end += range["duration"]["value"].get<std::int64_t>();
        layout += " " + name + "@" + std::to_string(end) + " " + frames(range["start_time"]) + "+" +
                  frames(range["duration"]);
        for (const auto& effect : child["effects"]) {
          layout += " x" + effect["time_scalar"].dump();
        }
      }
      layout += ",";
    }
    layout.pop_back();
  }
  return layout;
}

TEST(OtioExport, MapsEachRuleOrRefusesNamingTheItem) {
  const std::string refused = "Cannot export to OpenTimelineIO: ";
  const std::string cutA = "track 1 picture: a@100 0+100, ";
  const auto a = Media("a", 0, 100, 0, 100), overlapping = Fx("t", 2, 10, 10);
  const std::tuple<const char*, std::vector<std::shared_ptr<Engine::TrackItem>>, std::string>
      cases[] = {
          {"Gap", {Media("a", 10, 40, 5, 40)}, "track 1 picture: gap@10 0+10, a@50 5+40"},
          {"Overlap",
           {a, overlapping, Media("b", 90, 50, 20, 50)},
           cutA + "dissolve 10/0, b@140 30+40"},
          {"NoOverlap",
           {a, Fx("t", 1, 6, 12), Media("b", 100, 50, 20, 50)},
           cutA + "transition across the cut (kind 1) 6/6, b@150 20+50"},
          {"HalfSpeed",
           {a, overlapping, Media("b", 90, 50, 20, 25)},
           cutA + "dissolve 10/0, b@140 25+40 x0.5"},
          {"Aux", {Media("x", 0, 500, 100, 500, true)}, "track 1 sound: x@500 100+500"},
          {"Negative",
           {Media("a", 0, -5, 0, -5)},
           refused + "item a has a negative picture length (-5 frames)."},
          {"Crossing",
           {a, Media("b", 90, 50, 0, 50)},
           refused + "item b overlaps the picture before it: it starts at frame 90, the previous "
                     "picture ends at frame 100."},
          {"TooShort",
           {a, overlapping, Media("b", 90, 5, 0, 5)},
           refused + "item b is shorter on the picture side (5 frames) than the 10 frames its "
                     "transition t overlaps."}};
  for (const auto& [name, items, expected] : cases) {
    SCOPED_TRACE(name);
    Engine::Timeline timeline;
    timeline.tracks.push_back({"T1", 1, items});
    try {
      EXPECT_EQ(Layout(Json::parse(TimelineConvert::TimelineToOtioText(timeline, {}))), expected);
    } catch (const TimelineConvert::OtioExportRefusal& refusal) {
      EXPECT_EQ(refusal.what(), expected);
    }
  }
}

TEST(OtioExport, ShippedExampleKeepsTheEnginesClipsTransitionsAndEnds) {
  // Ends and transitions as in tests/tools/golden/highlight.timeline.json.
  const auto document =
      TimelineConvert::ReadPlaylistDocument(ReadFile(SourcePath("examples/highlight.json")));
  const auto otio = Json::parse(TimelineConvert::TimelineToOtioText(
      Converter::ToTimeline(document.playlist, Converter::FromTrackItems, document.assets),
      TimelineConvert::OtioOptionsFromDocument(document, Converter::FromTrackItems)));
  EXPECT_EQ(
      tool_testing::RunTool("convert --format otio '" + SourcePath("examples/highlight.json") + "'")
          .out,
      ReadFile(SourcePath("tests/tools/golden/highlight.otio")));
  EXPECT_EQ(Layout(otio),
            "track 1 picture: CAM-A-0031@150 50+150, dissolve 10/0, CAM-B-0032@240 30+90, "
            "CAM-SSM-001@440 0+200 x0.5, transition across the cut (kind 1) 6/6, "
            "CAM-A-0031@540 250+100, gap@550 0+10; "
            "track 1 sound: CAM-A-0031@150 50+150, transition across the cut (kind 1) 8/0, "
            "CAM-B-0032@250 20+100, CAM-SSM-001@450 0+200 x0.5, CAM-A-0031@550 250+100; "
            "track 2 sound: COMMENT-01@500 100+500, gap@550 0+50");
}

// The export refuses from the finding that blocks it, with that finding's place.
TEST(OtioExport, ToolRefusesFromTheBlockingFindingWritingNothing) {
  auto changed = nlohmann::json::parse(ReadFile(SourcePath("examples/highlight.json")));
  changed["playlist"]["audioVideoTrack"]["elements"][0]["videoOutValue"] = 50;
  const std::string input = tool_testing::WorkPath("negative.json"),
                    output = tool_testing::WorkPath("negative.otio");
  tool_testing::WriteFile(input, changed.dump());
  std::filesystem::remove(output);
  const auto run =
      tool_testing::RunTool("convert --format otio '" + input + "' -o '" + output + "'");
  EXPECT_EQ(run.exitStatus, 2);
  EXPECT_EQ(run.err,
            "Cannot export to OpenTimelineIO: the media item lasts -25 frames (picture) and 150 "
            "frames (sound) on the timeline\ntimeline-convert: " +
                input + ": at element 0 (item 1, clip CAM-A-0031)\n");
  EXPECT_FALSE(std::filesystem::exists(output));
}

}  // namespace

namespace {

// The rules the format's own tools need, each on a hand-worked track: the
// clip's field at `pointer` (or what was approximated) after the export.
TEST(OtioExport, WholeFramesExactSpeedsPaddedTracksAndReferences) {
  using Items = std::vector<std::shared_ptr<Engine::TrackItem>>;
  const auto a = Media("a", 0, 100, 0, 100);
  struct Case {
    const char* name;
    Items items;
    std::int64_t duration;
    std::string mediaUrl;
    std::string pointer;
    std::string expected;
  };
  // b at half speed behind a 3-frame dissolve starts 1.5 media frames later.
  const Items halfSpeed = {a, Fx("t", 2, 3, 3), Media("b", 97, 50, 20, 25)};
  // c plays at 3/2 by its element; the engine rounded its media length.
  const Items threeHalves = {a, Media("c", 100, 100, 0, 151)};
  const Items zeroLength = {a, Fx("t", 2, 0, 0), Media("b", 100, 50, 0, 50)};
  const Case cases[] = {
      {"RoundedToNearest", halfSpeed, 0, "", "/2", "b@147 22+47 x0.5"},
      {"ExactKeptInMetadata", halfSpeed, 0, "", "/2/metadata/timeline_engine/sourceStart",
       "\"21 1/2\""},
      {"ApproximationNoted", halfSpeed, 0, "", "notes",
       "b: picture source start 21 1/2 rounded to frame 22"},
      {"SpeedFromElement", threeHalves, 0, "", "/1/effects/0/time_scalar", "1.5"},
      {"SpeedFractionKept", threeHalves, 0, "", "/1/metadata/timeline_engine/speed", "\"3/2\""},
      {"ZeroLengthTransitionLeftOut", zeroLength, 0, "", "layout",
       "track 1 picture: CAM@100 0+100, b@150 0+50"},
      {"ItsFieldsOnTheNextClip", zeroLength, 0, "", "/1/metadata/timeline_engine/transition/item",
       "\"t\""},
      {"PaddedToTheEngineDuration",
       {a},
       300,
       "",
       "layout",
       "track 1 picture: CAM@100 0+100, gap@300 0+200"},
      {"LongerTrackSetsTheLength", {a}, 50, "", "trackLength", "100"},
      {"MissingReferenceNamedByClip",
       {a},
       0,
       "",
       "/0/media_references/DEFAULT_MEDIA/name",
       "\"CAM\""},
      {"ExternalReference",
       {a},
       0,
       "file:///m/{clip}-{asset}.mxf",
       "/0/media_references/DEFAULT_MEDIA/target_url",
       "\"file:///m/CAM-a.mxf\""},
      {"WarpBeyondTheMedia",
       {Media("a", 0, 50, 0, 100)},
       0,
       "",
       "notes",
       "a: the time-warped clip consumes media frames 0.000000 to 100.000000, outside the "
       "available range 0 to 60"},
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.name);
    Engine::Timeline timeline;
    timeline.duration = test.duration;
    timeline.tracks.push_back({"T1", 1, test.items});
    timeline.mediaInfos = {{"a", 0, 60, "V+M"}};
    TimelineConvert::OtioExportOptions options;
    options.assetNames = {{"a", "CAM"}};
    options.mediaUrl = test.mediaUrl;
    if (test.items == threeHalves) {
      options.elements = {{1, 1, 1, 1, 0}, {2, 2, 3, 2, 1}};  // elements by place: a, c
    }
    std::vector<TimelineConvert::OtioNote> notes;
    const Json otio = Json::parse(TimelineConvert::TimelineToOtioText(timeline, options, &notes));
    std::string actual;
    if (test.pointer == "layout") {
      actual = Layout(otio);
    } else if (test.pointer == "notes") {
      for (const auto& note : notes) {
        actual += note.itemId + ": " + note.text;
      }
    } else if (test.pointer == "trackLength") {
      actual = otio["metadata"]["timeline_engine"]["trackLength"].dump();
    } else if (test.pointer == "/2") {
      const std::string layout = Layout(otio);
      actual = layout.substr(layout.rfind(", ") + 2);
    } else {
      const auto& children = otio["tracks"]["children"][0]["children"];
      actual = children.at(Json::json_pointer(test.pointer)).dump();
    }
    EXPECT_EQ(actual, test.expected);
  }
}

}  // namespace

namespace {

// Strings reach the document as valid JSON whatever bytes an identifier holds.
TEST(JsonText, EscapesControlsAndReplacesWhatIsNotUtf8) {
  const std::string replacement = "\xEF\xBF\xBD";
  const std::pair<std::string, std::string> cases[] = {
      {"a \"b\" \\", "\"a \\\"b\\\" \\\\\""},
      {"\x01\n\t", "\"\\u0001\\n\\t\""},
      {"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xAC",
       "\"caf\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x8E\xAC\""},
      {"a\x80z", "\"a" + replacement + "z\""},                // a lone continuation byte
      {"\xC0\xAF", "\"" + replacement + replacement + "\""},  // an overlong form
      {"\xED\xA0\x80", "\"" + replacement + replacement + replacement + "\""},  // a surrogate
      {"\xE2\x82", "\"" + replacement + replacement + "\""},                    // cut short
  };
  for (const auto& test : cases) {
    SCOPED_TRACE(test.first);
    std::string out;
    TimelineConvert::AppendJsonString(out, test.first);
    EXPECT_EQ(out, test.second);
  }
}

TEST(JsonText, IndentsByFourOrWritesCompact) {
  const auto write = [](bool compact) {
    std::string out;
    TimelineConvert::JsonText json(out, compact);
    json.BeginObject().Key("empty").BeginArray().EndArray().Key("rate").Real(50);
    json.Key("ntsc").Real(30000.0 / 1001).Key("list").BeginArray().Integer(-1).Null().EndArray();
    json.EndObject();
    return out;
  };
  EXPECT_EQ(write(false),
            "{\n    \"empty\": [],\n    \"rate\": 50.0,\n    \"ntsc\": 29.97002997002997,\n"
            "    \"list\": [\n        -1,\n        null\n    ]\n}");
  EXPECT_EQ(write(true),
            "{\"empty\":[],\"rate\":50.0,\"ntsc\":29.97002997002997,\"list\":[-1,null]}");
}

}  // namespace
