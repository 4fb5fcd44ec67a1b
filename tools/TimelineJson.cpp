// Writes the engine model field by field. Items are told apart by their
// `type`: media items carry the eleven media fields, transition items their
// effect, and an item of any other class only its id and type.
#include "TimelineJson.h"

#include <nlohmann/json.hpp>

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

}  // namespace

std::string TimelineToJsonText(const Engine::Timeline& timeline) {
  Json tracks = Json::array();
  for (const auto& track : timeline.tracks) {
    Json items = Json::array();
    for (const auto& item : track.items) {
      items.push_back(item ? ItemToJson(*item) : Json());
    }
    tracks.push_back(Json{{"id", track.id.Text()}, {"type", track.type}, {"items", items}});
  }
  Json mediaInfos = Json::array();
  for (const auto& info : timeline.mediaInfos) {
    mediaInfos.push_back(Json{{"id", info.id.Text()},
                              {"limitIn", info.limitIn},
                              {"duration", info.duration},
                              {"tracksDescription", info.tracksDescription}});
  }
  const Json json{{"id", timeline.id.Text()},
                  {"secondaryId", timeline.secondaryId.Text()},
                  {"duration", timeline.duration},
                  {"tracks", tracks},
                  {"mediaInfos", mediaInfos}};
  // Texts that are not valid UTF-8 are written with replacement characters
  // rather than refused: the tool reports, it does not judge the library's ids.
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace TimelineConvert
