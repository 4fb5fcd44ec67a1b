// Writes the engine model field by field. Items are told apart by their
// `type`: media items carry the eleven media fields, transition items their
// effect, and an item of any other class only its id and type.
#include "export/EngineJson.h"

#include <nlohmann/json.hpp>
#include <sstream>

namespace TimelineConvert {

namespace {

using Json = nlohmann::ordered_json;
namespace Engine = Kov::TimelineEngineModel;

Json ItemToJson(const Engine::TrackItem& item) {
  Json json{{"id", item.Id().Text()}, {"type", static_cast<std::int32_t>(item.GetType())}};
  if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(&item)) {
    json["timelineVideoIn"] = media->timelineVideoIn;
    json["timelineVideoDuration"] = media->timelineVideoDuration;
    json["timelineAudioIn"] = media->timelineAudioIn;
    json["timelineAudioDuration"] = media->timelineAudioDuration;
    json["mediaId"] = media->mediaId.Text();
    json["mediaVideoIn"] = media->mediaVideoIn;
    json["mediaVideoDuration"] = media->mediaVideoDuration;
    json["mediaAudioIn"] = media->mediaAudioIn;
    json["mediaAudioDuration"] = media->mediaAudioDuration;
    json["reservedA"] = media->reservedA;
    json["reservedB"] = media->reservedB;
  } else if (const auto* transition = dynamic_cast<const Engine::FxTransitionItem*>(&item)) {
    const auto& effect = transition->FxTransition();
    json["effect"] = Json{{"kind", effect.kind},
                          {"offset", effect.offset},
                          {"duration", effect.duration},
                          {"name", effect.name}};
  }
  return json;
}

// Texts that are not valid UTF-8 are written with replacement characters
// rather than refused: the tool reports, it does not judge the library's ids.
std::string Dump(const Json& json) {
  return json.dump(2, ' ', false, Json::error_handler_t::replace);
}

// A value dumped on its own, indented as the member of an array at `indent`.
void WriteIndented(std::ostream& out, const Json& json, const std::string& indent) {
  const std::string text = Dump(json);
  out << indent;
  for (const char c : text) {
    out << c;
    if (c == '\n') out << indent;
  }
}

// Writes the elements of an array, each made by `element(index)` only when it
// is written, so that no tree of the whole array is ever held.
template <typename MakeElement>
void WriteArray(std::ostream& out, std::size_t size, const std::string& indent,
                MakeElement element) {
  if (size == 0) {
    out << "[]";
    return;
  }
  out << "[\n";
  for (std::size_t index = 0; index < size; ++index) {
    WriteIndented(out, element(index), indent + "  ");
    out << (index + 1 < size ? ",\n" : "\n");
  }
  out << indent << "]";
}

}  // namespace

// The same text as dumping one tree of the whole timeline with an indent of
// two, written track by track and item by item.
void WriteTimelineJson(std::ostream& out, const Engine::Timeline& timeline) {
  out << "{\n  \"id\": " << Dump(timeline.id.Text())
      << ",\n  \"secondaryId\": " << Dump(timeline.secondaryId.Text())
      << ",\n  \"duration\": " << Dump(timeline.duration) << ",\n  \"tracks\": ";
  if (timeline.tracks.empty()) {
    out << "[]";
  } else {
    out << "[\n";
    for (std::size_t index = 0; index < timeline.tracks.size(); ++index) {
      const auto& track = timeline.tracks[index];
      out << "    {\n      \"id\": " << Dump(track.id.Text())
          << ",\n      \"type\": " << Dump(track.type) << ",\n      \"items\": ";
      WriteArray(out, track.items.size(), "      ", [&](std::size_t item) {
        return track.items[item] ? ItemToJson(*track.items[item]) : Json();
      });
      out << "\n    }" << (index + 1 < timeline.tracks.size() ? ",\n" : "\n");
    }
    out << "  ]";
  }
  out << ",\n  \"mediaInfos\": ";
  WriteArray(out, timeline.mediaInfos.size(), "  ", [&](std::size_t index) {
    const auto& info = timeline.mediaInfos[index];
    return Json{{"id", info.id.Text()},
                {"limitIn", info.limitIn},
                {"duration", info.duration},
                {"tracksDescription", info.tracksDescription}};
  });
  out << "\n}\n";
}

std::string TimelineToJsonText(const Engine::Timeline& timeline) {
  std::ostringstream text;
  WriteTimelineJson(text, timeline);
  return text.str();
}

}  // namespace TimelineConvert
