// The outputs agree: for one document per kind of finding, check, the SVG
// picture, the viewer's page data and both exports name the same findings at
// the same places, every problem the picture flags is a finding at the same
// element and side (and every finding of a kind it flags is drawn), and the
// OpenTimelineIO export refuses exactly when a finding blocks it.
#include <gtest/gtest.h>

#include <algorithm>
#include <nlohmann/json.hpp>
#include <random>
#include <regex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "ToolTestSupport.h"
#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "document/PlaylistDocument.h"
#include "picture/TimelineView.h"

namespace {

using tool_testing::ReadFile;
using tool_testing::RunTool;
using tool_testing::SourcePath;
using tool_testing::WorkPath;
using tool_testing::WriteFile;
using Json = nlohmann::json;

// A finding as every output can name it: its kind and its element (-1 when it
// is not at an element).
using Named = std::pair<std::string, long long>;

std::vector<Named> Sorted(std::vector<Named> named) {
  std::sort(named.begin(), named.end());
  return named;
}

long long ElementOf(const Json& object) {
  return object.contains("element") ? object["element"].get<long long>() : -1;
}

// A problem at one part: the picture's name of its flag, the element (-1 the
// aux item, -2 the refused element) and the side (0 picture, 1 sound).
using Flagged = std::tuple<std::string, long long, int>;

// The problem flags of one finding of check, as the picture should draw them.
void AddFlagged(const Json& line, std::vector<Flagged>& flagged) {
  const std::string kind = line.value("kind", "");
  const long long element = line.contains("track") ? -1 : ElementOf(line);
  const std::string message = line.value("message", "");
  const int side = message.rfind("its sound", 0) == 0 ? 1 : 0;
  if (line["status"] == "refused") {
    // Drawn at the element that fails, and explained at the value to change:
    // the places of a refusal are tested on their own.
    if (line.contains("element")) {
      flagged.insert(flagged.end(), {{"refused", -2, 0}, {"refused", -2, 1}});
    }
  } else if (kind == "overlap" || kind == "zero-length-part") {
    flagged.emplace_back(kind == "overlap" ? "overlap" : "zero", element, side);
  } else if (kind == "negative-duration") {
    for (const int negativeSide : {0, 1}) {
      if (line["numbers"][negativeSide == 0 ? "picture" : "sound"].get<long long>() < 0) {
        flagged.emplace_back("negative", element, negativeSide);
      }
    }
  } else if (kind == "empty-aux-item") {
    flagged.emplace_back("auxZero", -1, 1);
  }
}

// What the SVG and the page data draw: the marks of the picture, made once for both.
std::vector<Flagged> DrawnFlags(const std::string& path) {
  namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
  const auto document = TimelineConvert::ReadPlaylistDocument(tool_testing::ReadFile(path));
  const auto outcome =
      TimelineConvert::ConvertDocument(document, Conversion::TimelineConverter::FromTrackItems);
  const auto picture = TimelineConvert::MakePicture(
      document, outcome, TimelineConvert::FindFindings(document, outcome));
  std::vector<Flagged> flagged;
  for (const auto& row : picture.view.rows) {
    for (const auto& mark : row.marks) {
      const auto& item = picture.view.items[mark.item];
      long long element = item.element ? static_cast<long long>(*item.element) : -3;
      if (mark.kind == TimelineConvert::MarkKind::Refused) {
        element = -2;
      } else if (item.aux) {
        element = -1;
      }
      for (const auto& named : TimelineConvert::kNamedFlags) {
        if (named.flag != TimelineConvert::kSpeedChanged && (mark.flags & named.flag) != 0) {
          flagged.emplace_back(named.name, element, row.sound ? 1 : 0);
        }
      }
    }
  }
  std::sort(flagged.begin(), flagged.end());
  return flagged;
}

// check --errors json: one object per finding on standard output, the refusal
// on standard error.
std::vector<Named> FromCheck(const std::string& input, std::string& firstBlockingOtio,
                             std::vector<Flagged>& flagged) {
  const auto run = RunTool("check --errors json " + input);
  std::vector<Named> named;
  for (const auto* stream : {&run.out, &run.err}) {
    std::size_t start = 0;
    for (auto end = stream->find('\n'); end != std::string::npos;
         start = end + 1, end = stream->find('\n', start)) {
      const Json line = Json::parse(stream->substr(start, end - start));
      const bool refused = line["status"] == "refused";
      AddFlagged(line, flagged);
      named.emplace_back(refused ? "refused" : line["kind"].get<std::string>(),
                         refused ? -1 : ElementOf(line));
      if (!refused && line["severity"] == "blocks-otio" && firstBlockingOtio.empty()) {
        firstBlockingOtio = line["message"].get<std::string>();
      }
    }
  }
  return named;
}

std::vector<Named> FromPageData(const std::string& input) {
  const std::string page = RunTool("render --html -o - " + input).out;
  const std::string open = "id=\"timeline-data\">";
  const auto start = page.find(open) + open.size();
  const Json data = Json::parse(page.substr(start, page.find("</script>", start) - start));
  std::vector<Named> named;
  for (const auto& finding : data["findings"]) {
    // A refusal is drawn at the element that fails, and explained at the item
    // to change: the places of a refusal are tested on their own.
    const bool refused = finding[1] == "refusal";
    named.emplace_back(refused ? "refused" : finding[0].get<std::string>(),
                       refused ? -1 : finding[2].get<long long>());
  }
  return named;
}

// The SVG's header: a line per finding, "SEVERITY KIND [at element N (...)]: ...",
// and "Refused: ..." with the place on the line after it.
std::vector<Named> FromSvg(const std::string& input) {
  const std::string svg = RunTool("render -o - " + input).out;
  const std::regex line(
      R"(>(refusal|blocks-otio|blocks-edl|warning|note) ([a-z-]+) (at element (\d+) )?)");
  std::vector<Named> named;
  for (auto match = std::sregex_iterator(svg.begin(), svg.end(), line);
       match != std::sregex_iterator(); ++match) {
    named.emplace_back((*match)[2], (*match)[4].matched ? std::stoll((*match)[4]) : -1);
  }
  if (svg.find(">Refused: ") != std::string::npos) {
    named.emplace_back("refused", -1);
  }
  return named;
}

TEST(Agreement, EveryOutputNamesTheSameFindingsAtTheSamePlaces) {
  const char* const documents[] = {
      "tests/tools/documents/check-negative-speed.json",
      "tests/tools/documents/check-ignored-speed.json",
      "tests/tools/documents/check-negative-duration.json",
      "tests/tools/documents/check-overlap.json",
      "tests/tools/documents/check-no-transition.json",
      "tests/tools/documents/check-aux-no-marked-range.json",
      "tests/tools/documents/check-aux-open-end.json",
      "tests/tools/documents/check-outside-material.json",
      "tests/tools/documents/check-unused-asset.json",
      "tests/tools/documents/check-missing-asset.json",
      "tests/tools/documents/check-zero-length-part.json",
      "tests/tools/documents/check-transition-negative-length.json",
      "tests/tools/documents/check-speed-out-of-range.json",
      "tests/tools/documents/check-plays-nothing.json",
      "tests/tools/documents/check-negative-transition-duration.json",
      "tests/tools/documents/check-transition-outside-material.json",
      "tests/tools/documents/check-recorded-ranges.json",
      "tests/tools/documents/check-negative-playlist-duration.json",
      "tests/tools/documents/check-negative-parts.json",
      "tests/tools/documents/check-transition-into-empty-part.json",
      "tests/tools/documents/check-transition-overlaps-past-item.json",
      "examples/refused.json",
      "examples/highlight.json",
  };
  for (const char* document : documents) {
    SCOPED_TRACE(document);
    const std::string input = "'" + SourcePath(document) + "'";
    std::string blockingOtio;
    std::vector<Flagged> reported;
    const auto checked = Sorted(FromCheck(input, blockingOtio, reported));
    std::sort(reported.begin(), reported.end());
    EXPECT_EQ(DrawnFlags(SourcePath(document)), reported);
    EXPECT_EQ(Sorted(FromPageData(input)), checked);
    EXPECT_EQ(Sorted(FromSvg(input)), checked);
    const bool refused = std::count_if(checked.begin(), checked.end(), [](const Named& named) {
                           return named.first == "refused";
                         }) != 0;
    const auto engine = RunTool("convert -o /dev/null " + input);
    EXPECT_EQ(engine.exitStatus, refused ? 2 : 0) << engine.err;
    const auto otio = RunTool("convert --format otio -o /dev/null " + input);
    EXPECT_EQ(otio.exitStatus, refused || !blockingOtio.empty() ? 2 : 0) << otio.err;
    if (!refused && !blockingOtio.empty()) {
      EXPECT_EQ(otio.err.substr(0, otio.err.find('\n')),
                "Cannot export to OpenTimelineIO: " + blockingOtio);
    }
  }
}

// Playlists of random IN and OUT points, speeds and transitions over the
// example's clips: the OpenTimelineIO export refuses exactly when check names
// something that blocks it, and with the first such finding's words. The
// writer keeps checks of its own as a last resort; this is what finds a case
// that reaches one without a finding.
TEST(Agreement, RandomPlaylistsExportExactlyWhenNoFindingBlocksIt) {
  const Json example = Json::parse(ReadFile(SourcePath("examples/highlight.json")));
  std::mt19937 random(20261125);
  const auto pick = [&random](std::initializer_list<long long> values) {
    return *(values.begin() +
             std::uniform_int_distribution<std::size_t>(0, values.size() - 1)(random));
  };
  const auto chance = [&random](double p) { return std::bernoulli_distribution(p)(random); };
  const char* const clips[] = {"CAM-A-0031", "CAM-B-0032", "CAM-SSM-001"};
  const char* const limits[] = {"sameLimit", "oppositeLimit", "absolute", "otherBoundary"};
  const std::string path = WorkPath("random-playlist.json");
  int blocked = 0;
  for (int round = 0; round < 300; ++round) {
    Json document = example;
    Json elements = Json::array();
    const long long count = pick({1, 2, 3, 4, 5, 6});
    for (long long index = 0; index < count; ++index) {
      const long long in = pick({0, 10, 40, 100, 200});
      const long long out = in + pick({-40, -2, 0, 1, 2, 20, 100, 300});
      Json element = {{"number", index + 1},
                      {"serverId", 7},
                      {"playlistNumber", 12},
                      {"itemNumber", index + 1},
                      {"umId", clips[pick({0, 1, 2})]},
                      {"inBoundaryKind", limits[pick({0, 0, 1, 2, 3})]},
                      {"outBoundaryKind", limits[pick({1, 1, 0, 2, 3})]},
                      {"videoInValue", in},
                      {"videoOutValue", out},
                      {"audioInValue", in + pick({0, 0, 0, -4, 4})},
                      {"audioOutValue", out + pick({0, 0, 0, -4, 4})}};
      if (chance(0.3)) {
        element["speed"] = {{"numerator", pick({1, 2, -1, 0, 3})},
                            {"denominator", pick({1, 2, 0, 3})}};
      }
      if (chance(0.6)) {
        element["transitionType"] = pick({0, 1, 2, 3, 4, 5, 6, 7});
        element["videoTransitionDuration"] = pick({0, 2, 10, 20, 100, 400, -10});
      }
      if (chance(0.6)) {
        element["audioTransitionType"] = pick({0, 1, 2, 3, 4, 5, 6, 7});
        element["audioTransitionDuration"] = pick({0, 2, 10, 16, 100, 400, -10});
      }
      elements.push_back(std::move(element));
    }
    document["playlist"]["audioVideoTrack"]["elements"] = std::move(elements);
    WriteFile(path, document.dump());
    SCOPED_TRACE(document.dump());
    std::string blockingOtio;
    std::vector<Flagged> reported;
    const auto checked = FromCheck("random-playlist.json", blockingOtio, reported);
    const bool refused = std::any_of(checked.begin(), checked.end(),
                                     [](const Named& named) { return named.first == "refused"; });
    const auto otio = RunTool("convert --format otio -o /dev/null random-playlist.json");
    if (!refused) {
      blocked += blockingOtio.empty() ? 0 : 1;
      EXPECT_EQ(otio.exitStatus, blockingOtio.empty() ? 0 : 2) << otio.err;
      if (!blockingOtio.empty()) {
        EXPECT_EQ(otio.err.substr(0, otio.err.find('\n')),
                  "Cannot export to OpenTimelineIO: " + blockingOtio);
      }
    }
  }
  // The draw reaches the blocking cases, not only playlists that export.
  EXPECT_GT(blocked, 30);
}

}  // namespace
