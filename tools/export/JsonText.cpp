// The JSON text of the exports. Numbers go through std::to_chars, strings are
// escaped a run of plain bytes at a time, so that the writer costs about what
// copying the text costs.
#include "export/JsonText.h"

#include <charconv>
#include <cmath>

namespace TimelineConvert {

namespace {

// The length of the UTF-8 sequence at `at`, or 0 when it is not one.
std::size_t Utf8Length(const std::string& text, std::size_t at) {
  const auto byte = [&text](std::size_t index) {
    return index < text.size() ? static_cast<unsigned char>(text[index]) : 0U;
  };
  const unsigned lead = byte(at);
  std::size_t length = 0;
  unsigned minimum = 0;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
    minimum = 0x80;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    minimum = 0x800;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    minimum = 0x10000;
  } else {
    return 0;
  }
  unsigned code = lead & (0x3FU >> (length - 1));
  for (std::size_t index = 1; index < length; ++index) {
    const unsigned next = byte(at + index);
    if ((next & 0xC0U) != 0x80U) {
      return 0;
    }
    code = (code << 6U) | (next & 0x3FU);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return code < minimum || code > 0x10FFFF || surrogate ? 0 : length;
}

}  // namespace

void AppendJsonString(std::string& out, const std::string& text) {
  static const char kHex[] = "0123456789abcdef";
  out += '"';
  std::size_t plain = 0;  // start of the bytes not yet copied
  std::size_t at = 0;
  const auto flush = [&] { out.append(text, plain, at - plain); };
  while (at < text.size()) {
    const auto byte = static_cast<unsigned char>(text[at]);
    if (byte >= 0x20 && byte < 0x80 && byte != '"' && byte != '\\') {
      ++at;
      continue;
    }
    if (byte >= 0x80) {
      const std::size_t length = Utf8Length(text, at);
      if (length != 0) {
        at += length;
        continue;
      }
      flush();
      out += "\xEF\xBF\xBD";
      plain = ++at;
      continue;
    }
    flush();
    switch (byte) {
      case '"':
        out += "\\\"";
        break;
      case '\\':
        out += "\\\\";
        break;
      case '\n':
        out += "\\n";
        break;
      case '\t':
        out += "\\t";
        break;
      case '\r':
        out += "\\r";
        break;
      default:
        out += "\\u00";
        out += kHex[byte >> 4U];
        out += kHex[byte & 0xFU];
    }
    plain = ++at;
  }
  flush();
  out += '"';
}

void JsonText::NewLine(std::size_t depth) {
  if (!compact_) {
    out_ += '\n';
    out_.append(depth * 4, ' ');
  }
}

void JsonText::BeforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (!empty_.empty()) {
    if (!empty_.back()) {
      out_ += ',';
    }
    empty_.back() = false;
    NewLine(empty_.size());
  }
}

JsonText& JsonText::Key(const char* name) {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  AppendJsonString(out_, name);
  out_ += compact_ ? ":" : ": ";
  afterKey_ = true;
  return *this;
}

JsonText& JsonText::Open(char bracket) {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  out_ += bracket;
  empty_.push_back(true);
  return *this;
}

JsonText& JsonText::Close(char bracket) {
  if (discard_) {
    return *this;
  }
  const bool wasEmpty = empty_.back();
  empty_.pop_back();
  if (!wasEmpty) {
    NewLine(empty_.size());
  }
  out_ += bracket;
  return *this;
}

JsonText& JsonText::String(const std::string& text) {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  AppendJsonString(out_, text);
  return *this;
}

JsonText& JsonText::Integer(std::int64_t value) {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  out_.append(digits, end);
  return *this;
}

JsonText& JsonText::Real(double value) {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  if (!std::isfinite(value)) {
    out_ += "null";
    return *this;
  }
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  const std::string_view written(digits, static_cast<std::size_t>(end - digits));
  out_.append(written);
  if (written.find_first_of(".e") == std::string_view::npos) {
    out_ += ".0";
  }
  return *this;
}

JsonText& JsonText::Bool(bool value) {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  out_ += value ? "true" : "false";
  return *this;
}

JsonText& JsonText::Null() {
  if (discard_) {
    return *this;
  }
  BeforeValue();
  out_ += "null";
  return *this;
}

}  // namespace TimelineConvert
