// Writes the viewer page: the data as one JSON value in a script element of
// its own type (the browser parses it once, fast), then the viewer. Marks go
// as a flat array of numbers per row so that a long timeline stays compact.
#include "picture/HtmlPage.h"

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <set>
#include <unordered_map>
#include <utility>

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

std::string ViewData(const Picture& picture) {
  const auto& timeline = picture.timeline;
  const auto& rate = picture.rate;
  const auto& labels = picture.labels;
  const auto& view = picture.view;
  std::string out;
  out.reserve(128 * view.items.size() + 4096);
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
  // Clip names once each; elements refer to them by index.
  std::unordered_map<std::string, std::size_t> clipIndex;
  json.Key("clips").Open('[');
  for (const auto& e : labels.elements) {
    if (clipIndex.emplace(e.clip, clipIndex.size()).second) {
      json.Text(e.clip);
    }
  }
  json.Close(']');
  // Element: [number, item number, clip, in kind, out kind, video in, out,
  // audio in, out, speed numerator, denominator, own speed, video transition
  // type, duration, audio transition type, duration], trailing zeros left out.
  json.Key("elements").Open('[');
  for (const auto& e : labels.elements) {
    json.Open('[').Int(e.number).Int(e.itemNumber).Int(clipIndex[e.clip]).Int(e.inBoundaryKind);
    json.Int(e.outBoundaryKind).Int(e.videoIn).Int(e.videoOut).Int(e.audioIn).Int(e.audioOut);
    json.Int(e.speedNumerator).Int(e.speedDenominator);
    const std::int64_t rare[] = {e.ownSpeed ? 1 : 0, e.videoTransitionType,
                                 e.videoTransitionDuration, e.audioTransitionType,
                                 e.audioTransitionDuration};
    std::size_t used = std::size(rare);
    while (used > 0 && rare[used - 1] == 0) {
      --used;
    }
    for (std::size_t field = 0; field < used; ++field) {
      json.Int(rare[field]);
    }
    json.Close(']');
  }
  json.Close(']');
  // Identifiers are front-coded: how many characters the previous item's
  // identifier of the same kind (transition or not) shares with this one,
  // then the rest (neighbours differ in a few digits). Timeline positions and lengths are those of
  // the marks. Media: [0, shared, rest, element, track, flags, media video in, length, media audio
  // in, length, asset, media id when no asset]; transition: [1, shared, rest, element, track,
  // flags, audio, kind, offset, duration]; the refused element: [2, 0, "", element, track, flags].
  json.Key("items").Open('[');
  const std::string* previousIds[2] = {nullptr, nullptr};
  for (const auto& item : view.items) {
    const int kind = item.transition ? 1 : (item.flags & kRefused) != 0 ? 2 : 0;
    const std::string*& previousId = previousIds[kind == 1 ? 1 : 0];
    std::size_t shared = 0;
    if (previousId != nullptr) {
      const std::size_t most = std::min(previousId->size(), item.id.size());
      // ASCII only: the viewer counts the shared part in characters.
      while (shared < most && (*previousId)[shared] == item.id[shared] &&
             static_cast<unsigned char>(item.id[shared]) < 0x80) {
        ++shared;
      }
    }
    previousId = &item.id;
    json.Open('[').Int(kind).Int(shared).Text(item.id.substr(shared));
    json.Int(item.element ? static_cast<long long>(*item.element) : -1LL);
    json.Int(item.track).Int(item.flags);
    if (kind == 0) {
      json.Int(item.mediaVideoIn).Int(item.mediaVideoDuration);
      json.Int(item.mediaAudioIn).Int(item.mediaAudioDuration).Int(item.asset);
      if (item.asset < 0) {
        json.Text(item.mediaId);
      }
    } else if (kind == 1) {
      json.Int(item.audio ? 1 : 0).Int(item.effectKind).Int(item.offset).Int(item.duration);
    }
    json.Close(']');
  }
  json.Close(']');
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
  // Marks: five numbers each: start, length, kind, flags, item.
  json.Key("rows").Open('[');
  for (const auto& row : view.rows) {
    json.Open('{').Key("track").Int(row.track).Key("sound").Int(row.sound ? 1 : 0);
    json.Key("marks").Open('[');
    for (const auto& mark : row.marks) {
      json.Real(mark.start).Real(mark.length).Int(static_cast<int>(mark.kind)).Int(mark.flags);
      json.Int(mark.item);
    }
    json.Close(']').Close('}');
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
