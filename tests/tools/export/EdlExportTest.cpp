// CMX 3600 export: timecode labels, each mapping rule and refusal on a small
// hand-worked track at 25 frames a second, and the shipped example against
// its golden lists and the engine's places. Set TEC_REGENERATE_GOLDEN=1 to
// rewrite the golden lists after a deliberate change.
#include <gtest/gtest.h>

#include <cstdlib>
#include <set>
#include <sstream>

#include "../ToolTestSupport.h"
#include "document/PlaylistDocument.h"
#include "export/EdlExport.h"
#include "export/EdlInput.h"
#include "export/EdlText.h"
#include "export/OtioExport.h"
#include "export/Timecode.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Converter = Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;
using Items = std::vector<std::shared_ptr<Engine::TrackItem>>;
using TimelineConvert::EdlSide;
using tool_testing::Fx;
using tool_testing::Media;
using tool_testing::ReadFile;
using tool_testing::SourcePath;

// The events of the list without its two header lines, then each problem
// ("! ") and approximation ("~ ") with its place.
std::string Listing(const TimelineConvert::EdlResult& result) {
  std::string listing = result.text.substr(
      std::min(result.text.size(), result.text.find('\n', result.text.find('\n') + 1) + 1));
  for (const auto& problem : result.problems) {
    listing += "! " + problem.place.Text() + ": " + problem.Text() + "\n";
  }
  for (const auto& note : result.approximations) {
    listing += "~ " + note.place.Text() + ": " + note.text + "\n";
  }
  return listing;
}

// Elements in the order of the track's media items, as the conversion lays
// them out: clip a is element 1 (item 11), clip b element 2 (item 12) at
// speed 1/2; the first item of another clip and those after it have none.
TimelineConvert::EdlExportInput SmallInput(const Items& items = {}) {
  TimelineConvert::EdlExportInput input;
  input.rate = {25, 1};
  input.title = "T";
  input.clipNames = {{"a", "CAM-A"}, {"b", "CAM-B"}};
  for (const auto& item : items) {
    const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get());
    if (media == nullptr) {
      continue;
    }
    const std::string& clip = media->mediaId.Text();
    if (clip != "a" && clip != "b") {
      break;
    }
    input.elements.push_back(clip == "a" ? TimelineConvert::EdlElement{1, 11, 1, 1}
                                         : TimelineConvert::EdlElement{2, 12, 1, 2});
    input.elements.back().index = input.elements.size() - 1;
  }
  return input;
}

TEST(EdlTimecode, LabelsFramesInEachCounting) {
  using TimelineConvert::SmpteTimecode;
  using TimelineConvert::TimecodeBase;
  const TimecodeBase df30{30, true}, df60{60, true}, nd25{25, false};
  const std::tuple<const char*, std::int64_t, TimecodeBase, std::optional<std::string>> cases[] = {
      {"FirstFrame", 0, df30, "00:00:00;00"},
      {"LastOfMinute0", 1799, df30, "00:00:59;29"},
      {"SkipsTwoAtMinute1", 1800, df30, "00:01:00;02"},
      {"KeepsTenthMinute", 17982, df30, "00:10:00;00"},
      {"OneHour", 107892, df30, "01:00:00;00"},
      {"SkipsFourAt60", 3600, df60, "00:01:00;04"},
      {"NonDrop", 90000 + 24, nd25, "01:00:00:24"},
      {"Last", 24 * 3600 * 25 - 1, nd25, "23:59:59:24"},
      {"Beyond24Hours", 24 * 3600 * 25, nd25, std::nullopt},
      {"Negative", -1, nd25, std::nullopt}};
  for (const auto& [name, frame, base, expected] : cases) {
    SCOPED_TRACE(name);
    EXPECT_EQ(SmpteTimecode(frame, base), expected);
  }
  EXPECT_EQ(SmpteTimecode(1800, df30, true), "00:01:00:02");
  const std::tuple<std::int64_t, std::int64_t, std::int64_t, bool> rates[] = {
      {30000, 1001, 30, true},
      {60000, 1001, 60, true},
      {24000, 1001, 24, false},
      {50, 1, 50, false}};
  for (const auto& [numerator, denominator, fps, drop] : rates) {
    const auto base = TimelineConvert::TimecodeBaseOf({numerator, denominator});
    ASSERT_TRUE(base);
    EXPECT_EQ(base->framesPerSecond, fps);
    EXPECT_EQ(base->dropFrame, drop);
  }
  EXPECT_FALSE(TimelineConvert::TimecodeBaseOf({0, 1}));
  EXPECT_FALSE(TimelineConvert::TimecodeBaseOf({INT64_MAX, 1}));
  EXPECT_EQ(TimelineConvert::TimecodeBaseOf({1, 1000})->framesPerSecond, 1);
}

TEST(EdlExport, WritesEachRuleOrNamesTheProblem) {
  const std::string cutA =
      "001  CAMA     V     C        00:00:02:00 00:00:06:00 00:00:00:00 00:00:04:00\n"
      "* FROM CLIP NAME:  CAM-A\n* ELEMENT 1 ITEM 11\n";
  const std::string aBeforeDissolve =
      "001  CAMA     V     C        00:00:02:00 00:00:05:15 00:00:00:00 00:00:03:15\n"
      "* FROM CLIP NAME:  CAM-A\n* ELEMENT 1 ITEM 11\n";
  const auto a = Media("a", 0, 100, 50, 100);
  const auto dissolve = Fx("t", 2, 10, 10);
  const std::tuple<const char*, Items, std::string> cases[] = {
      {"CutWithGap",
       {a, Media("b", 120, 50, 20, 25)},
       cutA + "002  CAMB     V     C        00:00:00:20 00:00:01:20 00:00:04:20 00:00:06:20\n"
              "M2   CAMB           012.5                00:00:00:20\n"
              "* FROM CLIP NAME:  CAM-B\n* ELEMENT 2 ITEM 12 SPEED 1/2\n"},
      // The dissolve starts at the incoming item's engine IN; the outgoing
      // event ends there and its source runs on under the dissolve.
      {"Dissolve",
       {a, dissolve, Media("b", 90, 50, 20, 25)},
       aBeforeDissolve +
           "002  CAMA     V     C        00:00:05:15 00:00:05:15 00:00:03:15 00:00:03:15\n"
           "002  CAMB     V     D    010 00:00:00:20 00:00:01:20 00:00:03:15 00:00:05:15\n"
           "M2   CAMB           012.5                00:00:00:20\n"
           "* FROM CLIP NAME:  CAM-A\n* TO CLIP NAME:  CAM-B\n* ELEMENT 2 ITEM 12 SPEED 1/2\n"},
      // Speed 1/2 over 40 frames uses 20 media frames: source OUT is IN + 20,
      // where the common adapter writes IN + 40 / 0.5 = IN + 80.
      {"SlowMotionSourceOut",
       {Media("b", 0, 40, 10, 20)},
       "001  CAMB     V     C        00:00:00:10 00:00:01:05 00:00:00:00 00:00:01:15\n"
       "M2   CAMB           012.5                00:00:00:10\n"
       "* FROM CLIP NAME:  CAM-B\n* ELEMENT 2 ITEM 12 SPEED 1/2\n"},
      {"SpeedRoundedAndHalfFrame",
       {Media("c", 0, 30, 0, 10), dissolve, Media("a", 25, 100, 50, 100)},
       "001  c        V     C        00:00:00:00 00:00:00:08 00:00:00:00 00:00:01:00\n"
       "M2   c              008.3                00:00:00:00\n"
       "* FROM CLIP NAME:  c\n* ENGINE ITEM c SPEED 1/3\n"
       "002  c        V     C        00:00:00:08 00:00:00:08 00:00:01:00 00:00:01:00\n"
       "002  CAMA     V     D    005 00:00:02:00 00:00:06:00 00:00:01:00 00:00:05:00\n"
       "M2   c              008.3                00:00:00:00\n"
       "* FROM CLIP NAME:  c\n* TO CLIP NAME:  CAM-A\n* ENGINE ITEM a\n"
       "~ item c (clip c): speed 1/3 written as 008.3 frames a second.\n"
       "~ item t (clip CAM-A): transition of 10 frames written as a dissolve of the 5 frames "
       "the items overlap.\n"
       "~ item c (clip c): source OUT at the dissolve 8 1/3 media frames after its IN, written "
       "as 8.\n"},
      {"KindOneAndZeroLengthAsCuts",
       {a, Fx("w", 1, 6, 12), Media("b", 100, 50, 20, 25), Fx("z", 2, 0, 0),
        Media("a", 150, 10, 0, 10)},
       cutA + "002  CAMB     V     C        00:00:00:20 00:00:01:20 00:00:04:00 00:00:06:00\n"
              "M2   CAMB           012.5                00:00:00:20\n"
              "* FROM CLIP NAME:  CAM-B\n* ELEMENT 2 ITEM 12 SPEED 1/2\n"
              "003  CAMA     V     C        00:00:00:00 00:00:00:10 00:00:06:00 00:00:06:10\n"
              "* FROM CLIP NAME:  CAM-A\n* ELEMENT 1 ITEM 11\n"
              "~ element 2 (item 12, clip CAM-B): transition of kind 1 (12 frames, 6 of them "
              "before the cut) "
              "written as a cut: a list's dissolve needs the items to overlap.\n"
              "~ element 1 (item 11, clip CAM-A): transition of no length left out.\n"},
      // Each dissolve ends the event before it; one may start where the
      // previous dissolve ends.
      {"FromBlackAndChained",
       {Fx("t", 2, 10, 10), a, Fx("u", 2, 10, 10), Media("b", 90, 50, 20, 25), Fx("v", 2, 10, 10),
        Media("a", 100, 40, 0, 40), Fx("w", 2, 5, 5)},
       "001  BL       V     C        00:00:00:00 00:00:00:00 00:00:00:00 00:00:00:00\n"
       "001  CAMA     V     D    010 00:00:02:00 00:00:05:15 00:00:00:00 00:00:03:15\n"
       "* TO CLIP NAME:  CAM-A\n* ELEMENT 1 ITEM 11\n"
       "002  CAMA     V     C        00:00:05:15 00:00:05:15 00:00:03:15 00:00:03:15\n"
       "002  CAMB     V     D    010 00:00:00:20 00:00:01:00 00:00:03:15 00:00:04:00\n"
       "M2   CAMB           012.5                00:00:00:20\n"
       "* FROM CLIP NAME:  CAM-A\n* TO CLIP NAME:  CAM-B\n* ELEMENT 2 ITEM 12 SPEED 1/2\n"
       "003  CAMB     V     C        00:00:01:00 00:00:01:00 00:00:04:00 00:00:04:00\n"
       "003  CAMA     V     D    040 00:00:00:00 00:00:01:15 00:00:04:00 00:00:05:15\n"
       "M2   CAMB           012.5                00:00:00:20\n"
       "* FROM CLIP NAME:  CAM-B\n* TO CLIP NAME:  CAM-A\n* ELEMENT 1 ITEM 11\n"
       "~ element 1 (item 11, clip CAM-A): no item before it on this side: written as a "
       "dissolve from black of 10 frames.\n"
       "~ element 1 (item 11, clip CAM-A): transition of 10 frames written as a dissolve of the 40 "
       "frames "
       "the items overlap.\n"
       "~ item w: transition at the end of the track left out.\n"},
      {"Negative",
       {Media("a", 0, -5, 0, -5)},
       "! element 1 (item 11, clip CAM-A): has a negative picture length (-5 frames on the "
       "timeline, -5 frames of media).\n"},
      {"OverlapWithoutDissolve",
       {a, Media("b", 90, 50, 0, 25)},
       "! element 2 (item 12, clip CAM-B): overlaps the item before it by 10 frames without a "
       "dissolve.\n"},
      {"ThreeAtOnce",
       {a, dissolve, Media("b", 90, 50, 0, 25), Fx("u", 2, 10, 10), Media("a", 95, 50, 0, 50)},
       "! element 1 (item 11, clip CAM-A): overlaps the item before it by 45 frames, more than "
       "one item at a time.\n"
       "~ element 1 (item 11, clip CAM-A): transition of 10 frames written as a dissolve of "
       "the 45 frames the items overlap.\n"},
      {"Beyond64Bits",
       {Media("a", INT64_MAX, 10, 0, 10)},
       "! element 1 (item 11, clip CAM-A): has frame numbers beyond the 64-bit range.\n"},
      {"Beyond24Hours",
       {Media("a", 24 * 3600 * 25 - 5, 10, 0, 10)},
       "! element 1 (item 11, clip CAM-A): reaches frame 2160005, beyond the 2160000 frames of "
       "24 hours that timecode labels.\n"},
      {"EarlyProblemInALongTrack",
       {Media("a", 0, 10, -3, 10), Media("b", 10, 10, 0, 10), Media("a", 20, 10, 0, 10),
        Media("b", 30, 10, 0, 10)},
       "! element 1 (item 11, clip CAM-A): starts its media at frame -3, before its recorded "
       "material.\n"},
      {"BeforeRecordedMaterial",
       {Media("a", 0, 10, -3, 10)},
       "! element 1 (item 11, clip CAM-A): starts its media at frame -3, before its recorded "
       "material.\n"}};
  for (const auto& [name, items, expected] : cases) {
    SCOPED_TRACE(name);
    Engine::Timeline timeline;
    timeline.tracks.push_back({"T1", 1, items});
    const auto full = TimelineToEdl(timeline, SmallInput(items), EdlSide::Picture);
    EXPECT_EQ(Listing(full), expected);
    // A check finds the same problems, in any order, and writes nothing else.
    const auto checked = TimelineToEdl(timeline, SmallInput(items), EdlSide::Picture, true);
    const auto texts = [](const TimelineConvert::EdlResult& result) {
      std::multiset<std::string> problems;
      for (const auto& problem : result.problems) {
        problems.insert(problem.place.Text() + ": " + problem.Text());
      }
      return problems;
    };
    EXPECT_EQ(texts(checked), texts(full));
    EXPECT_EQ(checked.text + std::to_string(checked.approximations.size()), "0");
  }
}

TEST(EdlExport, HeaderChannelsAndSides) {
  Engine::Timeline timeline;
  timeline.tracks.push_back({"T1", 1, {Media("b", 1800, 30, 0, 30, true)}});
  timeline.tracks.push_back({"T2", 1, {Media("a", 0, 10, 5, 10, true)}});
  timeline.mediaInfos = {{"a", 0, 100, "V+M+M+M"}, {"b", 0, 100, "V+M+M"}};
  auto input = SmallInput();
  input.rate = {30000, 1001};
  const auto sides = TimelineConvert::EdlSidesOf(timeline);
  EXPECT_EQ(sides, (std::vector<EdlSide>{EdlSide::Sound, EdlSide::Aux}));
  EXPECT_EQ(TimelineToEdl(timeline, input, EdlSide::Sound).text,
            "TITLE: T sound\nFCM: DROP FRAME\n"
            "001  CAMB     AA    C        00:00:00;00 00:00:01;00 00:01:00;02 00:01:01;02\n"
            "* FROM CLIP NAME:  CAM-B\n* ENGINE ITEM b\n");
  const auto aux = TimelineToEdl(timeline, input, EdlSide::Aux);
  EXPECT_EQ(aux.text,
            "TITLE: T aux sound\nFCM: DROP FRAME\n"
            "001  CAMA     AA    C        00:00:00;05 00:00:00;15 00:00:00;00 00:00:00;10\n"
            "* FROM CLIP NAME:  CAM-A\n* ENGINE ITEM a\n");
  EXPECT_EQ(Listing(aux).substr(Listing(aux).find('~')),
            "~ item a (clip CAM-A): 3 sound tracks of the clip merged into the list's two "
            "channels AA.\n");
  input.rate = {0, 1};
  EXPECT_EQ(Listing(TimelineToEdl(timeline, input, EdlSide::Aux)),
            "! the list: the rate 0/1 is not a frame rate timecode can count (more than 0 and "
            "at most 1000000 frames a second).\n");
}

TEST(EdlExport, ReelNames) {
  const std::pair<const char*, const char*> cases[] = {
      {"CAM-SSM-001", "CAMSSM00"}, {"take_12", "take_12"}, {"--", "AX"}, {"bl", "bl_"},
      {"Black", "Black_"},         {"Ba\xC3\xA9r", "Bar"}};
  for (const auto& [clip, reel] : cases) {
    EXPECT_EQ(TimelineConvert::EdlReelName(clip), reel) << clip;
  }
}

// Frames of "HH:MM:SS:FF" at a whole rate without drop frame.
std::int64_t FramesOf(const std::string& label, std::int64_t fps) {
  return ((std::stoll(label.substr(0, 2)) * 60 + std::stoll(label.substr(3, 2))) * 60 +
          std::stoll(label.substr(6, 2))) *
             fps +
         std::stoll(label.substr(9, 2));
}

TEST(EdlExport, ShippedExampleMatchesGoldenAndEnginePlaces) {
  const auto document =
      TimelineConvert::ReadPlaylistDocument(ReadFile(SourcePath("examples/highlight.json")));
  const auto timeline =
      Converter::ToTimeline(document.playlist, Converter::FromTrackItems, document.assets);
  const auto input = TimelineConvert::EdlInputFromDocument(document);
  std::string approximations;
  for (const EdlSide side : TimelineConvert::EdlSidesOf(timeline)) {
    const std::string sideName = TimelineConvert::EdlSideName(side);
    SCOPED_TRACE(sideName);
    const auto result = TimelineToEdl(timeline, input, side);
    const std::string golden = SourcePath("tests/tools/golden/highlight." + sideName + ".edl");
    if (std::getenv("TEC_REGENERATE_GOLDEN") != nullptr) {
      tool_testing::WriteFile(golden, result.text);
    }
    EXPECT_EQ(result.text, ReadFile(golden));
    EXPECT_TRUE(result.problems.empty());
    approximations +=
        sideName + "\n" +
        Listing(result).substr(result.text.size() -
                               result.text.find('\n', result.text.find('\n') + 1) - 1);
    // Each event's record IN is its item's engine IN; its record OUT is the
    // engine OUT, or the start of the dissolve into the next event, which
    // then lasts exactly until the engine OUT.
    const bool picture = side == EdlSide::Picture;
    const auto& items = timeline.tracks[side == EdlSide::Aux ? 1 : 0].items;
    std::vector<std::pair<std::int64_t, std::int64_t>> engine;
    for (const auto& item : items) {
      if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
        const auto in = picture ? media->timelineVideoIn : media->timelineAudioIn;
        const auto length = picture ? media->timelineVideoDuration : media->timelineAudioDuration;
        if (length != 0) {
          engine.emplace_back(in, in + length);
        }
      }
    }
    std::vector<std::tuple<std::int64_t, std::int64_t, std::int64_t>> written;  // in, out, dissolve
    std::istringstream lines(result.text);
    std::string line;
    while (std::getline(lines, line)) {
      if (line.size() < 76 || std::isdigit(static_cast<unsigned char>(line[0])) == 0) {
        continue;
      }
      const bool dissolveLine = line[20] == 'D';
      if (!dissolveLine && line.substr(29, 11) == line.substr(41, 11) && !written.empty() &&
          line.substr(53, 11) == line.substr(65, 11)) {
        continue;  // the outgoing source's line of a dissolve
      }
      written.emplace_back(FramesOf(line.substr(53, 11), 50), FramesOf(line.substr(65, 11), 50),
                           dissolveLine ? std::stoll(line.substr(25, 3)) : 0);
    }
    ASSERT_EQ(written.size(), engine.size());
    for (std::size_t index = 0; index < engine.size(); ++index) {
      const auto [in, out, dissolve] = written[index];
      const std::int64_t nextDissolve =
          index + 1 < written.size() ? std::get<2>(written[index + 1]) : 0;
      EXPECT_EQ(in, engine[index].first) << index;
      EXPECT_EQ(out + nextDissolve, engine[index].second) << index;
      if (dissolve > 0) {
        EXPECT_EQ(in + dissolve, engine[index - 1].second) << index;
      }
    }
  }
  EXPECT_EQ(approximations,
            "picture\n~ element 4 (item 4, clip CAM-A-0031): transition of kind 1 (12 frames, 6 "
            "of them before the cut) written as a cut: a list's dissolve needs the items to "
            "overlap.\nsound\n~ element 2 (item 2, clip CAM-B-0032): transition of kind 1 (8 "
            "frames, 8 of them before the cut) written as a cut: a list's dissolve needs the items "
            "to overlap.\naux\n");
}

// An item's element follows from its place in the track, not its identifier:
// of two elements of one number (so one identifier), the second keeps its own
// item number in the list and its own index in the OpenTimelineIO clip.
TEST(EdlExport, ElementsOfOneNumberKeepTheirOwnPlaces) {
  std::string text = ReadFile(SourcePath("examples/highlight.json"));
  const std::string third = "\"number\": 3, \"serverId\"";
  text.replace(text.find(third), third.size(), "\"number\": 2, \"serverId\"");
  const auto document = TimelineConvert::ReadPlaylistDocument(text);
  const auto timeline =
      Converter::ToTimeline(document.playlist, Converter::FromTrackItems, document.assets);
  const auto list =
      TimelineToEdl(timeline, TimelineConvert::EdlInputFromDocument(document), EdlSide::Picture);
  EXPECT_NE(list.text.find("* FROM CLIP NAME:  CAM-SSM-001\n* ELEMENT 2 ITEM 3 SPEED 1/2\n"),
            std::string::npos)
      << list.text;
  auto options = TimelineConvert::OtioOptionsFromDocument(document, Converter::FromTrackItems);
  options.compact = true;
  const std::string otio = TimelineConvert::TimelineToOtioText(timeline, options);
  EXPECT_NE(otio.find("\"element\":2,\"itemNumber\":3,\"index\":2,"), std::string::npos);
}

}  // namespace
