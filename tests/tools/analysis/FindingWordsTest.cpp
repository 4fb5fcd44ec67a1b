// A finding is held as positions and values and put in words only when shown:
// these tests catch a wording that reads the wrong value or side. For every
// test document, the text and the JSON form of check name the same findings
// with the same messages, and every number a finding quotes stands in its
// message (a drift as the frames apart).
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "ToolTestSupport.h"

namespace {

using tool_testing::RunTool;
using tool_testing::SourcePath;
using Json = nlohmann::json;

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (auto end = text.find('\n'); end != std::string::npos;
       start = end + 1, end = text.find('\n', start)) {
    lines.push_back(text.substr(start, end - start));
  }
  return lines;
}

TEST(FindingWords, TextAndJsonSayTheSameAndQuoteTheirNumbers) {
  std::vector<std::string> documents = {"examples/highlight.json"};
  for (const auto& entry :
       std::filesystem::directory_iterator(SourcePath("tests/tools/documents"))) {
    if (entry.path().extension() == ".json") {
      documents.push_back(std::filesystem::relative(entry.path(), SourcePath("")).string());
    }
  }
  ASSERT_GT(documents.size(), 15U);
  for (const auto& document : documents) {
    SCOPED_TRACE(document);
    const std::string input = "'" + SourcePath(document) + "'";
    const auto json = Lines(RunTool("check --all --errors json " + input).out);
    const auto text = Lines(RunTool("check --all " + input).out);
    ASSERT_LE(json.size(), text.size());
    for (std::size_t index = 0; index < json.size(); ++index) {
      const Json finding = Json::parse(json[index]);
      const std::string message = finding["message"];
      EXPECT_EQ(
          text[index].substr(text[index].size() - std::min(text[index].size(), message.size())),
          message);
      for (const auto& [name, value] : finding["numbers"].items()) {
        const long long number = value.get<long long>();
        // An open end says so in words; a handle of the element itself is "its".
        if ((name == "marked" && number < 0) ||
            (name == "handleElement" && finding.value("element", -1LL) == number)) {
          continue;
        }
        const std::string quoted = std::to_string(name == "offset" ? std::llabs(number) : number);
        EXPECT_NE(message.find(quoted), std::string::npos) << name << " in " << message;
      }
    }
  }
}

}  // namespace
