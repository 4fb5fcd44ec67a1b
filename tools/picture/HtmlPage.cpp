// Writes the viewer page: the data as one JSON value in a script element of
// its own type (the browser parses it once, fast), then the viewer. Elements,
// items and marks go as tables of typed-array columns, so that a long
// timeline stays compact and the script decodes it without parsing numbers.
#include "picture/HtmlPage.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <set>
#include <unordered_map>
#include <utility>
#include <vector>

#include "picture/PictureText.h"

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

// A JSON string. "<" is escaped as well, so no text can close the script
// element that holds the data.
void AppendJsonString(std::string& out, const std::string& text) {
  out += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (c == '"' || c == '\\') {
      out += '\\';
      out += c;
    } else if (byte < 0x20 || c == '<' || c == '>' || c == '&') {
      char buffer[8];
      std::snprintf(buffer, sizeof buffer, "\\u%04x", byte);
      out += buffer;
    } else {
      out += c;
    }
  }
  out += '"';
}

class DataWriter {
 public:
  explicit DataWriter(std::string& out) : out_(out) {}

  DataWriter& Text(const std::string& text) {
    Separate();
    AppendJsonString(out_, text);
    return *this;
  }
  template <typename Integer>
  DataWriter& Int(Integer value) {
    Separate();
    out_ += std::to_string(value);
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
    std::size_t at = 0;
    for (; at + 2 < bytes.size(); at += 3) {
      const unsigned group = (static_cast<unsigned char>(bytes[at]) << 16) |
                             (static_cast<unsigned char>(bytes[at + 1]) << 8) |
                             static_cast<unsigned char>(bytes[at + 2]);
      const char digits[4] = {kDigits[group >> 18], kDigits[(group >> 12) & 63],
                              kDigits[(group >> 6) & 63], kDigits[group & 63]};
      out_.append(digits, 4);
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
    AppendJsonString(out_, key);
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

// The words and numbers the viewer shows as the SVG does, made here once: the
// flag bits by name, what each problem flag means, the frames per second of
// the timecode and the text of every speed the elements play at.
void Words(DataWriter& json, const PictureLabels& labels, const Kov::TimePoints::Rate& rate) {
  json.Key("words").Open('{').Key("flags").Open('{');
  for (const auto& named : kNamedFlags) {
    json.Key(named.name).Int(static_cast<int>(named.flag));
  }
  json.Close('}').Key("problems").Open('{');
  for (const auto& named : kNamedFlags) {
    if (*ProblemWords(named.flag) != '\0') {
      json.Key(named.name).Text(ProblemWords(named.flag));
    }
  }
  json.Close('}').Key("framesPerSecond").Int(NominalFrameRate(rate));
  json.Key("speeds").Open('{');
  std::set<std::pair<std::int32_t, std::int32_t>> speeds;
  for (const auto& element : labels.elements) {
    speeds.emplace(element.speedNumerator, element.speedDenominator);
  }
  for (const auto& speed : speeds) {
    const std::string key = std::to_string(speed.first) + "/" + std::to_string(speed.second);
    json.Key(key.c_str()).Text(SpeedText(speed.first, speed.second));
  }
  json.Close('}').Close('}');
}

// One column of a table of the page data: integers (or, rarely, fractions)
// shipped as the narrowest little-endian typed array that holds them all,
// base64-coded; or, when shorter, as the differences between neighbours in
// varints, or as runs of one value; or, when all are equal, as that value. The script decodes each
// column straight into a typed array: no text to parse per value, no small arrays to collect.
class Column {
 public:
  void Add(double value) { values_.push_back(value); }

  void Write(DataWriter& json, const char* name) const {
    json.Key(name).Open('[');
    const bool integral = std::all_of(values_.begin(), values_.end(), [](double value) {
      return std::isfinite(value) && value == std::floor(value) && std::fabs(value) <= kExact;
    });
    if (integral && !values_.empty() &&
        std::all_of(values_.begin(), values_.end(),
                    [this](double value) { return value == values_.front(); })) {
      json.Text("c").Int(static_cast<std::int64_t>(values_.front())).Close(']');
      return;
    }
    const int type = integral ? NarrowestType(values_) : kFloat;
    std::string bytes;
    bytes.reserve(values_.size() * kTypes[type].size);
    for (const double value : values_) {
      AppendLittleEndian(bytes, value, type);
    }
    if (integral) {
      // Differences between neighbours as zigzag varints: a growing column
      // (starts, indexes) takes a byte or two per value whatever its range.
      std::string varints;
      std::int64_t previous = 0;
      for (const double value : values_) {
        const auto whole = static_cast<std::int64_t>(value);
        AppendVarint(varints, whole - previous);
        previous = whole;
      }
      // Runs of one value, as the value and the run's length: a column that
      // rarely changes (kinds, flags, a field only transitions have).
      std::string runs;
      for (std::size_t index = 0; index < values_.size() && runs.size() < bytes.size();) {
        std::size_t end = index + 1;
        while (end < values_.size() && values_[end] == values_[index]) {
          ++end;
        }
        AppendVarint(runs, static_cast<std::int64_t>(values_[index]));
        AppendVarint(runs, static_cast<std::int64_t>(end - index));
        index = end;
      }
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
  static void AppendVarint(std::string& bytes, std::int64_t value) {
    auto zigzag =
        (static_cast<std::uint64_t>(value) << 1) ^ static_cast<std::uint64_t>(value >> 63);
    while (zigzag >= 0x80) {
      bytes += static_cast<char>((zigzag & 0x7F) | 0x80);
      zigzag >>= 7;
    }
    bytes += static_cast<char>(zigzag);
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

  static int NarrowestType(const std::vector<double>& values) {
    const auto range = std::minmax_element(values.begin(), values.end());
    const double lowest = values.empty() ? 0 : *range.first;
    const double highest = values.empty() ? 0 : *range.second;
    for (int type = 0; type < kFloat; ++type) {
      if (lowest >= kTypes[type].lowest && highest <= kTypes[type].highest) {
        return type;
      }
    }
    return kFloat;
  }

  static void AppendLittleEndian(std::string& bytes, double value, int type) {
    std::uint64_t pattern = 0;
    if (type == kFloat) {
      static_assert(sizeof pattern == sizeof value, "a double has 64 bits");
      std::memcpy(&pattern, &value, sizeof pattern);
    } else {
      pattern = static_cast<std::uint64_t>(static_cast<std::int64_t>(value));
    }
    for (std::size_t byte = 0; byte < kTypes[type].size; ++byte) {
      bytes += static_cast<char>((pattern >> (8 * byte)) & 0xFF);
    }
  }

  std::vector<double> values_;
};

// A table of named columns, written as {"count": N, "columns": {name: column}}.
// The names are the whole contract with the script, which reads columns by
// name and never by position.
template <typename Row, std::size_t Count>
void WriteTable(DataWriter& json, const char* name, const std::vector<Row>& rows,
                const std::pair<const char*, double (*)(const Row&)> (&columns)[Count]) {
  json.Key(name).Open('{').Key("count").Int(rows.size()).Key("columns").Open('{');
  for (const auto& column : columns) {
    Column values;
    for (const auto& row : rows) {
      values.Add(column.second(row));
    }
    values.Write(json, column.first);
  }
  json.Close('}').Close('}');
}

using ElementColumn = std::pair<const char*, double (*)(const SourceElement&)>;
const ElementColumn kElementColumns[] = {
    {"number", [](const SourceElement& e) { return double(e.number); }},
    {"itemNumber", [](const SourceElement& e) { return double(e.itemNumber); }},
    {"inBoundaryKind", [](const SourceElement& e) { return double(e.inBoundaryKind); }},
    {"outBoundaryKind", [](const SourceElement& e) { return double(e.outBoundaryKind); }},
    {"videoIn", [](const SourceElement& e) { return double(e.videoIn); }},
    {"videoOut", [](const SourceElement& e) { return double(e.videoOut); }},
    {"audioIn", [](const SourceElement& e) { return double(e.audioIn); }},
    {"audioOut", [](const SourceElement& e) { return double(e.audioOut); }},
    {"speedNumerator", [](const SourceElement& e) { return double(e.speedNumerator); }},
    {"speedDenominator", [](const SourceElement& e) { return double(e.speedDenominator); }},
    {"ownSpeed", [](const SourceElement& e) { return e.ownSpeed ? 1.0 : 0.0; }},
    {"videoTransitionType", [](const SourceElement& e) { return double(e.videoTransitionType); }},
    {"videoTransitionDuration",
     [](const SourceElement& e) { return double(e.videoTransitionDuration); }},
    {"audioTransitionType", [](const SourceElement& e) { return double(e.audioTransitionType); }},
    {"audioTransitionDuration",
     [](const SourceElement& e) { return double(e.audioTransitionDuration); }},
};

// Kind: 0 media, 1 transition, 2 the refused element.
double ItemKind(const ViewItem& item) {
  return item.transition ? 1 : (item.flags & kRefused) != 0 ? 2 : 0;
}

using ItemColumn = std::pair<const char*, double (*)(const ViewItem&)>;
const ItemColumn kItemColumns[] = {
    {"kind", ItemKind},
    {"element",
     [](const ViewItem& i) { return i.element ? static_cast<double>(*i.element) : -1.0; }},
    {"track", [](const ViewItem& i) { return double(i.track); }},
    {"flags", [](const ViewItem& i) { return double(i.flags); }},
    {"mediaVideoIn", [](const ViewItem& i) { return double(i.mediaVideoIn); }},
    {"mediaVideoLength", [](const ViewItem& i) { return double(i.mediaVideoDuration); }},
    {"mediaAudioIn", [](const ViewItem& i) { return double(i.mediaAudioIn); }},
    {"mediaAudioLength", [](const ViewItem& i) { return double(i.mediaAudioDuration); }},
    {"asset", [](const ViewItem& i) { return double(i.asset); }},
    {"audio", [](const ViewItem& i) { return i.audio ? 1.0 : 0.0; }},
    {"effectKind", [](const ViewItem& i) { return double(i.effectKind); }},
    {"offset", [](const ViewItem& i) { return double(i.offset); }},
    {"duration", [](const ViewItem& i) { return double(i.duration); }},
};

// A mark with the row it is drawn in.
struct RowMark {
  const Mark* mark;
  std::size_t row;
};
using MarkColumn = std::pair<const char*, double (*)(const RowMark&)>;
const MarkColumn kMarkColumns[] = {
    {"row", [](const RowMark& m) { return double(m.row); }},
    {"start", [](const RowMark& m) { return m.mark->start; }},
    {"length", [](const RowMark& m) { return m.mark->length; }},
    {"kind", [](const RowMark& m) { return double(static_cast<int>(m.mark->kind)); }},
    {"flags", [](const RowMark& m) { return double(m.mark->flags); }},
    {"item", [](const RowMark& m) { return double(m.mark->item); }},
};

// Item identifiers, coded against the previous identifier of the same kind
// (transition or not): how many characters each shares with it at the start
// and at the end, and the middles of all of them joined by newlines; the script decodes them only
// when a search or an address needs one.
void WriteIds(DataWriter& json, const std::vector<ViewItem>& items) {
  const bool joinable = std::none_of(items.begin(), items.end(), [](const ViewItem& item) {
    return item.id.find('\n') != std::string::npos;
  });
  Column shared;
  json.Key("ids").Open('{');
  if (!joinable) {
    // An identifier with a newline in it: each whole, as a string of its own.
    for (std::size_t index = 0; index < items.size(); ++index) {
      shared.Add(0);
    }
    shared.Write(json, "shared");
    json.Key("rest").Open('[');
    for (const auto& item : items) {
      json.Text(item.id);
    }
    json.Close(']').Close('}');
    return;
  }
  std::string rests;
  Column suffixes;
  const std::string* previousIds[2] = {nullptr, nullptr};
  for (const auto& item : items) {
    const std::string*& previousId = previousIds[item.transition ? 1 : 0];
    std::size_t common = 0;
    std::size_t tail = 0;
    if (previousId != nullptr) {
      const std::string& before = *previousId;
      const std::size_t most = std::min(before.size(), item.id.size());
      // ASCII only: the viewer counts the shared parts in characters.
      while (common < most && before[common] == item.id[common] &&
             static_cast<unsigned char>(item.id[common]) < 0x80) {
        ++common;
      }
      while (common + tail < most &&
             before[before.size() - 1 - tail] == item.id[item.id.size() - 1 - tail] &&
             static_cast<unsigned char>(item.id[item.id.size() - 1 - tail]) < 0x80) {
        ++tail;
      }
    }
    previousId = &item.id;
    shared.Add(static_cast<double>(common));
    suffixes.Add(static_cast<double>(tail));
    if (&item != &items.front()) {
      rests += '\n';
    }
    rests.append(item.id, common, item.id.size() - common - tail);
  }
  shared.Write(json, "shared");
  suffixes.Write(json, "suffix");
  json.Key("rest").Text(rests).Close('}');
}

std::string ViewData(const Picture& picture) {
  const auto& timeline = picture.timeline;
  const auto& rate = picture.rate;
  const auto& labels = picture.labels;
  const auto& view = picture.view;
  std::string out;
  out.reserve(48 * view.items.size() + 4096);
  DataWriter json(out);
  json.Open('{');
  json.Key("title").Text(labels.title);
  json.Key("rate").Open('[').Int(rate.numerator).Int(rate.denominator).Close(']');
  json.Key("duration").Int(timeline.duration);
  json.Key("mode").Text(labels.durationMode);
  json.Key("auxReason").Text(labels.auxReason);
  Words(json, labels, rate);
  json.Key("first").Real(view.firstFrame).Key("last").Real(view.lastFrame);
  json.Key("refusal");
  if (labels.refusal) {
    json.Open('{').Key("message").Text(labels.refusal->message);
    json.Key("place").Text(labels.refusal->place).Key("element");
    if (labels.refusal->element) {
      json.Int(*labels.refusal->element);
    } else {
      json.Raw("null");
    }
    json.Close('}');
  } else {
    json.Raw("null");
  }
  json.Key("tracks").Open('[');
  for (const auto& id : view.trackIds) {
    json.Text(id);
  }
  json.Close(']');
  json.Key("assets").Open('[');
  for (const auto& asset : labels.assets) {
    json.Open('[').Text(asset.first).Text(asset.second).Close(']');
  }
  json.Close(']');
  // Clip names once each; the elements' "clip" column refers to them.
  std::unordered_map<std::string, std::size_t> clipIndex;
  Column elementClips;
  json.Key("clips").Open('[');
  for (const auto& e : labels.elements) {
    const auto added = clipIndex.emplace(e.clip, clipIndex.size());
    if (added.second) {
      json.Text(e.clip);
    }
    elementClips.Add(static_cast<double>(added.first->second));
  }
  json.Close(']');
  json.Key("tables").Open('{');
  WriteTable(json, "elements", labels.elements, kElementColumns);
  json.Key("elementClips").Open('{');
  elementClips.Write(json, "clip");
  json.Close('}');
  WriteTable(json, "items", view.items, kItemColumns);
  std::vector<RowMark> marks;
  for (std::size_t row = 0; row < view.rows.size(); ++row) {
    for (const auto& mark : view.rows[row].marks) {
      marks.push_back({&mark, row});
    }
  }
  WriteTable(json, "marks", marks, kMarkColumns);
  json.Close('}');
  WriteIds(json, view.items);
  // Media ids of the items whose asset the document does not list.
  json.Key("mediaIds").Open('{');
  for (std::size_t index = 0; index < view.items.size(); ++index) {
    const auto& item = view.items[index];
    if (!item.transition && item.asset < 0 && (item.flags & kRefused) == 0) {
      json.Key(std::to_string(index).c_str()).Text(item.mediaId);
    }
  }
  json.Close('}');
  // Findings: [kind, severity, element or -1, place, message, pointer, {numbers}],
  // the same list check prints.
  json.Key("findings").Open('[');
  for (const auto& finding : labels.findings) {
    const bool atElement = finding.place.source == DocumentPlace::Source::Element;
    json.Open('[').Text(finding.kind).Text(SeverityWord(finding.severity));
    json.Int(atElement ? static_cast<long long>(finding.place.element) : -1LL);
    json.Text(DescribePlace(finding.place)).Text(finding.message).Text(finding.place.pointer);
    json.Open('{');
    for (const auto& number : finding.numbers) {
      json.Key(number.first.c_str()).Int(number.second);
    }
    json.Close('}').Close(']');
  }
  json.Close(']');
  json.Key("rows").Open('[');
  for (const auto& row : view.rows) {
    json.Open('{').Key("track").Int(row.track).Key("sound").Int(row.sound ? 1 : 0);
    json.Key("count").Int(row.marks.size()).Close('}');
  }
  json.Close(']');
  json.Close('}');
  return out;
}

}  // namespace

std::string PictureToHtml(const Picture& picture) {
  const auto& labels = picture.labels;
  std::string page =
      "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
      "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
      // Nothing may be fetched: the page works offline and leaks nothing.
      "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
      "script-src 'unsafe-inline'; style-src 'unsafe-inline'; img-src data:\">\n<title>";
  page += EscapeXml(labels.title);
  page += "</title>\n<style>\n";
  page += ViewerStyle();
  page +=
      "</style>\n</head>\n<body>\n<noscript>The timeline viewer needs JavaScript; "
      "timeline-convert render without --html writes a static SVG picture.</noscript>\n"
      "<script type=\"application/json\" id=\"timeline-data\">";
  page += ViewData(picture);
  page += "</script>\n<script>\n";
  page += ViewerScript();
  page += "</script>\n</body>\n</html>\n";
  return page;
}

std::string TimelineToHtml(const Engine::Timeline& timeline, const Kov::TimePoints::Rate& rate,
                           const PictureLabels& labels) {
  auto copy = labels;
  Picture picture{timeline, rate, std::move(copy), {}};
  picture.view = MakeTimelineView(timeline, picture.labels);
  return PictureToHtml(picture);
}

}  // namespace TimelineConvert
