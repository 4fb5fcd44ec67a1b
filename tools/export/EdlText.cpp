// The layout is the one editing applications read: three-digit event number,
// an eight-character reel, a five-character channel, the edit type with its
// length, then source IN/OUT and record IN/OUT. A dissolve is two lines of one
// event number: a cut to the outgoing source, then the dissolve to the
// incoming one. The M2 line's timecode keeps colons in drop-frame lists too,
// because common readers match only colons there.
#include "export/EdlText.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>

namespace TimelineConvert {

namespace {

constexpr std::size_t kReelLength = 8;

std::string Label(std::int64_t frame, const TimecodeBase& base, bool colonsOnly = false) {
  // Every frame was checked against the 24 hours before the text is written.
  return SmpteTimecode(frame, base, colonsOnly).value_or("00:00:00:00");
}

std::string EventLine(std::size_t number, const std::string& reel, const std::string& channel,
                      std::int64_t dissolveLength, std::int64_t sourceIn, std::int64_t sourceOut,
                      std::int64_t recordIn, std::int64_t recordOut, const TimecodeBase& base) {
  char head[64];
  if (dissolveLength > 0) {
    std::snprintf(head, sizeof head, "%03zu  %-8s %-5s D    %03lld ", number, reel.c_str(),
                  channel.c_str(), static_cast<long long>(dissolveLength));
  } else {
    std::snprintf(head, sizeof head, "%03zu  %-8s %-5s C        ", number, reel.c_str(),
                  channel.c_str());
  }
  return head + Label(sourceIn, base) + " " + Label(sourceOut, base) + " " + Label(recordIn, base) +
         " " + Label(recordOut, base) + "\n";
}

std::string SpeedLine(const EdlEvent& event, const TimecodeBase& base) {
  if (event.speedText.text.empty()) {
    return "";
  }
  char line[96];
  std::snprintf(line, sizeof line, "M2   %-8s       %-5s                %s\n", event.reel.c_str(),
                event.speedText.text.c_str(), Label(event.sourceIn, base, true).c_str());
  return line;
}

// Which item the event comes from, and its exact speed where the M2 line
// rounds it.
std::string ElementComment(const EdlEvent& event) {
  const EdlPlace& place = event.place;
  std::string comment = "* ENGINE ITEM " + place.ItemId();
  if (place.aux) {
    comment = "* AUX CLIP";
  } else if (place.element) {
    comment = "* ELEMENT " + std::to_string(place.element->number) + " ITEM " +
              std::to_string(place.element->itemNumber);
  }
  if (!event.speedText.text.empty()) {
    comment += " SPEED " + std::to_string(event.speedNumerator) + "/" +
               std::to_string(event.speedDenominator);
  }
  return comment + "\n";
}

std::string EventText(std::size_t number, const EdlEvent& event,
                      const std::vector<EdlEvent>& events, const TimecodeBase& base) {
  std::string text;
  if (event.dissolveLength <= 0) {
    text = EventLine(number, event.reel, event.channel, 0, event.sourceIn, event.sourceOut,
                     event.recordIn, event.recordOut, base);
    text += SpeedLine(event, base);
    text += "* FROM CLIP NAME:  " + event.clip + "\n";
    return text + ElementComment(event);
  }
  const EdlEvent* outgoing = event.from ? &events[*event.from] : nullptr;
  if (outgoing != nullptr) {
    text = EventLine(number, outgoing->reel, event.channel, 0, outgoing->sourceOut,
                     outgoing->sourceOut, event.recordIn, event.recordIn, base);
  } else {
    text = EventLine(number, "BL", event.channel, 0, 0, 0, event.recordIn, event.recordIn, base);
  }
  text += EventLine(number, event.reel, event.channel, event.dissolveLength, event.sourceIn,
                    event.sourceOut, event.recordIn, event.recordOut, base);
  if (outgoing != nullptr) {
    text += SpeedLine(*outgoing, base);
  }
  text += SpeedLine(event, base);
  if (outgoing != nullptr) {
    text += "* FROM CLIP NAME:  " + outgoing->clip + "\n";
  }
  text += "* TO CLIP NAME:  " + event.clip + "\n";
  return text + ElementComment(event);
}

}  // namespace

const char* EdlSideName(EdlSide side) {
  switch (side) {
    case EdlSide::Picture:
      return "picture";
    case EdlSide::Sound:
      return "sound";
    case EdlSide::Aux:
      break;
  }
  return "aux";
}

std::optional<EdlSide> EdlSideFromName(const std::string& name) {
  for (const EdlSide side : {EdlSide::Picture, EdlSide::Sound, EdlSide::Aux}) {
    if (name == EdlSideName(side)) {
      return side;
    }
  }
  return std::nullopt;
}

std::string EdlPlace::Text() const {
  const std::string clipText = clip.empty() ? "" : "clip " + clip;
  if (element) {
    return "element " + std::to_string(element->number) + " (item " +
           std::to_string(element->itemNumber) + (clipText.empty() ? "" : ", " + clipText) + ")";
  }
  if (aux) {
    return "the aux clip" + (clipText.empty() ? "" : " (" + clipText + ")");
  }
  if (item == nullptr || item->Id().Text().empty()) {
    return "the list";
  }
  return "item " + item->Id().Text() + (clipText.empty() ? "" : " (" + clipText + ")");
}

std::string EdlPlace::ItemId() const {
  return item == nullptr ? std::string() : item->Id().Text();
}

// Sound tracks of an asset by its description ("V+M+M" has two).
int EdlSoundTracks(const std::string& description) {
  int count = 0;
  std::size_t start = 0;
  while (start <= description.size()) {
    const std::size_t end = std::min(description.find('+', start), description.size());
    if (end > start && description[start] != 'V') {
      ++count;
    }
    start = end + 1;
  }
  return count;
}

std::string EdlSafeText(const std::string& text) {
  std::string safe = text;
  for (char& character : safe) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x20 || byte == 0x7F) {
      character = ' ';
    }
  }
  return safe;
}

std::string EdlReelName(const std::string& clip) {
  std::string reel;
  for (const char character : clip) {
    const auto byte = static_cast<unsigned char>(character);
    if (byte < 0x80 && (std::isalnum(byte) != 0 || character == '_') && reel.size() < kReelLength) {
      reel += character;
    }
  }
  if (reel.empty()) {
    return "AX";
  }
  std::string upper;
  for (const char character : reel) {
    upper += static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
  }
  // Readers take these names for black and colour bars, not for a source.
  if (upper == "BL" || upper == "BLACK" || upper == "BARS") {
    reel += '_';
  }
  return reel;
}

EdlSpeed EdlSpeedText(std::int64_t numerator, std::int64_t denominator, const TimecodeBase& base) {
  EdlSpeed speed;
  std::int64_t scaled = 0;
  const bool fits = !__builtin_mul_overflow(numerator, base.framesPerSecond * 10, &scaled);
  const long double tenths = fits ? static_cast<long double>(scaled) / denominator
                                  : static_cast<long double>(numerator) /
                                        static_cast<long double>(denominator) *
                                        static_cast<long double>(base.framesPerSecond * 10);
  speed.exact = fits && scaled % denominator == 0;
  const long double rounded = std::floor(tenths + 0.5L);
  char text[64];
  if (rounded >= 1e15L) {
    std::snprintf(text, sizeof text, "%.1Le", tenths / 10);
  } else {
    const auto whole = static_cast<long long>(rounded);
    std::snprintf(text, sizeof text, "%03lld.%lld", whole / 10, whole % 10);
  }
  speed.text = text;
  return speed;
}

std::string EdlListText(const std::string& title, EdlSide side, const TimecodeBase& base,
                        const std::vector<EdlEvent>& events, std::vector<EdlNote>& approximations) {
  const std::string sideName = side == EdlSide::Aux ? "aux sound" : EdlSideName(side);
  std::string text = "TITLE: " + (title.empty() ? sideName : EdlSafeText(title) + " " + sideName) +
                     "\n" + (base.dropFrame ? "FCM: DROP FRAME\n" : "FCM: NON-DROP FRAME\n");
  for (std::size_t index = 0; index < events.size(); ++index) {
    text += EventText(index + 1, events[index], events, base);
  }
  if (events.size() > 999) {
    approximations.push_back({{},
                              "event numbers past 999 written with " +
                                  std::to_string(std::to_string(events.size()).size()) +
                                  " digits."});
  }
  return text;
}

}  // namespace TimelineConvert
