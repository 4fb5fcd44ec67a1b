// The timeline picture: what the shipped example shows, well-formed XML for
// any content, and readability from three items to three hundred.
#include <gtest/gtest.h>

#include <deque>
#include <limits>
#include <optional>

#include "ToolTestSupport.h"
#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "document/PlaylistDocument.h"
#include "picture/HtmlPage.h"
#include "picture/PictureText.h"
#include "picture/TimelineSvg.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using TimelineConvert::PictureLabels;
using TimelineConvert::TimelineToSvg;

constexpr Kov::TimePoints::Rate kRate50{50, 1};

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) {
    ++count;
  }
  return count;
}

// The picture render writes of a document, with the outcome it drew.
std::string Render(const TimelineConvert::PlaylistDocument& document, bool html,
                   TimelineConvert::Outcome& outcome) {
  outcome =
      TimelineConvert::ConvertDocument(document, Conversion::TimelineConverter::FromTrackItems);
  const auto labels = TimelineConvert::LabelsFromOutcome(
      document, outcome, TimelineConvert::FindFindings(document, outcome));
  return html ? TimelineConvert::TimelineToHtml(outcome.timeline, document.playlist.rate, labels)
              : TimelineToSvg(outcome.timeline, document.playlist.rate, labels);
}

// The x of every rect of a class, in drawing order.
std::vector<double> RectXs(const std::string& svg, const std::string& cssClass) {
  const std::string opening = "<rect class=\"" + cssClass + "\" x=\"";
  std::vector<double> xs;
  for (auto at = svg.find(opening); at != std::string::npos; at = svg.find(opening, at + 1)) {
    xs.push_back(std::stod(svg.substr(at + opening.size(), 24)));
  }
  return xs;
}

Engine::Timeline TimelineOfLengths(const std::vector<std::int64_t>& lengths,
                                   PictureLabels& labels) {
  Engine::Track track{"track", 1, {}};
  std::int64_t position = 0;
  for (std::size_t index = 0; index < lengths.size(); ++index) {
    const std::string id = "item-" + std::to_string(index + 1);
    auto media = std::make_shared<Engine::MediaSummaryItem>(id);
    media->mediaId = "asset";
    media->timelineVideoIn = media->timelineAudioIn = position;
    media->timelineVideoDuration = media->timelineAudioDuration = lengths[index];
    media->mediaVideoDuration = media->mediaAudioDuration = lengths[index];
    position += lengths[index];
    track.items.push_back(media);
    // The labels point at the document's elements, which outlive them.
    static std::deque<Kov::Replivo::Data::Sequences::AudioVideoElement> elements;
    elements.emplace_back().itemNumber = static_cast<std::int32_t>(index + 1);
    labels.elements.push_back({&elements.back()});
  }
  labels.assets = {{"asset", "CLIP"}};
  return Engine::Timeline{"timeline", {}, position, {track}, {}};
}

TEST(TimelineSvg, ShippedExampleShowsLanesItemsTransitionsAndRuler) {
  const auto document = TimelineConvert::ReadPlaylistDocument(
      tool_testing::ReadFile(tool_testing::SourcePath("examples/highlight.json")));
  const auto timeline = Conversion::TimelineConverter::ToTimeline(
      document.playlist, Conversion::TimelineConverter::FromTrackItems, document.assets);
  const std::string svg = TimelineToSvg(timeline, document.playlist.rate,
                                        TimelineConvert::LabelsFromDocument(document));
  EXPECT_TRUE(tool_testing::IsWellFormedXml(svg));
  EXPECT_EQ(Count(svg, "<g class=\"track\">"), 2U);
  // The legend draws one more of each kind of box.
  // The legend draws one more of each kind of box; item 3 plays at half speed.
  EXPECT_EQ(Count(svg, "<rect class=\"picture\""), 3U + 1);
  EXPECT_EQ(Count(svg, "<rect class=\"picture speed\""), 1U + 1);
  EXPECT_EQ(Count(svg, "<rect class=\"sound\""), 4U + 1);
  EXPECT_EQ(Count(svg, "<rect class=\"vfx\""), 2U + 1);
  EXPECT_EQ(Count(svg, "<rect class=\"afx\""), 1U + 1);
  for (const char* text :
       {">#2 A2 CAM-B-0032<",
        ">#3 \xC3\x97"
        "0.5 A3 CAM-SSM-001<",
        ">aux A4 COMMENT-01<", ">00:00:02:00<", ">end 00:00:11:00<", "duration mode items"}) {
    EXPECT_NE(svg.find(text), std::string::npos) << text;
  }
  // The overlapping dissolve covers the start of item 2, which begins 10
  // frames before item 1 ends; the centred wipe straddles the cut at 440.
  const auto pictures = RectXs(svg, "picture");
  const auto dissolves = RectXs(svg, "vfx");
  EXPECT_DOUBLE_EQ(dissolves[0], pictures[1]);
  EXPECT_LT(dissolves[1], pictures[2]);
}

// Items are named by their place in the track, not by identifier: two
// elements of one number (so one identifier) each keep their own name.
TEST(TimelineSvg, ElementsOfOneNumberKeepTheirOwnNames) {
  std::string text = tool_testing::ReadFile(tool_testing::SourcePath("examples/highlight.json"));
  const std::string third = "\"number\": 3, \"serverId\"";
  text.replace(text.find(third), third.size(), "\"number\": 2, \"serverId\"");
  const auto document = TimelineConvert::ReadPlaylistDocument(text);
  TimelineConvert::Outcome outcome;
  const auto svg = Render(document, false, outcome);
  for (const char* expected : {">#2 A2 CAM-B-0032<",
                               "element 1 (number 2, clip CAM-B-0032)\nspeed \xC3\x97"
                               "1 (inherited)",
                               ">#3 \xC3\x97"
                               "0.5 A3 CAM-SSM-001<",
                               "element 2 (number 2, clip CAM-SSM-001)"}) {
    EXPECT_NE(svg.find(expected), std::string::npos) << expected;
  }
}

TEST(TimelineSvg, RefusedPlaylistIsDrawnUpToTheRefusedElement) {
  const auto document = TimelineConvert::ReadPlaylistDocument(
      tool_testing::ReadFile(tool_testing::SourcePath("examples/refused.json")));
  const std::string message =
      "The playlist PL13 cannot be edited - contains track item (2) with a shorter video "
      "duration than their transition duration.";
  for (const bool html : {false, true}) {
    TimelineConvert::Outcome outcome;
    const auto picture = Render(document, html, outcome);
    ASSERT_TRUE(outcome.refusal);
    EXPECT_EQ(outcome.refusal->message, message);
    if (html) {
      EXPECT_NE(picture.find("\"refusal\":{\"message\":\"" + message +
                             "\",\"place\":\"the video transition of element 1 (item 2) needs 200 "
                             "frames of item 1 (clip CAM-A-0031) before the cut, which lasts 150; "
                             "videoTransitionDuration at most 300 fields\",\"element\":1}"),
                std::string::npos);
    } else {
      EXPECT_TRUE(tool_testing::IsWellFormedXml(picture));
      EXPECT_NE(picture.find(">Refused: " + message + "<"), std::string::npos);
      EXPECT_NE(picture.find(">the video transition of element 1 (item 2) needs 200 frames of item "
                             "1 (clip CAM-A-0031) before the cut, which lasts 150; "
                             "videoTransitionDuration at most 300 fields; the elements before"),
                std::string::npos);
      EXPECT_NE(picture.find(">#2 refused<"), std::string::npos);
      EXPECT_EQ(Count(picture, "<rect class=\"picture\""), 1U + 1);
    }
  }
}

// The documents made to show one fault each, drawn from the document: the
// flags come from the findings, so only a whole run shows them.
TEST(TimelineSvg, DedicatedDocumentsShowTheirFault) {
  const std::pair<const char*, const char*> cases[] = {
      {"check-negative-speed", ">#1 \xC3\x97-1 -100f! A1 CAM-1<"},
      {"check-negative-duration", ">#1 -50f! A1 CAM-1<"},
      {"check-negative-duration", "class=\"picture problem negative\""},
      {"check-zero-length-part", ">#2 0f!<"},
      {"check-overlap", ">#3 overlap! A1 CAM-1<"},
      {"check-negative-parts", ">aux -100f! A2 VOICE-1<"},
      {"check-aux-open-end",
       ">aux item plays 0 frames: the asset&apos;s marked range (shortBounds) has an open end<"},
      {"check-aux-no-marked-range",
       ">aux item plays 0 frames: the asset has no marked range (shortBounds)<"},
  };
  for (const auto& [name, expected] : cases) {
    SCOPED_TRACE(name);
    const auto document = TimelineConvert::ReadPlaylistDocument(tool_testing::ReadFile(
        tool_testing::SourcePath(std::string("tests/tools/documents/") + name + ".json")));
    TimelineConvert::Outcome outcome;
    const auto svg = Render(document, false, outcome);
    EXPECT_FALSE(outcome.refusal);
    EXPECT_NE(svg.find(expected), std::string::npos);
  }
}

// Narrow items merge into bands, so the picture grows with its width.
TEST(TimelineSvg, LongTimelineStaysBounded) {
  PictureLabels labels;
  const auto svg = TimelineToSvg(TimelineOfLengths(std::vector<std::int64_t>(100000, 90), labels),
                                 kRate50, labels);
  EXPECT_LT(svg.size(), 3000000U);
  EXPECT_GT(Count(svg, "<rect class=\"band\""), 1000U);
  EXPECT_NE(svg.find("items merged, #1\xE2\x80\xA6#"), std::string::npos);
}

TEST(TimelineSvg, LabelsOnlyWhereTheyFit) {
  PictureLabels labels;
  const auto svg = TimelineToSvg(TimelineOfLengths({500, 1, 500}, labels), kRate50, labels);
  EXPECT_NE(svg.find(">#1 A1 CLIP<"), std::string::npos);
  EXPECT_EQ(svg.find(">#2"), std::string::npos);
  EXPECT_NE(svg.find(">#3 A1 CLIP<"), std::string::npos);
}

TEST(TimelineSvg, ThreeHundredItemsStayReadable) {
  std::vector<std::int64_t> lengths;
  for (int index = 0; index < 300; ++index) {
    lengths.push_back(40 + index % 7 * 30);
  }
  PictureLabels labels;
  const auto svg = TimelineToSvg(TimelineOfLengths(lengths, labels), kRate50, labels);
  EXPECT_TRUE(tool_testing::IsWellFormedXml(svg));
  EXPECT_EQ(Count(svg, "<rect class=\"picture\""), 300U + 1);
  // A typical item keeps room for its number; the picture scrolls, but within bounds.
  EXPECT_NE(svg.find(">#150"), std::string::npos);
  EXPECT_NE(svg.find(">#299"), std::string::npos);
  const double width = std::stod(svg.substr(svg.find("width=\"") + 7));
  EXPECT_GT(width, 10000);
  EXPECT_LT(width, 61000);
}

TEST(TimelineSvg, AnyTextAndAnyNumbersGiveWellFormedXml) {
  PictureLabels labels;
  auto timeline = TimelineOfLengths({100, 100}, labels);
  labels.title = "<\"quoted\" & 'odd'>\x01";
  labels.assets = {{"asset", "A&B<1>"}};
  auto& extreme = static_cast<Engine::MediaSummaryItem&>(*timeline.tracks[0].items[1]);
  extreme.timelineVideoIn = std::numeric_limits<std::int64_t>::max();
  extreme.timelineVideoDuration = std::numeric_limits<std::int64_t>::min();
  for (const auto rate : {kRate50, Kov::TimePoints::Rate{0, 0}}) {
    const auto svg = TimelineToSvg(timeline, rate, labels);
    EXPECT_TRUE(tool_testing::IsWellFormedXml(svg));
    EXPECT_EQ(svg.find("nan"), std::string::npos);
    EXPECT_EQ(svg.find("inf"), std::string::npos);
    EXPECT_NE(svg.find("A&amp;B&lt;1&gt;"), std::string::npos);
  }
  const auto page = TimelineConvert::TimelineToHtml(timeline, kRate50, labels);
  EXPECT_EQ(page.find("<\"quoted"), std::string::npos);
  EXPECT_NE(page.find("\\u003c\\\"quoted\\\" \\u0026 'odd'\\u003e\\u0001"), std::string::npos);
}

TEST(TimelineSvg, RulerCountsTimecodeAtTheSequenceRate) {
  PictureLabels labels;
  const auto timeline = TimelineOfLengths({600}, labels);
  // Drop-frame labels, as the viewer's: the 1,800th frame at 30000/1001 is
  // labelled a minute and two frames on, the first two of the minute skipped.
  EXPECT_NE(TimelineToSvg(timeline, {60000, 1001}, labels).find(">00:00:05;00<"),
            std::string::npos);
  EXPECT_EQ(TimelineConvert::Timecode(1800, {30000, 1001}), "00:01:00;02");
  EXPECT_EQ(TimelineConvert::Timecode(-1800, {30000, 1001}), "-00:01:00;02");
  EXPECT_NE(TimelineToSvg(timeline, kRate50, labels).find(">00:00:10:00<"), std::string::npos);
  EXPECT_NE(TimelineToSvg(timeline, {0, 1}, labels).find(">frame 0<"), std::string::npos);
}

}  // namespace
