// Builds the OpenTimelineIO document from the engine model: per engine track
// one track for the picture and one for the sound. The format lays the
// children of a track end to end and gives transitions no room of their own,
// so each clip is placed by the running end of the track; the checks below
// refuse exactly the timelines in which that would move a clip away from its
// engine place. The text is written straight into one string as the walk goes,
// so the export costs little more than its output.
#include "export/OtioExport.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <numeric>
#include <optional>
#include <sstream>
#include <unordered_map>

#include "document/PlaylistDocument.h"
#include "export/EdlInput.h"
#include "export/JsonText.h"

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

constexpr const char* kEngineFields = "timeline_engine";
constexpr const char* kMediaKey = "DEFAULT_MEDIA";
constexpr std::int32_t kOverlappingKind = 2;
// The text handed on at a time: large enough that writing costs little.
constexpr std::size_t kBlockSize = 1 << 20;

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

// `itemId`: the engine item the reason names, so that a caller can place it.
[[noreturn]] void Refuse(const std::string& reason, const std::string& itemId = "") {
  throw OtioExportRefusal("Cannot export to OpenTimelineIO: " + reason, {}, itemId);
}

// Engine values are whatever a caller put there; sums that leave the 64-bit
// range are refused rather than wrapped.
std::int64_t Add(std::int64_t a, std::int64_t b, const std::string& itemId) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) {
    Refuse("the frame numbers of item " + itemId + " leave the 64-bit range.", itemId);
  }
  return sum;
}

std::int64_t Multiply(std::int64_t a, std::int64_t b, const std::string& itemId) {
  std::int64_t product = 0;
  if (__builtin_mul_overflow(a, b, &product)) {
    Refuse("the frame numbers of item " + itemId + " leave the 64-bit range.", itemId);
  }
  return product;
}

// A speed as a fraction in lowest terms, denominator positive.
struct Fraction {
  std::int64_t numerator = 1;
  std::int64_t denominator = 1;
  std::string Text() const { return std::to_string(numerator) + "/" + std::to_string(denominator); }
};

Fraction Reduced(std::int64_t numerator, std::int64_t denominator) {
  const std::int64_t divisor = std::gcd(numerator, denominator);
  Fraction fraction{numerator / divisor, denominator / divisor};
  if (fraction.denominator < 0) {
    fraction = {-fraction.numerator, -fraction.denominator};
  }
  return fraction;
}

// numerator/denominator to the nearest whole number, halves up.
std::int64_t RoundedQuotient(std::int64_t numerator, std::int64_t denominator) {
  std::int64_t whole = numerator / denominator;
  std::int64_t rest = numerator % denominator;
  if (rest < 0) {
    whole -= 1;
    rest += denominator;
  }
  return whole + (2 * rest >= denominator ? 1 : 0);
}

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

struct SideTrackPlan {
  std::size_t index;
  Side side;
  std::int64_t end;  // where its last clip ends
};

class DocumentWriter {
 public:
  // Writes into `sink` when given, a block at a time; only checks otherwise.
  DocumentWriter(const Engine::Timeline& timeline, const OtioExportOptions& options,
                 std::vector<OtioNote>* approximations, std::ostream* sink)
      : timeline_(timeline),
        options_(options),
        approximations_(approximations),
        sink_(sink),
        json_(buffer_, options.compact, sink == nullptr),
        rate_(static_cast<double>(options.rate.numerator) /
              static_cast<double>(options.rate.denominator)) {
    for (const auto& info : timeline.mediaInfos) {
      mediaInfos_.emplace(info.id.Text(), &info);  // the first of equal ids wins
    }
  }

  void Document() {
    std::vector<SideTrackPlan> plans;
    std::int64_t longest = 0;
    for (std::size_t index = 0; index < timeline_.tracks.size(); ++index) {
      for (const Side side : {Side::Picture, Side::Sound}) {
        if (const auto end = SideEnd(timeline_.tracks[index], side)) {
          plans.push_back({index, side, *end});
          longest = std::max(longest, *end);
        }
      }
    }
    // Every track lasts as long as the engine's timeline, so that its
    // duration (and the duration mode behind it) travels; a track that is
    // longer sets the length instead.
    length_ = std::max(longest, timeline_.duration);
    const bool fromItems = options_.durationMode == TimelineConverter::FromTrackItems;
    json_.BeginObject().Member("OTIO_SCHEMA", "Timeline.1").Key("metadata").BeginObject();
    json_.Key(kEngineFields).BeginObject();
    json_.Member("id", timeline_.id.Text())
        .Member("duration", timeline_.duration)
        .Member("durationMode", fromItems ? "FromTrackItems" : "FromPlaylist");
    if (length_ != timeline_.duration) {
      json_.Member("trackLength", length_);
    }
    json_.Key("rate")
        .BeginObject()
        .Member("numerator", options_.rate.numerator)
        .Member("denominator", options_.rate.denominator)
        .EndObject();
    json_.EndObject().EndObject();
    json_.Member("name",
                 options_.timelineName.empty() ? timeline_.id.Text() : options_.timelineName);
    json_.Key("global_start_time");
    Time(0);
    json_.Key("tracks").BeginObject().Member("OTIO_SCHEMA", "Stack.1");
    json_.Key("metadata").BeginObject().EndObject().Member("name", "tracks");
    json_.Key("source_range").Null();
    json_.Key("effects").BeginArray().EndArray().Key("markers").BeginArray().EndArray();
    json_.Key("enabled").Bool(true).Key("children").BeginArray();
    for (const auto& plan : plans) {
      SideTrack(timeline_.tracks[plan.index], plan.index, plan.side);
    }
    json_.EndArray().EndObject().EndObject();
    buffer_ += '\n';
    Drain(0);
  }

 private:
  // Hands the text written so far to the sink once it holds `atLeast` bytes.
  void Drain(std::size_t atLeast) {
    if (sink_ != nullptr && buffer_.size() >= atLeast) {
      sink_->write(buffer_.data(), static_cast<std::streamsize>(buffer_.size()));
      buffer_.clear();
    }
  }

  void Time(std::int64_t frames) {
    json_.BeginObject().Member("OTIO_SCHEMA", "RationalTime.1");
    json_.Key("rate").Real(rate_).Key("value").Real(static_cast<double>(frames)).EndObject();
  }

  void Range(std::int64_t start, std::int64_t duration) {
    json_.BeginObject().Member("OTIO_SCHEMA", "TimeRange.1").Key("duration");
    Time(duration);
    json_.Key("start_time");
    Time(start);
    json_.EndObject();
  }

  // The first fields every item of the format carries, in its writer's order;
  // the metadata is left open for the caller to fill.
  void BeginItem(const char* schema) {
    json_.BeginObject().Member("OTIO_SCHEMA", schema).Key("metadata").BeginObject();
  }

  // Closes the metadata and writes the name and the source range.
  void ItemFields(const std::string& name, bool hasRange, std::int64_t start,
                  std::int64_t duration) {
    json_.EndObject().Member("name", name).Key("source_range");
    if (hasRange) {
      Range(start, duration);
    } else {
      json_.Null();
    }
  }

  void EndItemFields() { json_.Key("markers").BeginArray().EndArray().Key("enabled").Bool(true); }

  void Gap(std::int64_t duration) {
    BeginItem("Gap.1");
    ItemFields("", true, 0, duration);
    json_.Key("effects").BeginArray().EndArray();
    EndItemFields();
    json_.EndObject();
  }

  void Approximate(const std::string& itemId, std::string text) {
    if (approximations_ != nullptr) {
      approximations_->push_back({itemId, std::move(text)});
    }
  }

  // Where the last clip of a side ends; nothing when the side has no clip.
  static std::optional<std::int64_t> SideEnd(const Engine::Track& track, Side side) {
    std::optional<std::int64_t> end;
    for (const auto& item : track.items) {
      const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get());
      if (media == nullptr || item->GetType() != Engine::MediaSummary) {
        continue;
      }
      const Part part = PartOf(*media, side);
      // A negative part makes the track too, so that the walk refuses it.
      std::int64_t itemEnd = 0;
      if (part.timelineDuration < 0) {
        end = end.value_or(0);
      } else if (part.timelineDuration > 0 &&
                 !__builtin_add_overflow(part.timelineIn, part.timelineDuration, &itemEnd)) {
        end = std::max(end.value_or(itemEnd), itemEnd);
      }
    }
    return end;
  }

  // One engine track's picture or sound, padded to the common length.
  void SideTrack(const Engine::Track& track, std::size_t index, Side side) {
    const SideTraits traits = TraitsOf(side);
    const std::string trackName = "track " + std::to_string(index + 1);
    BeginItem("Track.1");
    json_.Key(kEngineFields).BeginObject();
    json_.Member("track", track.id.Text())
        .Member("index", static_cast<std::int64_t>(index))
        .Member("side", traits.name)
        .EndObject();
    ItemFields(trackName + " " + traits.name, false, 0, 0);
    json_.Key("effects").BeginArray().EndArray();
    EndItemFields();
    json_.Key("children").BeginArray();
    std::int64_t trackEnd = 0;
    // The transition waiting for the next media item.
    const Engine::FxTransitionItem* pending = nullptr;
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
                     " without a media item between them.",
                 id);
        }
        CheckTransition(*transition);
        pending = transition;
        continue;
      }
      if (transition != nullptr &&
          (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition)) {
        continue;  // the other side's
      }
      if (media == nullptr || type != Engine::MediaSummary) {
        Refuse("item " + id + " of engine " + trackName + " has the unknown type " +
                   std::to_string(static_cast<std::int32_t>(type)) + ".",
               id);
      }
      const Part part = PartOf(*media, side);
      if (part.timelineDuration < 0) {
        Refuse("item " + id + " has a negative " + traits.name + " length (" +
                   std::to_string(part.timelineDuration) + " frames).",
               id);
      }
      if (part.timelineDuration == 0) {
        if (pending != nullptr) {
          Refuse("transition " + pending->Id().Text() + " leads into item " + id +
                     ", which has no " + traits.name + ".",
                 id);
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
                   " overlaps.",
               id);
      }
      if (start < 0) {
        Refuse("item " + id + " starts its " + traits.name + " before frame 0, at frame " +
                   std::to_string(start) + ".",
               id);
      }
      if (start < trackEnd) {
        Refuse("item " + id + " overlaps the " + traits.name + " before it: it starts at frame " +
                   std::to_string(start) + ", the previous " + traits.name + " ends at frame " +
                   std::to_string(trackEnd) + ".",
               id);
      }
      if (start > trackEnd) {
        Gap(start - trackEnd);
      }
      // A transition of no length is no transition to an importer: its
      // engine fields travel with the clip it leads into.
      const Engine::FxTransitionItem* leftOut = nullptr;
      if (pending != nullptr && pending->FxTransition().duration == 0) {
        leftOut = pending;
        Approximate(pending->Id().Text(),
                    "transition of no length left out; its fields are in "
                    "the metadata of the clip after it");
      } else if (pending != nullptr) {
        Transition(*pending);
      }
      pending = nullptr;
      Clip(*media, side, part, overlap, leftOut);
      Drain(kBlockSize);
      trackEnd = end;
    }
    if (pending != nullptr) {
      Refuse("transition " + pending->Id().Text() + " at the end of engine " + trackName +
                 " has no media item after it.",
             pending->Id().Text());
    }
    if (trackEnd < length_) {
      Gap(length_ - trackEnd);
    }
    json_.EndArray().Member("kind", traits.trackKind).EndObject();
  }

  static void CheckTransition(const Engine::FxTransitionItem& item) {
    const auto& effect = item.FxTransition();
    std::int64_t afterCut = 0;
    if (effect.offset < 0 || __builtin_sub_overflow(effect.duration, effect.offset, &afterCut) ||
        afterCut < 0) {
      Refuse("transition " + item.Id().Text() +
                 " reaches a negative length before or after its cut (offset " +
                 std::to_string(effect.offset) + ", duration " + std::to_string(effect.duration) +
                 ").",
             item.Id().Text());
    }
  }

  void TransitionFields(const Engine::FxTransitionItem& item) {
    const auto& effect = item.FxTransition();
    json_.Member("item", item.Id().Text())
        .Member("kind", effect.kind)
        .Member("offset", effect.offset)
        .Member("duration", effect.duration);
  }

  void Transition(const Engine::FxTransitionItem& item) {
    const auto& effect = item.FxTransition();
    const bool overlapping = effect.kind == kOverlappingKind;
    BeginItem("Transition.1");
    json_.Key(kEngineFields).BeginObject();
    TransitionFields(item);
    json_.EndObject().EndObject();
    // Named for what it is; the engine item is in the metadata.
    json_.Member("name", overlapping ? "dissolve"
                                     : "transition across the cut (kind " +
                                           std::to_string(effect.kind) + ")");
    json_.Key("in_offset");
    Time(effect.offset);
    json_.Key("out_offset");
    Time(effect.duration - effect.offset);
    json_.Member("transition_type", overlapping ? "SMPTE_Dissolve" : "Custom_Transition")
        .EndObject();
  }

  // The speed the clip plays at: the element's own fraction where its lengths
  // differ, else the ratio of the lengths themselves.
  Fraction SpeedOf(const Part& part, const EdlElement* element) const {
    if (element != nullptr && element->speedNumerator > 0 && element->speedDenominator > 0 &&
        element->speedNumerator != element->speedDenominator) {
      return Reduced(element->speedNumerator, element->speedDenominator);
    }
    return Reduced(part.mediaDuration, part.timelineDuration);
  }

  // The overlap of an incoming overlapping transition is cut from the front
  // of the clip: those media frames become the transition's handle.
  void Clip(const Engine::MediaSummaryItem& item, Side side, const Part& part, std::int64_t overlap,
            const Engine::FxTransitionItem* leftOut) {
    const std::string id = item.Id().Text();
    const std::string mediaId = item.mediaId.Text();
    const auto found = options_.elements.find(id);
    const EdlElement* element = found == options_.elements.end() ? nullptr : &found->second;
    const bool warped = part.mediaDuration != part.timelineDuration;
    const Fraction speed = warped ? SpeedOf(part, element) : Fraction{};
    // The media start after the overlap, exactly: mediaIn + overlap * speed.
    const Fraction start = Reduced(Add(Multiply(part.mediaIn, speed.denominator, id),
                                       Multiply(overlap, speed.numerator, id), id),
                                   speed.denominator);
    const std::int64_t startFrame = RoundedQuotient(start.numerator, start.denominator);
    const std::int64_t duration = part.timelineDuration - overlap;
    const auto clipName = options_.assetNames.find(mediaId);
    const std::string name = clipName == options_.assetNames.end() ? mediaId : clipName->second;

    BeginItem("Clip.2");
    json_.Key(kEngineFields).BeginObject();
    json_.Member("item", id).Member("side", TraitsOf(side).name);
    if (element != nullptr) {
      json_.Member("element", static_cast<std::int64_t>(element->number))
          .Member("itemNumber", element->itemNumber)
          .Member("index", static_cast<std::int64_t>(element->index));
    }
    // The picture clip and the sound clip of one element share this key.
    json_.Member("link", id);
    json_.Member("timelineIn", part.timelineIn)
        .Member("timelineDuration", part.timelineDuration)
        .Member("mediaId", mediaId)
        .Member("mediaIn", part.mediaIn)
        .Member("mediaDuration", part.mediaDuration);
    if (warped) {
      json_.Member("speed", speed.Text());
    }
    if (start.denominator != 1) {
      json_.Member("sourceStart", ExactText(start));
      Approximate(id, std::string(TraitsOf(side).name) + " source start " + ExactText(start) +
                          " rounded to frame " + std::to_string(startFrame));
    }
    if (leftOut != nullptr) {
      json_.Key("transition").BeginObject();
      TransitionFields(*leftOut);
      json_.EndObject();
    }
    json_.EndObject();
    ItemFields(name, true, startFrame, duration);
    json_.Key("effects").BeginArray();
    if (warped) {
      const double scalar =
          static_cast<double>(speed.numerator) / static_cast<double>(speed.denominator);
      json_.BeginObject().Member("OTIO_SCHEMA", "LinearTimeWarp.1");
      json_.Key("metadata").BeginObject().Key(kEngineFields).BeginObject();
      json_.Member("speed", speed.Text()).EndObject().EndObject();
      json_.Member("name", "speed").Member("effect_name", "LinearTimeWarp");
      json_.Key("enabled").Bool(true).Key("time_scalar").Real(scalar).EndObject();
      CheckWarpedMedia(id, mediaId, start, duration, speed);
    }
    json_.EndArray();
    EndItemFields();
    json_.Key("media_references").BeginObject().Key(kMediaKey);
    Reference(item.mediaId, name);
    json_.EndObject().Member("active_media_reference_key", kMediaKey).EndObject();
  }

  static std::string ExactText(const Fraction& value) {
    const std::int64_t whole = value.numerator / value.denominator;
    const std::int64_t rest = std::llabs(value.numerator % value.denominator);
    return rest == 0 ? std::to_string(whole)
                     : std::to_string(whole) + " " + std::to_string(rest) + "/" +
                           std::to_string(value.denominator);
  }

  // A warped clip consumes duration * speed media frames from its start; a
  // reader that follows the time warp must find them in the media.
  void CheckWarpedMedia(const std::string& id, const std::string& mediaId, const Fraction& start,
                        std::int64_t duration, const Fraction& speed) {
    const auto found = mediaInfos_.find(mediaId);
    if (found == mediaInfos_.end() || found->second->duration <= 0) {
      return;
    }
    const double first =
        static_cast<double>(start.numerator) / static_cast<double>(start.denominator);
    const double last = first + static_cast<double>(duration) *
                                    static_cast<double>(speed.numerator) /
                                    static_cast<double>(speed.denominator);
    const auto& info = *found->second;
    const double limitEnd = static_cast<double>(info.limitIn) + static_cast<double>(info.duration);
    if (first < static_cast<double>(info.limitIn) || last > limitEnd + 1e-9) {
      Approximate(id, "the time-warped clip consumes media frames " + std::to_string(first) +
                          " to " + std::to_string(last) + ", outside the available range " +
                          std::to_string(info.limitIn) + " to " +
                          std::to_string(info.limitIn + info.duration));
    }
  }

  // The media reference: where the files are when a template says so,
  // otherwise a missing reference named by the clip. Either carries the
  // asset's usable range when that is known.
  void Reference(const Kov::BusinessEntityModel::BaseTypes::Identifier& mediaId,
                 const std::string& clipName) {
    const bool external = !options_.mediaUrl.empty();
    BeginItem(external ? "ExternalReference.1" : "MissingReference.1");
    const auto found = mediaInfos_.find(mediaId.Text());
    const Engine::MediaInfo* info = found == mediaInfos_.end() ? nullptr : found->second;
    if (info != nullptr) {
      json_.Key(kEngineFields).BeginObject();
      json_.Member("mediaId", mediaId.Text())
          .Member("limitIn", info->limitIn)
          .Member("duration", info->duration)
          .Member("tracksDescription", info->tracksDescription)
          .EndObject();
    }
    json_.EndObject().Member("name", clipName).Key("available_range");
    if (info != nullptr && info->duration > 0) {
      Range(info->limitIn, info->duration);
    } else {
      json_.Null();
    }
    json_.Key("available_image_bounds").Null();
    if (external) {
      json_.Member("target_url", ReplaceAll(ReplaceAll(options_.mediaUrl, "{clip}", clipName),
                                            "{asset}", mediaId.Text()));
    }
    json_.EndObject();
  }

  const Engine::Timeline& timeline_;
  const OtioExportOptions& options_;
  std::vector<OtioNote>* approximations_;
  std::ostream* sink_;
  std::string buffer_;
  JsonText json_;
  double rate_;
  std::int64_t length_ = 0;
  std::unordered_map<std::string, const Engine::MediaInfo*> mediaInfos_;
};

}  // namespace

OtioExportOptions OtioOptionsFromDocument(const PlaylistDocument& document,
                                          TimelineConverter::DurationMode mode) {
  OtioExportOptions options;
  options.rate = document.playlist.rate;
  options.durationMode = mode;
  options.timelineName = document.playlist.umId.GetUmId();
  EdlExportInput input = EdlInputFromDocument(document);
  options.assetNames = std::move(input.clipNames);
  options.elements = std::move(input.elements);
  return options;
}

namespace {

void CheckRate(const OtioExportOptions& options) {
  if (options.rate.numerator <= 0 || options.rate.denominator <= 0) {
    Refuse("the rate " + std::to_string(options.rate.numerator) + "/" +
           std::to_string(options.rate.denominator) + " is not a positive frame rate.");
  }
}

}  // namespace

std::string TimelineToOtioText(const Engine::Timeline& timeline, const OtioExportOptions& options,
                               std::vector<OtioNote>* approximations) {
  CheckRate(options);
  DocumentWriter(timeline, options, approximations, nullptr).Document();
  std::ostringstream text;
  DocumentWriter(timeline, options, nullptr, &text).Document();
  return text.str();
}

void WriteOtio(std::ostream& out, const Engine::Timeline& timeline,
               const OtioExportOptions& options) {
  CheckRate(options);
  DocumentWriter(timeline, options, nullptr, nullptr).Document();
  DocumentWriter(timeline, options, nullptr, &out).Document();
}

void CheckOtio(const Outcome& outcome, const std::vector<Finding>& findings,
               const OtioExportOptions& options, std::vector<OtioNote>* approximations) {
  for (const auto& finding : findings) {
    if (finding.severity == Severity::BlocksOtio) {
      throw OtioExportRefusal("Cannot export to OpenTimelineIO: " + finding.message, finding.place);
    }
  }
  CheckRate(options);
  DocumentWriter(outcome.timeline, options, approximations, nullptr).Document();
}

}  // namespace TimelineConvert
