// The direct reader: what it accepts it reads exactly as the careful reader
// does (escapes, surrogate pairs, numbers at their limits, keys in any
// order), and everything it is unsure of it gives up, so that the careful
// reader words the fault.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "ToolTestSupport.h"
#include "document/DocumentStream.h"

namespace {

using TimelineConvert::Json;
using TimelineConvert::StreamedRecords;

// Every field of an element and of an asset's name, so that two readings can
// be compared as text.
std::string RecordsText(const StreamedRecords& records) {
  std::string text;
  for (const auto& e : records.elements) {
    for (const long long value :
         {static_cast<long long>(e.number), static_cast<long long>(e.serverId.Value()),
          static_cast<long long>(e.playlistNumber), static_cast<long long>(e.itemNumber),
          static_cast<long long>(e.inBoundaryKind), static_cast<long long>(e.outBoundaryKind),
          static_cast<long long>(e.speed.numerator), static_cast<long long>(e.speed.denominator),
          static_cast<long long>(e.transitionType),
          static_cast<long long>(e.videoTransitionDuration),
          static_cast<long long>(e.audioTransitionType),
          static_cast<long long>(e.audioTransitionDuration), static_cast<long long>(e.videoInValue),
          static_cast<long long>(e.videoOutValue), static_cast<long long>(e.audioInValue),
          static_cast<long long>(e.audioOutValue)}) {
      text += std::to_string(value) + " ";
    }
    text += std::string("[") + e.umId.GetUmId() + "]\n";
  }
  for (const auto& asset : records.assetOrder) {
    text += asset.key.Text() + " [" + asset.umId + "]\n";
  }
  return text;
}

// The direct reader accepts `text` and reads it as the careful reader does.
void ExpectReadAsCarefully(const std::string& text, const std::string& name) {
  StreamedRecords direct;
  Json directRest;
  ASSERT_TRUE(TimelineConvert::ReadDirectly(text, direct, directRest)) << name;
  StreamedRecords careful;
  const Json carefulRest = TimelineConvert::ParseStreaming(text, careful);
  EXPECT_EQ(directRest.dump(), carefulRest.dump()) << name;
  EXPECT_EQ(RecordsText(direct), RecordsText(careful)) << name;
  EXPECT_FALSE(careful.elementFault || careful.assetFault) << name;
}

// A document of one element, whose fields a row replaces by text.
std::string Document(const std::string& element, const std::string& asset = R"({"umId": "C1",
      "timeBounds": [{"start": 0, "end": "open"}]})") {
  return R"({"$schema": "s", "playlist": {"serverId": 1, "number": 2, "umId": "PL",
    "durationInFields": 10, "rate": {"numerator": 50, "denominator": 1},
    "audioVideoTrack": {"elements": [)" +
         element + R"(]}}, "assets": [)" + asset + "]}";
}

std::string Element(const std::string& before, const std::string& number = "1",
                    const std::string& umId = R"("C1")") {
  return "{" + before + R"("number": )" + number +
         R"(, "serverId": 1, "playlistNumber": 2, "itemNumber": 1, "umId": )" + umId +
         R"(, "inBoundaryKind": 1, "outBoundaryKind": "otherBoundary", "videoInValue": 0,
            "videoOutValue": 10, "audioInValue": 0, "audioOutValue": 10})";
}

TEST(DirectReader, ReadsWhatItAcceptsAsTheCarefulReaderDoes) {
  const struct {
    const char* name;
    std::string text;
  } rows[] = {
      {"the plain document", Document(Element(""))},
      {"keys in another order, white space everywhere",
       Document(R"( { "audioOutValue" : 10 , "videoInValue":0, "umId":"C1", "speed":
         {"denominator": 3, "numerator": -1}, "outBoundaryKind": 3, "inBoundaryKind": "sameLimit",
         "itemNumber": 1, "playlistNumber": 2, "serverId": 1, "number": 1, "audioInValue": 0,
         "videoOutValue": 10, "transitionType": 2, "audioTransitionDuration": 8 } )")},
      {"escapes and a surrogate pair in a clip id",
       Document(Element("", "1", R"("\u0041\/\"\\\t\ud83d\ude00")"))},
      {"UTF-8 in a clip id and the top",
       Document(Element(R"("speed": {"numerator": 1,
         "denominator": 2}, )",
                        "1", "\"\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80\""))},
      {"numbers at the limits of their fields",
       Document(R"({"number": 4294967295, "serverId": 0, "playlistNumber": -2147483648,
         "itemNumber": 2147483647, "umId": "", "inBoundaryKind": -0, "outBoundaryKind": 0,
         "videoInValue": -9223372036854775808, "videoOutValue": 9223372036854775807,
         "audioInValue": -1, "audioOutValue": 0})")},
      {"no elements, an asset given by identifier, any values at the top",
       R"({"playlist": {"audioVideoTrack": {"elements": []}}, "assets": [{"id": "k",
         "timeBounds": []}], "extra": {"deep": [[[{}]]], "n": null, "t": true, "f": false}})"},
  };
  for (const auto& row : rows) {
    ExpectReadAsCarefully(row.text, row.name);
  }
}

TEST(DirectReader, ReadsTheShippedAndTestDocumentsAsTheCarefulReaderDoes) {
  std::vector<std::filesystem::path> paths = {tool_testing::SourcePath("examples/highlight.json")};
  for (const auto& entry :
       std::filesystem::directory_iterator(tool_testing::SourcePath("tests/tools/documents"))) {
    if (entry.path().extension() == ".json") {
      paths.push_back(entry.path());
    }
  }
  ASSERT_GT(paths.size(), 10U);
  for (const auto& path : paths) {
    ExpectReadAsCarefully(tool_testing::ReadFile(path.string()), path.filename().string());
  }
}

// Nesting is bounded by memory only: no recursion that a deep text could
// overflow.
TEST(DirectReader, ReadsDeepNestingWithoutRecursion) {
  const std::size_t depth = 200000;
  const std::string text = R"({"playlist": {}, "assets": [], "extra": )" + std::string(depth, '[') +
                           std::string(depth, ']') + "}";
  StreamedRecords direct;
  Json rest;
  ASSERT_TRUE(TimelineConvert::ReadDirectly(text, direct, rest));
  const Json* inner = &rest["extra"];
  std::size_t levels = 0;
  while (inner->is_array() && !inner->empty()) {
    inner = &inner->front();
    ++levels;
  }
  EXPECT_EQ(levels, depth - 1);
}

TEST(DirectReader, GivesUpOnAnythingItIsUnsureOf) {
  const struct {
    const char* name;
    std::string text;
  } rows[] = {
      {"an unsigned field one past its limit", Document(Element("", "4294967296"))},
      {"an unsigned field below zero", Document(Element("", "-1"))},
      {"a 64-bit field below its limit",
       Document(Element(R"("videoInValue": -9223372036854775809, )"))},
      {"more than 64 bits", Document(Element("", "18446744073709551616"))},
      {"a fraction", Document(Element("", "1.0"))},
      {"an exponent", Document(Element("", "1e2"))},
      {"a leading zero", Document(Element("", "01"))},
      {"a lone high surrogate", Document(Element("", "1", R"("\ud83d")"))},
      {"a lone low surrogate", Document(Element("", "1", R"("\ude00x")"))},
      {"an overlong UTF-8 form", Document(Element("", "1", "\"\xC0\xAF\""))},
      {"a surrogate in UTF-8", Document(Element("", "1", "\"\xED\xA0\x80\""))},
      {"past U+10FFFF", Document(Element("", "1", "\"\xF4\x90\x80\x80\""))},
      {"a control character in a string", Document(Element("", "1", "\"a\x01\""))},
      {"a clip id too long", Document(Element("", "1", R"("ABCDEFGHIJKL")"))},
      {"a NUL in a clip id", Document(Element("", "1", R"("A\u0000")"))},
      {"a key twice in an element", Document(Element(R"("number": 1, )"))},
      {"a key twice at the top", R"({"assets": [], "playlist": {}, "assets": []})"},
      {"an unknown field of an element", Document(Element(R"("Number": 1, )"))},
      {"an escaped field name", Document(Element(R"("\u0073peed": {}, )"))},
      {"a missing field", Document(R"({"number": 1})")},
      {"a speed without its denominator", Document(Element(R"("speed": {"numerator": 1}, )"))},
      {"an unknown boundary kind", Document(Element(R"("inBoundaryKind": "fromStart", )"))},
      {"a faulty asset", Document(Element(""), R"({"umId": "C1"})")},
      {"trailing text", Document(Element("")) + " x"},
      {"a byte order mark", "\xEF\xBB\xBF" + Document(Element(""))},
      {"broken JSON", Document(Element("")).substr(0, 200)},
  };
  for (const auto& row : rows) {
    StreamedRecords direct;
    Json directRest;
    EXPECT_FALSE(TimelineConvert::ReadDirectly(row.text, direct, directRest)) << row.name;
  }
}

}  // namespace
