// The direct reading of a document: a scanner of the JSON text that puts each
// element of the track straight into its record, with no tree, no callback
// and no allocation per value, and builds a small tree only of the document's
// top and of one asset at a time, which the record readers read as the other
// readers do. It only ever accepts: on any fault of the text, any field it
// does not know, any value the record readers would refuse and any form it is
// unsure of, it gives up, and the other readers read the text again and word
// the fault, so that no message and no order of faults depends on it. Its
// grammar is JSON's, as strict as the other readers' parser or stricter:
// UTF-8 checked, escapes and surrogate pairs decoded, no control character in
// a string, no trailing text, no key twice in an object, and nesting bounded
// by memory only (no recursion). A number with a fraction or an exponent, or
// too large for 64 bits, is never accepted by the record readers, so it makes
// the reader give up rather than be converted.
//
// Over 400 lines: the scanner, the element reader and the tree builder work
// on one cursor into the text and give up through one path; apart, each
// would have to hand the other its position and its reason to stop.
#include <array>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "document/DocumentStream.h"
#include "document/RecordReaders.h"

namespace TimelineConvert {

namespace {

namespace Sequences = Kov::Replivo::Data::Sequences;

// Thrown to abandon the attempt; caught only by ReadDirectly.
struct GiveUp {};

[[noreturn]] void Abandon() {
  throw GiveUp();
}

// An integer as written: its sign and its magnitude.
struct WrittenInteger {
  bool negative = false;
  std::uint64_t magnitude = 0;
};

// The value of `number` if it lies from -mostNegative to highest; gives up otherwise.
std::int64_t Fitting(WrittenInteger number, std::uint64_t mostNegative, std::uint64_t highest) {
  if (number.negative) {
    if (number.magnitude > mostNegative) {
      Abandon();
    }
    // -(m - 1) - 1 holds -2^63 without overflowing.
    return number.magnitude == 0 ? 0 : -static_cast<std::int64_t>(number.magnitude - 1) - 1;
  }
  if (number.magnitude > highest) {
    Abandon();
  }
  return static_cast<std::int64_t>(number.magnitude);
}

constexpr std::uint64_t kInt32Negative = std::uint64_t{1} << 31;
constexpr std::uint64_t kInt32Highest = kInt32Negative - 1;
constexpr std::uint64_t kInt64Negative = std::uint64_t{1} << 63;
constexpr std::uint64_t kInt64Highest = kInt64Negative - 1;

// Bytes that stand for themselves in a string: printable ASCII but the quote
// and the backslash.
constexpr std::array<bool, 256> PlainStringBytes() {
  std::array<bool, 256> plain{};
  for (unsigned byte = 0x20; byte < 0x80; ++byte) {
    plain[byte] = byte != '"' && byte != '\\';
  }
  return plain;
}
constexpr std::array<bool, 256> kPlainStringByte = PlainStringBytes();

// JSON's white space: a table, as the text is mostly indentation.
constexpr std::array<bool, 256> WhiteSpaceBytes() {
  std::array<bool, 256> space{};
  space[' '] = space['\n'] = space['\r'] = space['\t'] = true;
  return space;
}
constexpr std::array<bool, 256> kWhiteSpaceByte = WhiteSpaceBytes();

// What a byte that leads a UTF-8 sequence allows: the sequence's length (0:
// it leads none) and the range of its second byte, which rules out overlong
// forms (after E0, F0), surrogates (after ED) and values past U+10FFFF (after
// F4). The bytes after the second are 80 to BF.
struct Utf8Lead {
  std::uint8_t length;
  std::uint8_t secondLowest;
  std::uint8_t secondHighest;
};

constexpr std::array<Utf8Lead, 256> Utf8Leads() {
  std::array<Utf8Lead, 256> leads{};
  for (unsigned byte = 0xC2; byte <= 0xF4; ++byte) {
    const std::uint8_t length = byte <= 0xDF ? 2 : byte <= 0xEF ? 3 : 4;
    leads[byte] = {length, 0x80, 0xBF};
  }
  leads[0xE0].secondLowest = 0xA0;
  leads[0xED].secondHighest = 0x9F;
  leads[0xF0].secondLowest = 0x90;
  leads[0xF4].secondHighest = 0x8F;
  return leads;
}
constexpr std::array<Utf8Lead, 256> kUtf8Leads = Utf8Leads();

void AppendUtf8(std::string& out, std::uint32_t code) {
  if (code < 0x80) {
    out += static_cast<char>(code);
  } else if (code < 0x800) {
    out += static_cast<char>(0xC0 | (code >> 6));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else if (code < 0x10000) {
    out += static_cast<char>(0xE0 | (code >> 12));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  } else {
    out += static_cast<char>(0xF0 | (code >> 18));
    out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
    out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
    out += static_cast<char>(0x80 | (code & 0x3F));
  }
}

// The tokens of a JSON text, each read where it is expected.
class Scanner {
 public:
  explicit Scanner(std::string_view text) : at_(text.data()), end_(text.data() + text.size()) {}

  // The next byte after white space; a NUL at the end of the text.
  char Peek() {
    while (at_ != end_ && kWhiteSpaceByte[static_cast<unsigned char>(*at_)]) {
      ++at_;
    }
    return at_ == end_ ? '\0' : *at_;
  }

  bool AtEnd() { return Peek() == '\0' && at_ == end_; }

  // Takes `token` if it comes next.
  bool Take(char token) {
    if (Peek() != token) {
      return false;
    }
    ++at_;
    return true;
  }

  void Expect(char token) {
    if (!Take(token)) {
      Abandon();
    }
  }

  void Word(std::string_view word) {
    Peek();
    if (static_cast<std::size_t>(end_ - at_) < word.size() ||
        std::memcmp(at_, word.data(), word.size()) != 0) {
      Abandon();
    }
    at_ += word.size();
  }

  // A key compared only with known names: its bytes as written, without
  // decoding. Every known name is plain ASCII, so a key with any other byte
  // (an escape, a control character, UTF-8) names none: give up. Keys are
  // short; a byte loop beats a library search here.
  std::string_view PlainKey() {
    Expect('"');
    const char* start = at_;
    while (at_ != end_ && kPlainStringByte[static_cast<unsigned char>(*at_)]) {
      ++at_;
    }
    if (at_ == end_ || *at_ != '"') {
      Abandon();
    }
    const std::string_view key(start, static_cast<std::size_t>(at_ - start));
    ++at_;
    return key;
  }

  // A string, decoded into `out`.
  void String(std::string& out) {
    Expect('"');
    out.clear();
    for (;;) {
      const char* run = at_;
      while (at_ != end_ && kPlainStringByte[static_cast<unsigned char>(*at_)]) {
        ++at_;
      }
      out.append(run, static_cast<std::size_t>(at_ - run));
      if (at_ == end_) {
        Abandon();
      }
      const auto byte = static_cast<unsigned char>(*at_);
      if (byte == '"') {
        ++at_;
        return;
      }
      if (byte == '\\') {
        Escape(out);
      } else if (byte < 0x20) {
        Abandon();  // a control character must be escaped
      } else {
        Utf8Sequence(out);
      }
    }
  }

  // An integer; a fraction, an exponent, a leading zero or more than 64 bits
  // give up.
  WrittenInteger Integer() {
    Peek();
    WrittenInteger number;
    if (at_ != end_ && *at_ == '-') {
      number.negative = true;
      ++at_;
    }
    if (at_ == end_ || !IsDigit(*at_)) {
      Abandon();
    }
    if (*at_ == '0') {
      ++at_;
    } else {
      while (at_ != end_ && IsDigit(*at_)) {
        const auto digit = static_cast<unsigned>(*at_ - '0');
        if (number.magnitude > (std::numeric_limits<std::uint64_t>::max() - digit) / 10) {
          Abandon();
        }
        number.magnitude = number.magnitude * 10 + digit;
        ++at_;
      }
    }
    if (at_ != end_ && (*at_ == '.' || *at_ == 'e' || *at_ == 'E' || IsDigit(*at_))) {
      Abandon();
    }
    if (number.negative && number.magnitude > kInt64Negative) {
      Abandon();
    }
    return number;
  }

 private:
  static bool IsDigit(char c) { return c >= '0' && c <= '9'; }

  std::uint32_t Hex4() {
    if (end_ - at_ < 4) {
      Abandon();
    }
    std::uint32_t code = 0;
    for (int digit = 0; digit < 4; ++digit) {
      const char c = *at_++;
      code <<= 4;
      if (c >= '0' && c <= '9') {
        code |= static_cast<std::uint32_t>(c - '0');
      } else if (c >= 'a' && c <= 'f') {
        code |= static_cast<std::uint32_t>(c - 'a' + 10);
      } else if (c >= 'A' && c <= 'F') {
        code |= static_cast<std::uint32_t>(c - 'A' + 10);
      } else {
        Abandon();
      }
    }
    return code;
  }

  void Escape(std::string& out) {
    ++at_;
    if (at_ == end_) {
      Abandon();
    }
    switch (*at_++) {
      case '"':
        out += '"';
        return;
      case '\\':
        out += '\\';
        return;
      case '/':
        out += '/';
        return;
      case 'b':
        out += '\b';
        return;
      case 'f':
        out += '\f';
        return;
      case 'n':
        out += '\n';
        return;
      case 'r':
        out += '\r';
        return;
      case 't':
        out += '\t';
        return;
      case 'u':
        break;
      default:
        Abandon();
    }
    std::uint32_t code = Hex4();
    if (code >= 0xD800 && code <= 0xDBFF) {
      // A high surrogate stands only with a low one after it.
      if (end_ - at_ < 2 || at_[0] != '\\' || at_[1] != 'u') {
        Abandon();
      }
      at_ += 2;
      const std::uint32_t low = Hex4();
      if (low < 0xDC00 || low > 0xDFFF) {
        Abandon();
      }
      code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
    } else if (code >= 0xDC00 && code <= 0xDFFF) {
      Abandon();
    }
    AppendUtf8(out, code);
  }

  // One multi-byte UTF-8 character: no overlong form, no surrogate, nothing
  // beyond U+10FFFF.
  void Utf8Sequence(std::string& out) {
    const Utf8Lead lead = kUtf8Leads[static_cast<unsigned char>(*at_)];
    if (lead.length == 0 || end_ - at_ < lead.length) {
      Abandon();
    }
    const auto second = static_cast<unsigned char>(at_[1]);
    bool valid = second >= lead.secondLowest && second <= lead.secondHighest;
    for (std::ptrdiff_t index = 2; index < lead.length; ++index) {
      valid = valid && (static_cast<unsigned char>(at_[index]) & 0xC0) == 0x80;
    }
    if (!valid) {
      Abandon();
    }
    out.append(at_, static_cast<std::size_t>(lead.length));
    at_ += lead.length;
  }

  const char* at_;
  const char* end_;
};

// The field of kElementFields a key names, trying `expected` first (keys
// mostly come in the table's order); gives up for any other key.
// Names are a few bytes long: compared in line, not by a library call.
bool SameName(std::string_view name, std::string_view key) {
  if (name.size() != key.size()) {
    return false;
  }
  for (std::size_t index = 0; index < name.size(); ++index) {
    if (name[index] != key[index]) {
      return false;
    }
  }
  return true;
}

std::size_t ElementFieldOf(std::string_view key, std::size_t expected) {
  if (expected < kElementFields.size() && SameName(kElementFields[expected].name, key)) {
    return expected;
  }
  for (std::size_t field = 0; field < kElementFields.size(); ++field) {
    if (SameName(kElementFields[field].name, key)) {
      return field;
    }
  }
  Abandon();
}

constexpr std::uint32_t RequiredElementFields() {
  std::uint32_t mask = 0;
  for (std::size_t field = 0; field < kElementFields.size(); ++field) {
    mask |= kElementFields[field].required ? std::uint32_t{1} << field : 0;
  }
  return mask;
}

enum class StreamedList { None, Elements, Assets };

class DirectReader {
 public:
  DirectReader(std::string_view text, StreamedRecords& records)
      : scanner_(text), records_(records) {}

  // The whole text into the records and `document`; gives up on anything but
  // a document read without a fault.
  void Document(Json& document) {
    Tree(document, true);
    if (!scanner_.AtEnd()) {
      Abandon();
    }
  }

 private:
  // An object or array being read, and in an object the key of its member.
  struct Level {
    Json* container;
    bool isObject;
    std::string key;
  };

  // One value as a tree, read without recursion. At the document's top the
  // track's elements and the assets are read into records as they come and
  // their arrays left empty, as the other readers leave them.
  void Tree(Json& root, bool top) {
    std::vector<Level> levels;
    for (;;) {
      const char next = scanner_.Peek();
      if (next == '{' || next == '[') {
        scanner_.Expect(next);
        const bool isObject = next == '{';
        const StreamedList list = top && !isObject ? ListAt(levels) : StreamedList::None;
        Json* placed = Place(levels, root, isObject ? Json::object() : Json::array());
        if (list != StreamedList::None) {
          List(list);
        } else if (!scanner_.Take(isObject ? '}' : ']')) {
          levels.push_back(Level{placed, isObject, {}});
          if (isObject) {
            Key(levels.back());
          }
          continue;
        }
      } else {
        Place(levels, root, Scalar());
      }
      if (!NextMember(levels)) {
        return;
      }
    }
  }

  // After a complete value: true when another member of an open container
  // follows, false when the outermost value is complete.
  bool NextMember(std::vector<Level>& levels) {
    while (!levels.empty()) {
      Level& level = levels.back();
      if (scanner_.Take(',')) {
        if (level.isObject) {
          Key(level);
        }
        return true;
      }
      scanner_.Expect(level.isObject ? '}' : ']');
      levels.pop_back();
    }
    return false;
  }

  void Key(Level& level) {
    scanner_.String(level.key);
    scanner_.Expect(':');
  }

  // Puts a value where the reading is; a key given twice gives up.
  static Json* Place(std::vector<Level>& levels, Json& root, Json&& value) {
    if (levels.empty()) {
      root = std::move(value);
      return &root;
    }
    Level& level = levels.back();
    if (level.isObject) {
      const auto placed =
          level.container->get_ref<Json::object_t&>().emplace(level.key, std::move(value));
      if (!placed.second) {
        Abandon();
      }
      return &placed.first->second;
    }
    auto& array = level.container->get_ref<Json::array_t&>();
    array.push_back(std::move(value));
    return &array.back();
  }

  Json Scalar() {
    switch (scanner_.Peek()) {
      case '"':
        scanner_.String(text_);
        return Json(text_);
      case 't':
        scanner_.Word("true");
        return Json(true);
      case 'f':
        scanner_.Word("false");
        return Json(false);
      case 'n':
        scanner_.Word("null");
        return Json(nullptr);
      default: {
        const WrittenInteger number = scanner_.Integer();
        if (number.negative) {
          return Json(Fitting(number, kInt64Negative, 0));
        }
        return Json(number.magnitude);
      }
    }
  }

  // Which streamed list an array opened at these levels is, by the keys that lead to it.
  static StreamedList ListAt(const std::vector<Level>& levels) {
    const auto keyAt = [&levels](std::size_t level, const char* key) {
      return levels[level].isObject && levels[level].key == key;
    };
    if (levels.size() == 1 && keyAt(0, "assets")) {
      return StreamedList::Assets;
    }
    if (levels.size() == 3 && keyAt(0, "playlist") && keyAt(1, "audioVideoTrack") &&
        keyAt(2, "elements")) {
      return StreamedList::Elements;
    }
    return StreamedList::None;
  }

  // The members of a streamed list, its '[' taken.
  void List(StreamedList list) {
    if (scanner_.Take(']')) {
      return;
    }
    do {
      if (list == StreamedList::Elements) {
        records_.elements.emplace_back();
        Element(records_.elements.back());
      } else {
        Json asset;
        Tree(asset, false);
        try {
          AddAsset(Node(asset, "/assets/" + std::to_string(records_.assetOrder.size())), records_);
        } catch (const DocumentError&) {
          Abandon();
        }
      }
    } while (scanner_.Take(','));
    scanner_.Expect(']');
  }

  void Element(Sequences::AudioVideoElement& element) {
    scanner_.Expect('{');
    std::uint32_t given = 0;
    std::size_t field = 0;
    do {
      field = ElementFieldOf(scanner_.PlainKey(), field);
      const std::uint32_t bit = std::uint32_t{1} << field;
      if ((given & bit) != 0) {
        Abandon();
      }
      given |= bit;
      scanner_.Expect(':');
      ElementFieldValue(element, field);
      ++field;
    } while (scanner_.Take(','));
    scanner_.Expect('}');
    constexpr std::uint32_t kRequired = RequiredElementFields();
    if ((given & kRequired) != kRequired) {
      Abandon();
    }
  }

  void ElementFieldValue(Sequences::AudioVideoElement& element, std::size_t field) {
    switch (kElementFields[field].value) {
      case ElementValue::Unsigned32:
        SetElementInteger(
            element, field,
            Fitting(scanner_.Integer(), 0, std::numeric_limits<std::uint32_t>::max()));
        return;
      case ElementValue::Signed32:
        SetElementInteger(element, field,
                          Fitting(scanner_.Integer(), kInt32Negative, kInt32Highest));
        return;
      case ElementValue::Signed64:
        SetElementInteger(element, field,
                          Fitting(scanner_.Integer(), kInt64Negative, kInt64Highest));
        return;
      case ElementValue::ClipId:
        scanner_.String(text_);
        if (text_.size() > Kov::Replivo::Data::Clips::UmId::kMaxTextLength ||
            text_.find('\0') != std::string::npos) {
          Abandon();
        }
        element.umId = Kov::Replivo::Data::Clips::UmId(text_.c_str());
        return;
      case ElementValue::BoundaryKind:
        if (scanner_.Peek() == '"') {
          scanner_.String(text_);
          std::int32_t kind = 0;
          if (!BoundaryKindOfName(text_, kind)) {
            Abandon();
          }
          SetElementInteger(element, field, kind);
        } else {
          SetElementInteger(element, field,
                            Fitting(scanner_.Integer(), kInt32Negative, kInt32Highest));
        }
        return;
      case ElementValue::Speed:
        Speed(element.speed);
        return;
    }
  }

  // {"numerator": n, "denominator": d}, both given once and nothing else.
  void Speed(Kov::Replivo::Data::Channels::Speed& speed) {
    scanner_.Expect('{');
    bool numerator = false;
    bool denominator = false;
    do {
      const std::string_view key = scanner_.PlainKey();
      scanner_.Expect(':');
      const auto value =
          static_cast<std::int32_t>(Fitting(scanner_.Integer(), kInt32Negative, kInt32Highest));
      if (key == "numerator" && !numerator) {
        numerator = true;
        speed.numerator = value;
      } else if (key == "denominator" && !denominator) {
        denominator = true;
        speed.denominator = value;
      } else {
        Abandon();
      }
    } while (scanner_.Take(','));
    scanner_.Expect('}');
    if (!numerator || !denominator) {
      Abandon();
    }
  }

  Scanner scanner_;
  StreamedRecords& records_;
  std::string text_;  // the last string read, its buffer reused
};

}  // namespace

bool ReadDirectly(std::string_view jsonText, StreamedRecords& records, Json& document) {
  try {
    DirectReader(jsonText, records).Document(document);
    return true;
  } catch (const GiveUp&) {
    return false;
  }
}

}  // namespace TimelineConvert
