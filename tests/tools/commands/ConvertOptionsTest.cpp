// The pieces of convert's interchange options that no single tool run shows
// whole: which format a file name asks for, the whitespace filter behind
// --compact, and the report's grouping of lines by element.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "ToolTestSupport.h"
#include "commands/Commands.h"
#include "export/ExportReport.h"

namespace {

using tool_testing::ReadFile;
using tool_testing::SourcePath;

TEST(ConvertOptions, FormatFollowsTheExtensionOnly) {
  const std::pair<const char*, const char*> cases[] = {
      {"cut.otio", "otio"}, {"CUT.EDL", "edl"},   {"dir/page.htm", "html"},
      {"p.svg", "svg"},     {"t.json", "engine"}, {"t.json.bak", ""},
      {"dir.otio/", ""},    {".otio", ""},        {"-", ""},
      {"notes.txt", ""},
  };
  for (const auto& [path, format] : cases) {
    EXPECT_EQ(TimelineConvert::FormatOfFileName(path), format) << path;
  }
}

TEST(ConvertOptions, CompactDropsWhitespaceBetweenTokensNotInStrings) {
  std::ostringstream out;
  TimelineConvert::CompactJsonBuffer compact(out);
  std::ostream in(&compact);
  in << "{\n  \"a b\": [ 1, 2 ],\n  \"q\": \"say \\\"hi there\\\" \\\\\",\n";
  in.put(' ');
  in << "  \"t\":\t\"x\\\\\"\n}\n";
  in.flush();
  EXPECT_EQ(out.str(), R"({"a b":[1,2],"q":"say \"hi there\" \\","t":"x\\"})");
  EXPECT_NO_THROW(nlohmann::json::parse(out.str()));
}

TEST(ConvertOptions, ReportGroupsLinesByElementThenAuxThenTimeline) {
  const auto document =
      TimelineConvert::ReadPlaylistDocument(ReadFile(SourcePath("examples/highlight.json")));
  using Line = TimelineConvert::ExportReportLine;
  TimelineConvert::ExportReport report{"edl", "h.json", {}};
  report.lines = {{Line::Kind::Approximated, 2, false, "speed noted"},
                  {Line::Kind::Refused, std::nullopt, false, "rate refused"},
                  {Line::Kind::Approximated, std::nullopt, true, "aux merged"},
                  {Line::Kind::Approximated, 0, false, "first"},
                  {Line::Kind::Refused, 2, false, "overlap"}};
  EXPECT_EQ(TimelineConvert::ExportReportText(report, document),
            "The edl export of h.json, element by element\n"
            "at element 0 (item 1, clip CAM-A-0031): approximated: first\n"
            "at element 1 (item 2, clip CAM-B-0032): carried exactly\n"
            "at element 2 (item 3, clip CAM-SSM-001): approximated: speed noted\n"
            "at element 2 (item 3, clip CAM-SSM-001): refused: overlap\n"
            "at element 3 (item 4, clip CAM-A-0031): carried exactly\n"
            "in the aux track (clip COMMENT-01): approximated: aux merged\n"
            "the timeline: refused: rate refused\n"
            "3 approximated\n");
  const auto json = nlohmann::json::parse(TimelineConvert::ExportReportJson(report, document));
  std::string carried;
  for (const auto& element : json["elements"]) {
    carried += element["carried"].get<std::string>() + " ";
  }
  EXPECT_EQ(carried, "approximated exact refused exact approximated ");
  EXPECT_EQ(json["timeline"][0]["text"], "rate refused");
  EXPECT_EQ(report.Summary(),
            "timeline-convert: h.json: the edl export approximated 3 things (--report FILE lists "
            "them by element)");
}

}  // namespace
