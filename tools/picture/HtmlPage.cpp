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

#include "export/Timecode.h"
#include "picture/PageColumns.h"
#include "picture/PictureText.h"

namespace TimelineConvert {

namespace {

// The findings of one kind the page draws and lists; check --all lists every one.
constexpr std::size_t kPageFindingsPerKind = kShownFindingsPerKind;

namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

// The words and numbers the viewer shows as the SVG does, made here once: the
// flag bits by name, what each problem flag means, the frames per second of
// the timecode and the labels it skips a minute, the ruler's steps, the aux
// item's label and the text of every speed the elements play at.
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
  // The timecode rule's numbers, so that the viewer counts as the SVG does.
  TimecodeBase timecode;
  timecode.framesPerSecond = NominalFrameRate(rate);
  timecode.dropFrame = IsDropFrameRate(rate);
  json.Close('}').Key("framesPerSecond").Int(timecode.framesPerSecond);
  json.Key("droppedPerMinute").Int(DroppedPerMinute(timecode));
  json.Key("tickSteps").Open('[');
  for (const long long step : TickSteps(timecode.framesPerSecond)) {
    json.Int(step);
  }
  json.Close(']').Key("auxItem").Text(AuxItemText(labels.auxReason));
  json.Key("speeds").Open('{');
  // A speed runs on over many elements: each run is looked up once.
  std::set<std::pair<std::int32_t, std::int32_t>> speeds;
  std::pair<std::int32_t, std::int32_t> last{0, 0};
  for (const auto& element : labels.elements) {
    const std::pair<std::int32_t, std::int32_t> speed{element.speedNumerator,
                                                      element.speedDenominator};
    if (speeds.empty() || speed != last) {
      speeds.insert(speed);
      last = speed;
    }
  }
  for (const auto& speed : speeds) {
    const std::string key = std::to_string(speed.first) + "/" + std::to_string(speed.second);
    json.Key(key.c_str()).Text(SpeedText(speed.first, speed.second));
  }
  json.Close('}').Close('}');
}

using ElementColumn = std::pair<const char*, double (*)(const SourceElement&)>;
const ElementColumn kElementColumns[] = {
    {"number", [](const SourceElement& e) { return double(e.element->number); }},
    {"itemNumber", [](const SourceElement& e) { return double(e.element->itemNumber); }},
    {"inBoundaryKind", [](const SourceElement& e) { return double(e.element->inBoundaryKind); }},
    {"outBoundaryKind", [](const SourceElement& e) { return double(e.element->outBoundaryKind); }},
    {"videoIn", [](const SourceElement& e) { return double(e.element->videoInValue); }},
    {"videoOut", [](const SourceElement& e) { return double(e.element->videoOutValue); }},
    {"audioIn", [](const SourceElement& e) { return double(e.element->audioInValue); }},
    {"audioOut", [](const SourceElement& e) { return double(e.element->audioOutValue); }},
    {"speedNumerator", [](const SourceElement& e) { return double(e.speedNumerator); }},
    {"speedDenominator", [](const SourceElement& e) { return double(e.speedDenominator); }},
    {"ownSpeed", [](const SourceElement& e) { return e.ownSpeed ? 1.0 : 0.0; }},
    {"videoTransitionType",
     [](const SourceElement& e) { return double(e.element->transitionType); }},
    {"videoTransitionDuration",
     [](const SourceElement& e) { return double(e.element->videoTransitionDuration); }},
    {"audioTransitionType",
     [](const SourceElement& e) { return double(e.element->audioTransitionType); }},
    {"audioTransitionDuration",
     [](const SourceElement& e) { return double(e.element->audioTransitionDuration); }},
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
    {"mediaVideoIn", [](const ViewItem& i) { return double(i.Media().mediaVideoIn); }},
    {"mediaVideoLength", [](const ViewItem& i) { return double(i.Media().mediaVideoDuration); }},
    {"mediaAudioIn", [](const ViewItem& i) { return double(i.Media().mediaAudioIn); }},
    {"mediaAudioLength", [](const ViewItem& i) { return double(i.Media().mediaAudioDuration); }},
    {"asset", [](const ViewItem& i) { return double(i.asset); }},
    {"audio", [](const ViewItem& i) { return i.audio ? 1.0 : 0.0; }},
    {"effectKind", [](const ViewItem& i) { return double(i.Effect().kind); }},
    {"offset", [](const ViewItem& i) { return double(i.Effect().offset); }},
    {"duration", [](const ViewItem& i) { return double(i.Effect().duration); }},
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
// and at the end, and the middles of all of them joined by newlines; the
// script decodes them only when a search or an address needs one.
void WriteIds(DataWriter& json, const std::vector<ViewItem>& items) {
  const bool joinable = std::none_of(items.begin(), items.end(), [](const ViewItem& item) {
    return item.Id().find('\n') != std::string::npos;
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
      json.Text(item.Id());
    }
    json.Close(']').Close('}');
    return;
  }
  std::string rests;
  Column suffixes;
  shared.Reserve(items.size());
  suffixes.Reserve(items.size());
  const std::string* previousIds[2] = {nullptr, nullptr};
  for (const auto& item : items) {
    const std::string*& previousId = previousIds[item.transition ? 1 : 0];
    const std::string& id = item.Id();
    std::size_t common = 0;
    std::size_t tail = 0;
    if (previousId != nullptr) {
      const std::string& before = *previousId;
      const std::size_t most = std::min(before.size(), id.size());
      // ASCII only: the viewer counts the shared parts in characters.
      while (common < most && before[common] == id[common] &&
             static_cast<unsigned char>(id[common]) < 0x80) {
        ++common;
      }
      while (common + tail < most && before[before.size() - 1 - tail] == id[id.size() - 1 - tail] &&
             static_cast<unsigned char>(id[id.size() - 1 - tail]) < 0x80) {
        ++tail;
      }
    }
    previousId = &id;
    shared.Add(static_cast<double>(common));
    suffixes.Add(static_cast<double>(tail));
    if (&item != &items.front()) {
      rests += '\n';
    }
    rests.append(id, common, id.size() - common - tail);
  }
  shared.Write(json, "shared");
  suffixes.Write(json, "suffix");
  json.Key("rest").Text(rests).Close('}');
}

// Appends the data to the page being written, which is the largest part of
// a large page: made apart and then copied in, it would be held twice.
void WriteViewData(const Picture& picture, std::string& out) {
  const auto& timeline = picture.timeline;
  const auto& rate = picture.rate;
  const auto& labels = picture.labels;
  const auto& view = picture.view;
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
  elementClips.Reserve(labels.elements.size());
  json.Key("clips").Open('[');
  for (const auto& e : labels.elements) {
    const auto added = clipIndex.emplace(e.element->umId.GetUmId(), clipIndex.size());
    if (added.second) {
      json.Text(added.first->first);
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
  std::size_t markCount = 0;
  for (const auto& row : view.rows) {
    markCount += row.marks.size();
  }
  WriteVisitedTable(json, "marks", markCount, kMarkColumns, [&view](const auto& add) {
    for (std::size_t row = 0; row < view.rows.size(); ++row) {
      for (const auto& mark : view.rows[row].marks) {
        add(RowMark{&mark, row});
      }
    }
  });
  json.Close('}');
  WriteIds(json, view.items);
  // Media ids of the items whose asset the document does not list.
  json.Key("mediaIds").Open('{');
  for (std::size_t index = 0; index < view.items.size(); ++index) {
    const auto& item = view.items[index];
    if (!item.transition && item.asset < 0 && (item.flags & kRefused) == 0) {
      json.Key(std::to_string(index).c_str()).Text(item.Media().mediaId.Text());
    }
  }
  json.Close('}');
  // Findings: [kind, severity, element or -1, place, message, pointer, {numbers}],
  // the same list check prints. A long sequence can hold a finding of one kind
  // on nearly every element (a drift after an early overlap); past
  // kPageFindingsPerKind of a kind the page says how many more there are
  // instead, as check does past its first ten, so that the page stays small.
  json.Key("findings").Open('[');
  std::unordered_map<std::string, std::size_t> findingsOfKind;
  for (const auto& compact : labels.findings) {
    if (++findingsOfKind[KindWord(compact.kind)] > kPageFindingsPerKind) {
      continue;
    }
    const FindingWords finding = labels.findings.Words(compact);
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
  for (const auto& finding : labels.findings) {
    const std::string kind = KindWord(finding.kind);
    auto found = findingsOfKind.find(kind);
    // Counted from all found: the picture holds no more than the page shows.
    const std::size_t ofKind = labels.findings.CountOf(finding.kind);
    if (found == findingsOfKind.end() || ofKind <= kPageFindingsPerKind) {
      continue;
    }
    const auto more = static_cast<long long>(ofKind - kPageFindingsPerKind);
    json.Open('[').Text(kind).Text(SeverityWord(finding.severity)).Int(-1LL).Text("");
    json.Text(std::to_string(more) + " more " + kind + " findings (check --all lists them)");
    json.Text("").Open('{').Key("more").Int(more).Close('}').Close(']');
    findingsOfKind.erase(found);
  }
  json.Close(']');
  json.Key("rows").Open('[');
  for (const auto& row : view.rows) {
    json.Open('{').Key("track").Int(row.track).Key("sound").Int(row.sound ? 1 : 0);
    json.Key("count").Int(row.marks.size()).Close('}');
  }
  json.Close(']');
  json.Close('}');
}

// Room for the whole page at once: the findings' words are most of a large
// page, and a string that grows by doubling would hold up to three times
// the page while it copies. Room that is never written costs no memory.
std::size_t PageSizeEstimate(const Picture& picture) {
  std::size_t size = 80 * picture.view.items.size() + 4096 + std::strlen(ViewerStyle()) +
                     std::strlen(ViewerScript());
  std::size_t findingsOfKind[kFindingKindCount] = {};
  for (const auto& finding : picture.labels.findings) {
    // Only the findings the page shows, each about as long as its message,
    // pointer and clip twice over.
    if (++findingsOfKind[static_cast<std::size_t>(finding.kind)] <= kPageFindingsPerKind) {
      size += 2 * 160 + 64;
    }
  }
  return size;
}

}  // namespace

std::string PictureToHtml(const Picture& picture) {
  const auto& labels = picture.labels;
  std::string page;
  page.reserve(PageSizeEstimate(picture));
  page +=
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
  WriteViewData(picture, page);
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
