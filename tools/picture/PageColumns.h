// PageColumns: how the viewer page's data is written: a JSON writer that
// formats straight into the page's buffer, and columns of numbers coded
// compactly, as the viewer's data.js decodes them (a typed array in base64,
// varint differences, runs of one value, or one value for all).
#pragma once

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace TimelineConvert {

// A JSON string. "<" is escaped as well, so no text can close the script
// element that holds the data.
// Characters that need no escape are copied a run at a time.
inline void AppendScriptJsonString(std::string& out, const std::string& text) {
  out += '"';
  const char* run = text.data();
  const char* const end = run + text.size();
  for (const char* at = run; at != end; ++at) {
    const char c = *at;
    const auto byte = static_cast<unsigned char>(c);
    const bool quoted = c == '"' || c == '\\';
    if (!quoted && byte >= 0x20 && c != '<' && c != '>' && c != '&') {
      continue;
    }
    out.append(run, at);
    run = at + 1;
    if (quoted) {
      const char escaped[2] = {'\\', c};
      out.append(escaped, 2);
    } else {
      static constexpr char kHex[] = "0123456789abcdef";
      const char escaped[6] = {'\\', 'u', '0', '0', kHex[byte >> 4], kHex[byte & 15]};
      out.append(escaped, 6);
    }
  }
  out.append(run, end);
  out += '"';
}

class DataWriter {
 public:
  explicit DataWriter(std::string& out) : out_(out) {}

  DataWriter& Text(const std::string& text) {
    Separate();
    AppendScriptJsonString(out_, text);
    return *this;
  }
  template <typename Integer>
  DataWriter& Int(Integer value) {
    Separate();
    char digits[24];
    out_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    return *this;
  }
  DataWriter& Real(double value) {
    Separate();
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%.17g", value);
    out_ += buffer;
    return *this;
  }
  DataWriter& Base64(const std::string& bytes) {
    Separate();
    static constexpr char kDigits[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    out_ += '"';
    // The whole groups of three bytes are written in place.
    const std::size_t whole = bytes.size() / 3;
    const std::size_t from = out_.size();
    out_.resize(from + 4 * whole);
    char* digits = &out_[from];
    std::size_t at = 0;
    for (; at + 2 < bytes.size(); at += 3) {
      const unsigned group = (static_cast<unsigned char>(bytes[at]) << 16) |
                             (static_cast<unsigned char>(bytes[at + 1]) << 8) |
                             static_cast<unsigned char>(bytes[at + 2]);
      *digits++ = kDigits[group >> 18];
      *digits++ = kDigits[(group >> 12) & 63];
      *digits++ = kDigits[(group >> 6) & 63];
      *digits++ = kDigits[group & 63];
    }
    if (at < bytes.size()) {
      unsigned group = static_cast<unsigned char>(bytes[at]) << 16;
      const bool two = at + 1 < bytes.size();
      if (two) {
        group |= static_cast<unsigned char>(bytes[at + 1]) << 8;
      }
      out_ += kDigits[group >> 18];
      out_ += kDigits[(group >> 12) & 63];
      out_ += two ? kDigits[(group >> 6) & 63] : '=';
      out_ += '=';
    }
    out_ += '"';
    return *this;
  }
  DataWriter& Raw(const char* text) {
    Separate();
    out_ += text;
    return *this;
  }
  DataWriter& Key(const char* key) {
    Separate();
    AppendScriptJsonString(out_, key);
    out_ += ':';
    first_ = true;
    return *this;
  }
  DataWriter& Open(char bracket) {
    Separate();
    out_ += bracket;
    first_ = true;
    return *this;
  }
  DataWriter& Close(char bracket) {
    out_ += bracket;
    first_ = false;
    return *this;
  }

 private:
  void Separate() {
    if (!first_) {
      out_ += ',';
    }
    first_ = false;
  }

  std::string& out_;
  bool first_ = true;
};

// One column of a table of the page data: integers (or, rarely, fractions)
// shipped as the narrowest little-endian typed array that holds them all,
// base64-coded; or, when shorter, as the differences between neighbours in
// varints, or as runs of one value; or, when all are equal, as that value.
// The script decodes each column straight into a typed array: no text to
// parse per value, no small arrays to collect.
class Column {
 public:
  void Reserve(std::size_t count) { values_.reserve(count); }
  void Add(double value) { values_.push_back(value); }

  void Write(DataWriter& json, const char* name) const {
    json.Key(name).Open('[');
    // One pass finds whether the values are whole, all equal, and their range.
    bool integral = true;
    bool equal = true;
    double lowest = values_.empty() ? 0 : values_.front();
    double highest = lowest;
    for (const double value : values_) {
      // In range first, so that the round trip through an integer is defined;
      // it also keeps out infinities and NaN.
      integral = integral && std::fabs(value) <= kExact &&
                 static_cast<double>(static_cast<std::int64_t>(value)) == value;
      equal = equal && value == values_.front();
      lowest = std::min(lowest, value);
      highest = std::max(highest, value);
    }
    if (integral && !values_.empty() && equal) {
      json.Text("c").Int(static_cast<std::int64_t>(values_.front())).Close(']');
      return;
    }
    const int type = integral ? NarrowestType(lowest, highest) : kFloat;
    std::string bytes(values_.size() * kTypes[type].size, '\0');
    char* at = &bytes[0];
    switch (kTypes[type].size) {
      case 1:
        at = PutAll<1>(at, type);
        break;
      case 2:
        at = PutAll<2>(at, type);
        break;
      case 4:
        at = PutAll<4>(at, type);
        break;
      default:
        at = PutAll<8>(at, type);
        break;
    }
    if (integral) {
      // Either coding is written only while it stays shorter than the typed
      // array: past that it is not chosen, so its room is bounded.
      const std::size_t room = bytes.size() + 2 * kLongestVarint;
      // Differences between neighbours as zigzag varints: a growing column
      // (starts, indexes) takes a byte or two per value whatever its range.
      std::string varints(room, '\0');
      at = &varints[0];
      std::int64_t previous = 0;
      for (std::size_t index = 0; index < values_.size() && Written(varints, at) < bytes.size();
           ++index) {
        const auto whole = static_cast<std::int64_t>(values_[index]);
        at = PutVarint(at, whole - previous);
        previous = whole;
      }
      varints.resize(Written(varints, at));
      // Runs of one value, as the value and the run's length: a column that
      // rarely changes (kinds, flags, a field only transitions have).
      std::string runs(room, '\0');
      at = &runs[0];
      for (std::size_t index = 0; index < values_.size() && Written(runs, at) < bytes.size();) {
        std::size_t end = index + 1;
        while (end < values_.size() && values_[end] == values_[index]) {
          ++end;
        }
        at = PutVarint(at, static_cast<std::int64_t>(values_[index]));
        at = PutVarint(at, static_cast<std::int64_t>(end - index));
        index = end;
      }
      runs.resize(Written(runs, at));
      if (runs.size() < std::min(bytes.size(), varints.size())) {
        json.Text("r").Int(1).Base64(runs).Close(']');
        return;
      }
      if (varints.size() < bytes.size()) {
        json.Text("v").Int(1).Base64(varints).Close(']');
        return;
      }
    }
    json.Text(kTypes[type].name).Int(0).Base64(bytes).Close(']');
  }

 private:
  static constexpr std::size_t kLongestVarint = 10;

  static std::size_t Written(const std::string& buffer, const char* at) {
    return static_cast<std::size_t>(at - buffer.data());
  }

  static char* PutVarint(char* at, std::int64_t value) {
    auto zigzag =
        (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
    while (zigzag >= 0x80) {
      *at++ = static_cast<char>((zigzag & 0x7F) | 0x80);
      zigzag >>= 7;
    }
    *at++ = static_cast<char>(zigzag);
    return at;
  }

  struct Type {
    const char* name;
    std::size_t size;
    double lowest;
    double highest;
  };
  static constexpr double kExact = 9007199254740992.0;  // 2^53
  static constexpr Type kTypes[] = {{"u8", 1, 0, 255},
                                    {"i8", 1, -128, 127},
                                    {"u16", 2, 0, 65535},
                                    {"i16", 2, -32768, 32767},
                                    {"u32", 4, 0, 4294967295.0},
                                    {"i32", 4, -2147483648.0, 2147483647.0},
                                    {"f64", 8, -HUGE_VAL, HUGE_VAL}};
  static constexpr int kFloat = 6;

  static int NarrowestType(double lowest, double highest) {
    for (int type = 0; type < kFloat; ++type) {
      if (lowest >= kTypes[type].lowest && highest <= kTypes[type].highest) {
        return type;
      }
    }
    return kFloat;
  }

  // Every value in `Size` little-endian bytes: the width is fixed for the
  // whole loop, so each value is a few shifts rather than a loop of its own.
  template <std::size_t Size>
  char* PutAll(char* at, int type) const {
    const bool real = type == kFloat;
    for (const double value : values_) {
      std::uint64_t pattern = 0;
      if (real) {
        static_assert(sizeof pattern == sizeof value, "a double has 64 bits");
        std::memcpy(&pattern, &value, sizeof pattern);
      } else {
        pattern = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
      }
      for (std::size_t byte = 0; byte < Size; ++byte) {
        *at++ = static_cast<char>((pattern >> (8 * byte)) & 0xFF);
      }
    }
    return at;
  }

  std::vector<double> values_;
};

// A table of named columns, written as {"count": N, "columns": {name: column}}.
// The names are the whole contract with the script, which reads columns by
// name and never by position. `visit(add)` calls add(row) for each of the
// `count` rows in order, so that rows need not be gathered in one list.
template <typename Row, std::size_t Count, typename Visit>
void WriteVisitedTable(DataWriter& json, const char* name, std::size_t count,
                       const std::pair<const char*, double (*)(const Row&)> (&columns)[Count],
                       const Visit& visit) {
  json.Key(name).Open('{').Key("count").Int(count).Key("columns").Open('{');
  for (const auto& column : columns) {
    Column values;
    values.Reserve(count);
    visit([&values, &column](const Row& row) { values.Add(column.second(row)); });
    values.Write(json, column.first);
  }
  json.Close('}').Close('}');
}

template <typename Row, std::size_t Count>
void WriteTable(DataWriter& json, const char* name, const std::vector<Row>& rows,
                const std::pair<const char*, double (*)(const Row&)> (&columns)[Count]) {
  WriteVisitedTable(json, name, rows.size(), columns, [&rows](const auto& add) {
    for (const auto& row : rows) {
      add(row);
    }
  });
}

}  // namespace TimelineConvert
