// Reading the tool's input document: the shipped example becomes the records
// it describes, and every kind of fault names its place in the document.
#include <gtest/gtest.h>

#include <limits>
#include <nlohmann/json.hpp>

#include "ToolTestSupport.h"
#include "document/AssetKeys.h"
#include "document/DocumentStream.h"
#include "document/PlaylistDocument.h"

namespace {

using nlohmann::json;
using TimelineConvert::DocumentError;
using TimelineConvert::ReadPlaylistDocument;

// The exact message of the DocumentError that reading `text` raises.
std::string DocumentErrorOf(const std::string& text) {
  try {
    ReadPlaylistDocument(text);
  } catch (const DocumentError& error) {
    return error.what();
  }
  return "(no error)";
}

json SmallDocument() {
  return json::parse(R"({
    "playlist": {"serverId": 1, "number": 2, "umId": "PL", "durationInFields": 10,
                 "rate": {"numerator": 50, "denominator": 1},
                 "audioVideoTrack": {"elements": [
                   {"number": 1, "serverId": 1, "playlistNumber": 2, "itemNumber": 1, "umId": "C1",
                    "inBoundaryKind": 1, "outBoundaryKind": "otherBoundary",
                    "videoInValue": 0, "videoOutValue": 10, "audioInValue": 0, "audioOutValue": 10}]}},
    "assets": [{"umId": "C1", "timeBounds": [{"start": 0, "end": "open"}],
                "resources": [{"id": "r", "tracks": [{"id": "v", "kind": 2}],
                               "trackLayouts": [{"id": "l", "tracks": ["v"]}]}]}]})");
}

TEST(DocumentReading, ShippedExampleBecomesTheRecordsItDescribes) {
  const auto document = ReadPlaylistDocument(
      tool_testing::ReadFile(tool_testing::SourcePath("examples/highlight.json")));
  const auto& playlist = document.playlist;
  EXPECT_EQ(playlist.rate.numerator, 50);
  EXPECT_STREQ(playlist.auxTrackUmId.GetUmId(), "COMMENT-01");
  ASSERT_EQ(playlist.audioVideoTrack.elements.size(), 4U);
  const auto& dissolve = playlist.audioVideoTrack.elements[1];
  EXPECT_EQ(dissolve.inBoundaryKind, 1);
  EXPECT_EQ(dissolve.outBoundaryKind, 2);
  EXPECT_EQ(dissolve.transitionType, 2);
  EXPECT_EQ(dissolve.audioTransitionDuration, 16);
  EXPECT_TRUE(dissolve.speed == Kov::Replivo::Data::Channels::Speed::Empty());
  EXPECT_EQ(playlist.audioVideoTrack.elements[2].speed.denominator, 2);
  ASSERT_EQ(document.assetOrder.size(), 4U);
  EXPECT_EQ(document.assetOrder[0].key, TimelineConvert::AssetKeyOfClip("CAM-A-0031"));
  EXPECT_EQ(document.assets->at(document.assetOrder[0].key).timeBounds.size(), 2U);
}

TEST(DocumentReading, BoundariesAcceptTicksOpenEndsAndFlags) {
  json document = SmallDocument();
  document["assets"][0]["timeBounds"][1] = {{"start", {{"value", -5}, {"boundaryFlag", 255}}},
                                            {"end", {{"value", "open"}}}};
  document["assets"][0]["shortBounds"] = {{"start", 3}, {"end", "open"}};
  const auto read = ReadPlaylistDocument(document.dump());
  const auto& asset = read.assets->at(TimelineConvert::AssetKeyOfClip("C1"));
  const auto open = std::numeric_limits<std::int64_t>::max();
  // The boundaries are packed: their values are copied out, never bound by reference.
  const auto valueOf = [](const Kov::TimePoints::TimeBoundary& boundary) -> std::int64_t {
    return boundary.value;
  };
  ASSERT_EQ(asset.timeBounds.size(), 2U);
  EXPECT_EQ(valueOf(asset.timeBounds[0].start), -5);
  EXPECT_EQ(asset.timeBounds[0].start.boundaryFlag, 255);
  EXPECT_EQ(valueOf(asset.timeBounds[0].end), open);
  EXPECT_EQ(valueOf(asset.timeBounds[1].end), open);
  EXPECT_EQ(valueOf(asset.shortBounds.end), open);
}

TEST(DocumentReading, AnAssetGivenByIdentifierIsKeptUnderThatText) {
  json document = SmallDocument();
  document["assets"][0].erase("umId");
  document["assets"][0]["id"] = "my-own-key";
  const auto read = ReadPlaylistDocument(document.dump());
  EXPECT_EQ(read.assets->count(std::string("my-own-key")), 1U);
  EXPECT_EQ(read.assetOrder[0].umId, "");
}

struct Fault {
  const char* pointer;
  json value;  // null: the field is removed
  const char* message;
};

TEST(DocumentReading, EveryFaultNamesItsPlace) {
  const Fault faults[] = {
      {"/playlist/number", -1,
       "/playlist/number: -1 is out of range for an unsigned 32-bit number (0 to 4294967295)"},
      {"/playlist/audioVideoTrack/elements/0/itemNumber", 2147483648U,
       "/playlist/audioVideoTrack/elements/0/itemNumber: 2147483648 is out of range for a signed "
       "32-bit number (-2147483648 to 2147483647)"},
      {"/playlist/durationInFields", 9223372036854775808U,
       "/playlist/durationInFields: 9223372036854775808 is out of range for a signed 64-bit "
       "number (-9223372036854775808 to 9223372036854775807)"},
      {"/playlist/durationInFields", 1e30,
       "/playlist/durationInFields: 1e+30 is out of range for a signed 64-bit number "
       "(-9223372036854775808 to 9223372036854775807)"},
      {"/playlist/durationInFields", 1.5,
       "/playlist/durationInFields: expected an integer, found the number 1.5"},
      {"/playlist/rate/numerator", "50",
       "/playlist/rate/numerator: expected an integer, found a string"},
      {"/playlist/umId", "ABCDEFGHIJKL",
       "/playlist/umId: a clip id holds at most 11 characters, \"ABCDEFGHIJKL\" has 12"},
      {"/playlist/auxTrackUmId", std::string("A\0B", 3),
       "/playlist/auxTrackUmId: a clip id cannot hold a NUL character"},
      {"/playlist/rate", nullptr, "/playlist: missing field \"rate\""},
      {"/playlist/speed", 1,
       "/playlist/speed: unknown field (expected one of: serverId, number, umId, "
       "durationInFields, rate, audioVideoTrack, auxTrackUmId)"},
      {"/playlist/audioVideoTrack/elements", json::object(),
       "/playlist/audioVideoTrack/elements: expected an array, found an object"},
      {"/playlist/audioVideoTrack/elements/0/Speed", 1,
       "/playlist/audioVideoTrack/elements/0/Speed: unknown field (expected one of: number, "
       "serverId, playlistNumber, itemNumber, umId, inBoundaryKind, outBoundaryKind, "
       "videoInValue, videoOutValue, audioInValue, audioOutValue, speed, transitionType, "
       "videoTransitionDuration, audioTransitionType, audioTransitionDuration)"},
      {"/playlist/audioVideoTrack/elements/0/audioOutValue", nullptr,
       "/playlist/audioVideoTrack/elements/0: missing field \"audioOutValue\""},
      {"/playlist/audioVideoTrack/elements/0/speed",
       {{"numerator", 1}},
       "/playlist/audioVideoTrack/elements/0/speed: missing field \"denominator\""},
      {"/playlist/audioVideoTrack/elements/0/audioTransitionDuration", -2147483649LL,
       "/playlist/audioVideoTrack/elements/0/audioTransitionDuration: -2147483649 is out of range "
       "for a signed 32-bit number (-2147483648 to 2147483647)"},
      {"/playlist/audioVideoTrack/elements/0/inBoundaryKind", "fromStart",
       "/playlist/audioVideoTrack/elements/0/inBoundaryKind: unknown boundary kind \"fromStart\" "
       "(expected absolute, sameLimit, oppositeLimit, otherBoundary or a number)"},
      {"/assets/0/timeBounds/0/end", "forever",
       "/assets/0/timeBounds/0/end: expected a number of ticks or \"open\", found \"forever\""},
      {"/assets/0/timeBounds/0/end",
       {{"value", 5}, {"boundaryFlag", 256}},
       "/assets/0/timeBounds/0/end/boundaryFlag: 256 is out of range for an 8-bit number (0 to "
       "255)"},
      {"/assets/0/timeBounds/1",
       {{"start", 0}, {"end", "open"}},
       "/assets/0/timeBounds/1: the same range is listed twice"},
      {"/assets/0/id", "key",
       "/assets/0: give the asset either \"umId\" (its clip) or \"id\" (its identifier), not both"},
      {"/assets/1", SmallDocument()["assets"][0],
       "/assets/1: the asset c1d00001-4331-0000-0000-000000000000 is already given at /assets/0"},
      {"/assets/0/resources/0/trackLayouts/0/tracks/0", "a",
       "/assets/0/resources/0/trackLayouts/0/tracks/0: no track \"a\" in this resource's "
       "\"tracks\""},
      {"/assets/0/resources/1",
       {{"id", "r"}},
       "/assets/0/resources/1: the resource id is listed twice"},
  };
  for (const auto& fault : faults) {
    json document = SmallDocument();
    const json::json_pointer pointer(fault.pointer);
    if (fault.value.is_null()) {
      document[pointer.parent_pointer()].erase(pointer.back());
    } else {
      document[pointer] = fault.value;
    }
    EXPECT_EQ(DocumentErrorOf(document.dump()), fault.message);
  }
}

TEST(DocumentReading, BrokenJsonAndRepeatedKeysAreFoundWhereTheyAre) {
  EXPECT_EQ(DocumentErrorOf("{\n  \"playlist\": {,\n"),
            "line 2, column 16: syntax error while parsing object key - unexpected ','; "
            "expected string literal");
  EXPECT_EQ(DocumentErrorOf(""),
            "line 1, column 1: syntax error while parsing value - unexpected end of input; "
            "expected '[', '{', or a literal");
  EXPECT_EQ(DocumentErrorOf("[]"), "/: expected an object, found an array");
  // The place of a repeated key counts array elements that hold objects.
  EXPECT_EQ(DocumentErrorOf(R"({"playlist": {"audioVideoTrack": {"elements":
                                [{"a": 1}, 2, {"number": 1, "number": 2}]}}})"),
            "/playlist/audioVideoTrack/elements/2/number: the field is given twice");
  EXPECT_EQ(DocumentErrorOf(R"({"playlist": {"number": 1e999}})"),
            "/playlist/number: number overflow parsing '1e999'");
  EXPECT_EQ(DocumentErrorOf(R"({"assets": [], "assets": []})"),
            "/assets: the field is given twice");
}

// The fast reader reads what the careful one reads, refuses what it refuses in
// the same words, and hands over the texts that are not well-formed JSON.
TEST(DocumentReading, FastAndCarefulReadersAgree) {
  using TimelineConvert::Json;
  using TimelineConvert::StreamedRecords;
  const std::string small = SmallDocument().dump();
  struct Case {
    const char* name;
    std::string text;
    bool wellFormed;
  };
  const Case cases[] = {
      {"the small document", small, true},
      {"the shipped example",
       tool_testing::ReadFile(tool_testing::SourcePath("examples/highlight.json")), true},
      {"a key twice in an element",
       R"({"playlist": {"audioVideoTrack": {"elements": [{"a": 1}, {"b": 1, "b": 2}]}}})", true},
      {"a key twice among many",
       R"({"k0":0,"k1":1,"k2":2,"k3":3,"k4":4,"k5":5,"k6":6,"k7":7,)"
       R"("k8":8,"k9":9,"ka":0,"kb":1,"kc":2,"kd":3,"ke":4,"kf":5,)"
       R"("kg":6,"kh":7,"k3":8})",
       true},
      {"a faulty element and a faulty asset",
       R"({"assets": [{"umId": 5}], "playlist": {)"
       R"("audioVideoTrack": {"elements": [7]}}})",
       true},
      {"escapes in keys", R"({"a~b/c": {"x": 1, "x": 2}})", true},
      {"an unknown top field", R"({"assets": [], "playlist": {}, "extra": [[{}]]})", true},
      {"broken JSON", "{\"playlist\": {,", false},
      {"a number too large", R"({"playlist": {"number": 1e999}})", false},
      {"bytes that are not UTF-8", "{\"a\": \"\xFF\"}", false},
      {"a lone surrogate", R"({"a": "\udc00"})", false},
  };
  for (const auto& row : cases) {
    StreamedRecords quick;
    Json quickRest;
    std::string quickFault;
    bool handled = true;
    try {
      handled = TimelineConvert::ParseQuickly(row.text, quick, quickRest);
    } catch (const DocumentError& error) {
      quickFault = error.what();
    }
    EXPECT_EQ(handled, row.wellFormed) << row.name;
    if (!handled) {
      continue;
    }
    StreamedRecords careful;
    Json carefulRest;
    std::string carefulFault;
    try {
      carefulRest = TimelineConvert::ParseStreaming(row.text, careful);
    } catch (const DocumentError& error) {
      carefulFault = error.what();
    }
    EXPECT_EQ(quickFault, carefulFault) << row.name;
    if (!quickFault.empty()) {
      continue;  // nothing of a refused document is used
    }
    EXPECT_EQ(quickRest, carefulRest) << row.name;
    EXPECT_EQ(quick.elements.size(), careful.elements.size()) << row.name;
    EXPECT_EQ(quick.assetOrder.size(), careful.assetOrder.size()) << row.name;
    for (const auto& faults : {std::make_pair(&quick.elementFault, &careful.elementFault),
                               std::make_pair(&quick.assetFault, &careful.assetFault)}) {
      ASSERT_EQ(faults.first->has_value(), faults.second->has_value()) << row.name;
      if (faults.first->has_value()) {
        EXPECT_STREQ((*faults.first)->what(), (*faults.second)->what()) << row.name;
      }
    }
  }
}

}  // namespace
