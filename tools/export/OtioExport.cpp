// Builds the OpenTimelineIO objects from the engine model: per engine track one
// track for the picture and one for the sound. The format lays the children of
// a track end to end and gives transitions no room of their own, so each clip
// is placed by the running end of the track; the checks below refuse exactly
// the timelines in which that would move a clip away from its engine place.
#include "export/OtioExport.h"

#include <cstdint>
#include <optional>
#include <unordered_map>

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

namespace {

using Json = nlohmann::ordered_json;
namespace Engine = Kov::TimelineEngineModel;
using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

constexpr const char* kEngineFields = "timeline_engine";
constexpr const char* kMediaKey = "DEFAULT_MEDIA";
constexpr std::int32_t kOverlappingKind = 2;

enum class Side { Picture, Sound };

struct SideTraits {
  const char* name;
  const char* trackKind;
  Engine::TrackItemType transitionType;
};

SideTraits TraitsOf(Side side) {
  return side == Side::Picture ? SideTraits{"picture", "Video", Engine::FxVideoTransition}
                               : SideTraits{"sound", "Audio", Engine::FxAudioTransition};
}

// The four numbers of one side of a media item.
struct Part {
  std::int64_t timelineIn;
  std::int64_t timelineDuration;
  std::int64_t mediaIn;
  std::int64_t mediaDuration;
};

Part PartOf(const Engine::MediaSummaryItem& item, Side side) {
  if (side == Side::Picture) {
    return {item.timelineVideoIn, item.timelineVideoDuration, item.mediaVideoIn,
            item.mediaVideoDuration};
  }
  return {item.timelineAudioIn, item.timelineAudioDuration, item.mediaAudioIn,
          item.mediaAudioDuration};
}

[[noreturn]] void Refuse(const std::string& reason) {
  throw OtioExportRefusal("Cannot export to OpenTimelineIO: " + reason);
}

// Engine values are whatever a caller put there; sums that leave the 64-bit
// range are refused rather than wrapped.
std::int64_t Add(std::int64_t a, std::int64_t b, const std::string& itemId) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) {
    Refuse("the frame numbers of item " + itemId + " leave the 64-bit range.");
  }
  return sum;
}

std::int64_t Subtract(std::int64_t a, std::int64_t b, const std::string& itemId) {
  std::int64_t difference = 0;
  if (__builtin_sub_overflow(a, b, &difference)) {
    Refuse("the frame numbers of item " + itemId + " leave the 64-bit range.");
  }
  return difference;
}

Json WithEngineFields(Json fields) {
  return Json{{kEngineFields, std::move(fields)}};
}

class DocumentBuilder {
 public:
  DocumentBuilder(const Engine::Timeline& timeline, const OtioExportOptions& options)
      : timeline_(timeline),
        options_(options),
        rate_(static_cast<double>(options.rate.numerator) /
              static_cast<double>(options.rate.denominator)) {
    for (const auto& info : timeline.mediaInfos) {
      mediaInfos_.emplace(info.id.Text(), &info);  // the first of equal ids wins
    }
  }

  Json Document() const {
    Json tracks = Json::array();
    for (std::size_t index = 0; index < timeline_.tracks.size(); ++index) {
      for (const Side side : {Side::Picture, Side::Sound}) {
        if (auto track = SideTrack(timeline_.tracks[index], index, side)) {
          tracks.push_back(std::move(*track));
        }
      }
    }
    Json stack =
        Json{{"OTIO_SCHEMA", "Stack.1"}, {"metadata", Json::object()},   {"name", "tracks"},
             {"source_range", nullptr},  {"effects", Json::array()},     {"markers", Json::array()},
             {"enabled", true},          {"children", std::move(tracks)}};
    const bool fromItems = options_.durationMode == TimelineConverter::FromTrackItems;
    Json fields{
        {"id", timeline_.id.Text()},
        {"duration", timeline_.duration},
        {"durationMode", fromItems ? "FromTrackItems" : "FromPlaylist"},
        {"rate",
         {{"numerator", options_.rate.numerator}, {"denominator", options_.rate.denominator}}}};
    return Json{
        {"OTIO_SCHEMA", "Timeline.1"},
        {"metadata", WithEngineFields(std::move(fields))},
        {"name", options_.timelineName.empty() ? timeline_.id.Text() : options_.timelineName},
        {"global_start_time", Time(0)},
        {"tracks", std::move(stack)}};
  }

 private:
  Json Time(double frames) const {
    return Json{{"OTIO_SCHEMA", "RationalTime.1"}, {"rate", rate_}, {"value", frames}};
  }

  Json Range(double start, double duration) const {
    return Json{
        {"OTIO_SCHEMA", "TimeRange.1"}, {"duration", Time(duration)}, {"start_time", Time(start)}};
  }

  // The fields every item of the format carries, in its writer's order.
  static Json Item(const char* schema, const std::string& name, Json metadata, Json sourceRange,
                   Json effects) {
    return Json{{"OTIO_SCHEMA", schema},
                {"metadata", std::move(metadata)},
                {"name", name},
                {"source_range", std::move(sourceRange)},
                {"effects", std::move(effects)},
                {"markers", Json::array()},
                {"enabled", true}};
  }

  // One engine track's picture or sound; nothing when that side holds no clip.
  std::optional<Json> SideTrack(const Engine::Track& track, std::size_t index, Side side) const {
    const SideTraits traits = TraitsOf(side);
    const std::string trackName = "track " + std::to_string(index + 1);
    Json children = Json::array();
    bool hasClip = false;
    std::int64_t trackEnd = 0;
    // The transition waiting for the next media item, and its document.
    const Engine::FxTransitionItem* pending = nullptr;
    Json pendingTransition;
    for (const auto& item : track.items) {
      if (!item) {
        Refuse("engine " + trackName + " holds an empty item.");
      }
      const std::string id = item->Id().Text();
      const auto type = item->GetType();
      const auto* transition = dynamic_cast<const Engine::FxTransitionItem*>(item.get());
      const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get());
      if (transition != nullptr && type == traits.transitionType) {
        if (pending != nullptr) {
          Refuse("transition " + id + " follows transition " + pending->Id().Text() +
                 " without a media item between them.");
        }
        pending = transition;
        pendingTransition = Transition(*transition);
        continue;
      }
      if (transition != nullptr &&
          (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition)) {
        continue;  // the other side's
      }
      if (media == nullptr || type != Engine::MediaSummary) {
        Refuse("item " + id + " of engine " + trackName + " has the unknown type " +
               std::to_string(static_cast<std::int32_t>(type)) + ".");
      }
      const Part part = PartOf(*media, side);
      if (part.timelineDuration < 0) {
        Refuse("item " + id + " has a negative " + traits.name + " length (" +
               std::to_string(part.timelineDuration) + " frames).");
      }
      if (part.timelineDuration == 0) {
        if (pending != nullptr) {
          Refuse("transition " + pending->Id().Text() + " leads into item " + id +
                 ", which has no " + traits.name + ".");
        }
        continue;
      }
      const std::int64_t overlap =
          pending != nullptr && pending->FxTransition().kind == kOverlappingKind
              ? pending->FxTransition().offset
              : 0;
      const std::int64_t start = Add(part.timelineIn, overlap, id);
      const std::int64_t end = Add(part.timelineIn, part.timelineDuration, id);
      if (end < start) {
        Refuse("item " + id + " is shorter on the " + traits.name + " side (" +
               std::to_string(part.timelineDuration) + " frames) than the " +
               std::to_string(overlap) + " frames its transition " + pending->Id().Text() +
               " overlaps.");
      }
      if (start < 0) {
        Refuse("item " + id + " starts its " + traits.name + " before frame 0, at frame " +
               std::to_string(start) + ".");
      }
      if (start < trackEnd) {
        Refuse("item " + id + " overlaps the " + traits.name + " before it: it starts at frame " +
               std::to_string(start) + ", the previous " + traits.name + " ends at frame " +
               std::to_string(trackEnd) + ".");
      }
      if (start > trackEnd) {
        children.push_back(Item("Gap.1", "", Json::object(),
                                Range(0, static_cast<double>(Subtract(start, trackEnd, id))),
                                Json::array()));
      }
      if (pending != nullptr) {
        children.push_back(std::move(pendingTransition));
        pending = nullptr;
      }
      children.push_back(Clip(*media, side, part, overlap));
      hasClip = true;
      trackEnd = end;
    }
    if (pending != nullptr) {
      Refuse("transition " + pending->Id().Text() + " at the end of engine " + trackName +
             " has no media item after it.");
    }
    if (!hasClip) {
      return std::nullopt;
    }
    Json fields{{"track", track.id.Text()}, {"index", index}, {"side", traits.name}};
    Json result = Item("Track.1", trackName + " " + traits.name,
                       WithEngineFields(std::move(fields)), nullptr, Json::array());
    result["children"] = std::move(children);
    result["kind"] = traits.trackKind;
    return result;
  }

  Json Transition(const Engine::FxTransitionItem& item) const {
    const std::string id = item.Id().Text();
    const auto& effect = item.FxTransition();
    const std::int64_t afterCut = Subtract(effect.duration, effect.offset, id);
    if (effect.offset < 0 || afterCut < 0) {
      Refuse("transition " + id + " reaches a negative length before or after its cut (offset " +
             std::to_string(effect.offset) + ", duration " + std::to_string(effect.duration) +
             ").");
    }
    Json fields{{"item", id},
                {"kind", effect.kind},
                {"offset", effect.offset},
                {"duration", effect.duration}};
    return Json{{"OTIO_SCHEMA", "Transition.1"},
                {"metadata", WithEngineFields(std::move(fields))},
                {"name", id},
                {"in_offset", Time(static_cast<double>(effect.offset))},
                {"out_offset", Time(static_cast<double>(afterCut))},
                {"transition_type",
                 effect.kind == kOverlappingKind ? "SMPTE_Dissolve" : "Custom_Transition"}};
  }

  // The overlap of an incoming overlapping transition is cut from the front of
  // the clip: those media frames become the transition's handle.
  Json Clip(const Engine::MediaSummaryItem& item, Side side, const Part& part,
            std::int64_t overlap) const {
    const std::string mediaId = item.mediaId.Text();
    Json effects = Json::array();
    double timeScalar = 1;
    if (part.mediaDuration != part.timelineDuration) {
      timeScalar =
          static_cast<double>(part.mediaDuration) / static_cast<double>(part.timelineDuration);
      effects.push_back(Json{{"OTIO_SCHEMA", "LinearTimeWarp.1"},
                             {"metadata", Json::object()},
                             {"name", "speed"},
                             {"effect_name", "LinearTimeWarp"},
                             {"enabled", true},
                             {"time_scalar", timeScalar}});
    }
    Json fields{{"item", item.Id().Text()},
                {"side", TraitsOf(side).name},
                {"timelineIn", part.timelineIn},
                {"timelineDuration", part.timelineDuration},
                {"mediaId", mediaId},
                {"mediaIn", part.mediaIn},
                {"mediaDuration", part.mediaDuration}};
    const auto name = options_.assetNames.find(mediaId);
    Json clip =
        Item("Clip.2", name == options_.assetNames.end() ? mediaId : name->second,
             WithEngineFields(std::move(fields)),
             Range(static_cast<double>(part.mediaIn) + static_cast<double>(overlap) * timeScalar,
                   static_cast<double>(part.timelineDuration - overlap)),
             std::move(effects));
    clip["media_references"] = Json{{kMediaKey, Reference(item.mediaId)}};
    clip["active_media_reference_key"] = kMediaKey;
    return clip;
  }

  // Where the media lives is not the engine's business: the reference names
  // the asset and carries its usable range when that is known.
  Json Reference(const Kov::BusinessEntityModel::BaseTypes::Identifier& mediaId) const {
    Json metadata = Json::object();
    Json availableRange = nullptr;
    const auto found = mediaInfos_.find(mediaId.Text());
    if (found != mediaInfos_.end()) {
      const Engine::MediaInfo& info = *found->second;
      metadata = WithEngineFields(Json{{"limitIn", info.limitIn},
                                       {"duration", info.duration},
                                       {"tracksDescription", info.tracksDescription}});
      if (info.duration > 0) {
        availableRange =
            Range(static_cast<double>(info.limitIn), static_cast<double>(info.duration));
      }
    }
    return Json{{"OTIO_SCHEMA", "MissingReference.1"},
                {"metadata", std::move(metadata)},
                {"name", mediaId.Text()},
                {"available_range", std::move(availableRange)},
                {"available_image_bounds", nullptr}};
  }

  const Engine::Timeline& timeline_;
  const OtioExportOptions& options_;
  double rate_;
  std::unordered_map<std::string, const Engine::MediaInfo*> mediaInfos_;
};

}  // namespace

OtioExportOptions OtioOptionsFromDocument(const PlaylistDocument& document,
                                          TimelineConverter::DurationMode mode) {
  OtioExportOptions options;
  options.rate = document.playlist.rate;
  options.durationMode = mode;
  options.timelineName = document.playlist.umId.GetUmId();
  for (const auto& asset : document.assetOrder) {
    if (!asset.umId.empty()) {
      options.assetNames[asset.key.Text()] = asset.umId;
    }
  }
  return options;
}

Json TimelineToOtio(const Engine::Timeline& timeline, const OtioExportOptions& options) {
  if (options.rate.numerator <= 0 || options.rate.denominator <= 0) {
    Refuse("the rate " + std::to_string(options.rate.numerator) + "/" +
           std::to_string(options.rate.denominator) + " is not a positive frame rate.");
  }
  return DocumentBuilder(timeline, options).Document();
}

std::string TimelineToOtioText(const Engine::Timeline& timeline, const OtioExportOptions& options) {
  // Identifiers that are not valid UTF-8 are written with replacement
  // characters, as in the engine JSON.
  return TimelineToOtio(timeline, options).dump(4, ' ', false, Json::error_handler_t::replace) +
         "\n";
}

std::string ExportOtio(const Outcome& outcome, const std::vector<Finding>& findings,
                       const OtioExportOptions& options) {
  for (const auto& finding : findings) {
    if (finding.severity == Severity::BlocksOtio) {
      throw OtioExportRefusal("Cannot export to OpenTimelineIO: " + finding.message, finding.place);
    }
  }
  return TimelineToOtioText(outcome.timeline, options);
}

}  // namespace TimelineConvert
