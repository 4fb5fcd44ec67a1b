// Fuzzes timeline-convert's document reader: any bytes either become a refusal
// that names its place, or a document whose playlist the library then converts
// or refuses in one of its documented ways. The tool's listing and JSON writer
// run on every document read, since they see whatever the reader lets through.
// The fast reader is checked against the careful one on every input.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <string>

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

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  RequireSameReading(text);
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
