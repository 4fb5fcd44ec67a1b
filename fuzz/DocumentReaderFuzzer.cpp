// Fuzzes timeline-convert's document reader: any bytes either become a refusal
// that names its place, or a document whose playlist the library then converts
// or refuses in one of its documented ways. The tool's listing and JSON writer
// run on every document read, since they see whatever the reader lets through.
// The fast and the direct readers are checked against the careful one on
// every input.
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

#include "ModelText.h"
#include "document/AssetKeys.h"
#include "document/DocumentPlace.h"
#include "document/DocumentStream.h"
#include "document/PlaylistDocument.h"
#include "export/EngineJson.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "DocumentReaderFuzzer: %s\n", what.c_str());
  std::abort();
}

// A refusal names a place: "line L, column C", a JSON pointer, or "byte N".
// The message shows it escaped, as it shows every text from the document.
void RequirePlacedRefusal(const TimelineConvert::DocumentError& error) {
  const std::string& where = error.Where();
  const bool placed =
      where.rfind("line ", 0) == 0 || where.rfind("/", 0) == 0 || where.rfind("byte ", 0) == 0;
  const std::string shown = TimelineConvert::EscapedText(where) + ": ";
  if (!placed || std::string(error.what()).rfind(shown, 0) != 0) {
    Fail(std::string("a refusal without its place: ") + error.what());
  }
}

std::string FaultText(const std::optional<TimelineConvert::DocumentError>& fault) {
  return fault ? fault->what() : "";
}

// The fast reader either hands a text over to the careful one, or reads it
// exactly as the careful one does: the same refusal, or the same records.
void RequireSameReading(const std::string& text) {
  TimelineConvert::StreamedRecords quick;
  TimelineConvert::Json quickRest;
  std::string quickRefusal;
  try {
    if (!TimelineConvert::ParseQuickly(text, quick, quickRest)) {
      return;
    }
  } catch (const TimelineConvert::DocumentError& error) {
    quickRefusal = error.what();
  }
  TimelineConvert::StreamedRecords careful;
  TimelineConvert::Json carefulRest;
  std::string carefulRefusal;
  try {
    carefulRest = TimelineConvert::ParseStreaming(text, careful);
  } catch (const TimelineConvert::DocumentError& error) {
    carefulRefusal = error.what();
  }
  if (quickRefusal != carefulRefusal) {
    Fail("the readers refuse differently: \"" + quickRefusal + "\" and \"" + carefulRefusal + "\"");
  }
  if (!quickRefusal.empty()) {
    return;
  }
  const auto dump = [](const TimelineConvert::Json& json) {
    return json.dump(-1, ' ', false, TimelineConvert::Json::error_handler_t::replace);
  };
  if (dump(quickRest) != dump(carefulRest) || quick.elements.size() != careful.elements.size() ||
      quick.assetOrder.size() != careful.assetOrder.size() ||
      FaultText(quick.elementFault) != FaultText(careful.elementFault) ||
      FaultText(quick.assetFault) != FaultText(careful.assetFault)) {
    Fail("the readers read differently");
  }
}

// The text of a record without the addresses of its shared objects, which
// differ from one reading to the next.
std::string WithoutAddresses(std::string text) {
  for (const std::string name : {"track=", "target=", "at=", "layout=", "resource=", "object="}) {
    for (auto at = text.find(name); at != std::string::npos; at = text.find(name, at + 1)) {
      if (at != 0 && text[at - 1] != ' ' && text[at - 1] != '{') {
        continue;  // the end of a longer name, or a text's content
      }
      const auto digits = at + name.size();
      auto end = digits;
      while (end < text.size() && std::isdigit(static_cast<unsigned char>(text[end]))) {
        ++end;
      }
      text.erase(digits, end - digits);
    }
  }
  return text;
}

std::string RecordsText(const TimelineConvert::StreamedRecords& records) {
  std::string text;
  for (const auto& element : records.elements) {
    text += ModelText::Describe(element) + "\n";
  }
  for (const auto& name : records.assetOrder) {
    text += name.key.Text() + " " + name.umId + " " +
            WithoutAddresses(ModelText::Describe(records.assets->at(name.key))) + "\n";
  }
  return text;
}

// The direct reader only ever accepts a text that the careful reader reads
// without a fault, and then reads the same records and the same rest.
void RequireDirectAgrees(const std::string& text) {
  TimelineConvert::StreamedRecords direct;
  TimelineConvert::Json directRest;
  if (!TimelineConvert::ReadDirectly(text, direct, directRest)) {
    return;
  }
  TimelineConvert::StreamedRecords careful;
  TimelineConvert::Json carefulRest;
  try {
    carefulRest = TimelineConvert::ParseStreaming(text, careful);
  } catch (const TimelineConvert::DocumentError& error) {
    Fail(std::string("the direct reader accepts what the careful one refuses: ") + error.what());
  }
  if (careful.elementFault || careful.assetFault) {
    Fail("the direct reader accepts a faulty element or asset: " + FaultText(careful.elementFault) +
         FaultText(careful.assetFault));
  }
  const auto dump = [](const TimelineConvert::Json& json) {
    return json.dump(-1, ' ', false, TimelineConvert::Json::error_handler_t::replace);
  };
  if (dump(directRest) != dump(carefulRest) || RecordsText(direct) != RecordsText(careful)) {
    Fail("the direct reader reads differently from the careful one");
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  RequireSameReading(text);
  RequireDirectAgrees(text);
  TimelineConvert::PlaylistDocument document;
  try {
    document = TimelineConvert::ReadPlaylistDocument(text);
  } catch (const TimelineConvert::DocumentError& error) {
    RequirePlacedRefusal(error);
    return 0;
  }
  TimelineConvert::ListUsedAssets(document);
  for (const auto mode : {Conversion::TimelineConverter::FromTrackItems,
                          Conversion::TimelineConverter::FromPlaylist}) {
    try {
      TimelineConvert::TimelineToJsonText(
          Conversion::TimelineConverter::ToTimeline(document.playlist, mode, document.assets));
    } catch (const std::logic_error&) {
      // The library's refusals are logic_error and its subclasses (invalid_argument).
    } catch (const std::runtime_error&) {
      // Its look-up refusals.
    }
  }
  return 0;
}
