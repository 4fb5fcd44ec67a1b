// Writes each object of the OpenTimelineIO format (times, ranges, gaps,
// transitions, clips and their media references) as JSON, fields in the
// order the format's own writer uses, each with its engine fields under
// metadata["timeline_engine"].
#include <cstdint>
#include <cstdlib>
#include <string>

#include "export/OtioDocumentWriter.h"

namespace TimelineConvert {
namespace OtioWriting {

namespace {

std::string ReplaceAll(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = text.find(from); at != std::string::npos;
       at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

}  // namespace

void DocumentWriter::Time(std::int64_t frames) {
  json_.BeginObject().Member("OTIO_SCHEMA", "RationalTime.1");
  json_.Key("rate").Real(rate_).Key("value").Real(static_cast<double>(frames)).EndObject();
}

void DocumentWriter::Range(std::int64_t start, std::int64_t duration) {
  json_.BeginObject().Member("OTIO_SCHEMA", "TimeRange.1").Key("duration");
  Time(duration);
  json_.Key("start_time");
  Time(start);
  json_.EndObject();
}

// The first fields every item of the format carries, in its writer's order;
// the metadata is left open for the caller to fill.
void DocumentWriter::BeginItem(const char* schema) {
  json_.BeginObject().Member("OTIO_SCHEMA", schema).Key("metadata").BeginObject();
}

// Closes the metadata and writes the name and the source range.
void DocumentWriter::ItemFields(const std::string& name, bool hasRange, std::int64_t start,
                                std::int64_t duration) {
  json_.EndObject().Member("name", name).Key("source_range");
  if (hasRange) {
    Range(start, duration);
  } else {
    json_.Null();
  }
}

void DocumentWriter::EndItemFields() {
  json_.Key("markers").BeginArray().EndArray().Key("enabled").Bool(true);
}

void DocumentWriter::Gap(std::int64_t duration) {
  BeginItem("Gap.1");
  ItemFields("", true, 0, duration);
  json_.Key("effects").BeginArray().EndArray();
  EndItemFields();
  json_.EndObject();
}

void DocumentWriter::TransitionFields(const Engine::FxTransitionItem& item) {
  const auto& effect = item.FxTransition();
  json_.Member("item", item.Id().Text())
      .Member("kind", effect.kind)
      .Member("offset", effect.offset)
      .Member("duration", effect.duration);
}

void DocumentWriter::Transition(const Engine::FxTransitionItem& item) {
  const auto& effect = item.FxTransition();
  const bool overlapping = effect.kind == kOverlappingKind;
  BeginItem("Transition.1");
  json_.Key(kEngineFields).BeginObject();
  TransitionFields(item);
  json_.EndObject().EndObject();
  // Named for what it is; the engine item is in the metadata.
  json_.Member(
      "name", overlapping ? "dissolve"
                          : "transition across the cut (kind " + std::to_string(effect.kind) + ")");
  json_.Key("in_offset");
  Time(effect.offset);
  json_.Key("out_offset");
  Time(effect.duration - effect.offset);
  json_.Member("transition_type", overlapping ? "SMPTE_Dissolve" : "Custom_Transition").EndObject();
}

// The overlap of an incoming overlapping transition is cut from the front
// of the clip: those media frames become the transition's handle.
void DocumentWriter::Clip(const Engine::MediaSummaryItem& item,
                          std::optional<std::uint32_t> elementIndex, Side side, const Part& part,
                          std::int64_t overlap, const Engine::FxTransitionItem* leftOut) {
  const std::string& id = item.Id().Text();
  const std::string& mediaId = item.mediaId.Text();
  const EdlElement* element = elementIndex && *elementIndex < options_.elements.size()
                                  ? &options_.elements[*elementIndex]
                                  : nullptr;
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
    Approximate(id, elementIndex,
                std::string(TraitsOf(side).name) + " source start " + ExactText(start) +
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
    CheckWarpedMedia(id, elementIndex, mediaId, start, duration, speed);
  }
  json_.EndArray();
  EndItemFields();
  json_.Key("media_references").BeginObject().Key(kMediaKey);
  Reference(item.mediaId, name);
  json_.EndObject().Member("active_media_reference_key", kMediaKey).EndObject();
}

std::string DocumentWriter::ExactText(const Fraction& value) {
  const std::int64_t whole = value.numerator / value.denominator;
  const std::int64_t rest = std::llabs(value.numerator % value.denominator);
  return rest == 0 ? std::to_string(whole)
                   : std::to_string(whole) + " " + std::to_string(rest) + "/" +
                         std::to_string(value.denominator);
}

// The media reference: where the files are when a template says so,
// otherwise a missing reference named by the clip. Either carries the
// asset's usable range when that is known.
void DocumentWriter::Reference(const Kov::BusinessEntityModel::BaseTypes::Identifier& mediaId,
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

}  // namespace OtioWriting
}  // namespace TimelineConvert
