// Explaining a refusal: which value to change, and to what. The library's
// sentence says what rule failed; this says where the value lives and what
// numbers made it fail. The numbers come from the library's own public
// functions (the transition's bounds, the items as converted), never from a
// second copy of its rules, so that they cannot drift apart from it.
#include <algorithm>
#include <limits>
#include <new>

#include "analysis/Outcome.h"
#include "document/AssetKeys.h"

namespace TimelineConvert {

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Data = Kov::Replivo::Data;
namespace Engine = Kov::TimelineEngineModel;
using Conversion::TimeConverter;
using Conversion::TimelineConverter;

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

std::string ElementText(const DocumentPlace& place) {
  return "element " + std::to_string(place.element) + " (item " + std::to_string(place.itemNumber) +
         ")";
}

// The timeline lengths of the element that carries the transition and of the
// one before it, with that element's transitions left out (they change no length).
struct TwoItems {
  std::int64_t previous = 0;
  std::int64_t current = 0;
};

std::optional<TwoItems> LengthsAround(const PlaylistDocument& document, DurationMode mode,
                                      std::size_t index, bool audio) {
  Data::Sequences::Playlist prefix;
  prefix.serverId = document.playlist.serverId;
  prefix.number = document.playlist.number;
  prefix.umId = document.playlist.umId;
  prefix.durationInFields = document.playlist.durationInFields;
  prefix.rate = document.playlist.rate;
  const auto& elements = document.playlist.audioVideoTrack.elements;
  prefix.audioVideoTrack.elements.assign(elements.begin(),
                                         elements.begin() + static_cast<std::ptrdiff_t>(index + 1));
  prefix.audioVideoTrack.elements.back().transitionType = 0;
  prefix.audioVideoTrack.elements.back().audioTransitionType = 0;
  Engine::Timeline timeline;
  try {
    timeline = TimelineConverter::ToTimeline(prefix, mode, document.assets);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception&) {
    return std::nullopt;
  }
  std::vector<std::int64_t> lengths;
  for (const auto& item : timeline.tracks.at(0).items) {
    if (item->GetType() == Engine::MediaSummary) {
      const auto& media = static_cast<const Engine::MediaSummaryItem&>(*item);
      lengths.push_back(audio ? media.timelineAudioDuration : media.timelineVideoDuration);
    }
  }
  if (lengths.size() < 2) {
    return std::nullopt;
  }
  return TwoItems{lengths[lengths.size() - 2], lengths.back()};
}

// Frames of an item a transition of `fields` needs: before the cut (its
// offset) or after it (its duration less the offset).
std::int64_t FramesNeeded(Data::Sequences::AudioVideoElement element, bool audio, bool beforeCut,
                          std::int32_t fields) {
  (audio ? element.audioTransitionDuration : element.videoTransitionDuration) = fields;
  const auto effect = audio ? TimeConverter::ToAudioTransitionBounds(element)
                            : TimeConverter::ToVideoTransitionBounds(element);
  return beforeCut ? effect.offset : effect.duration - effect.offset;
}

// The largest even duration in fields (whole frames) whose need fits in
// `available`, or -1 when no duration fits. The need grows with the duration.
std::int64_t LargestFittingFields(const Data::Sequences::AudioVideoElement& element, bool audio,
                                  bool beforeCut, std::int64_t available) {
  if (FramesNeeded(element, audio, beforeCut, 0) > available) {
    return -1;
  }
  std::int64_t fits = 0;
  std::int64_t fails = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
  while (fails - fits > 1) {
    const std::int64_t middle = fits + (fails - fits) / 2;
    (FramesNeeded(element, audio, beforeCut, static_cast<std::int32_t>(middle)) <= available
         ? fits
         : fails) = middle;
  }
  return fits - fits % 2;
}

std::optional<RefusalExplanation> ExplainTransition(const PlaylistDocument& document,
                                                    DurationMode mode, const Refusal& refusal) {
  const bool audio = Contains(refusal.message, "shorter audio duration");
  const bool beforeCut = Contains(refusal.message, "contains track item (");
  const std::size_t index = refusal.place.element;
  if (refusal.place.source != DocumentPlace::Source::Element || index == 0) {
    return std::nullopt;
  }
  const auto lengths = LengthsAround(document, mode, index, audio);
  if (!lengths) {
    return std::nullopt;
  }
  const auto& element = document.playlist.audioVideoTrack.elements[index];
  const char* const field = audio ? "audioTransitionDuration" : "videoTransitionDuration";
  const std::int32_t fields =
      audio ? element.audioTransitionDuration : element.videoTransitionDuration;
  const std::int64_t needed = FramesNeeded(element, audio, beforeCut, fields);
  const std::int64_t available = beforeCut ? lengths->previous : lengths->current;
  const std::int64_t largest = LargestFittingFields(element, audio, beforeCut, available);

  RefusalExplanation explanation;
  explanation.kind = beforeCut ? "transition-too-long-before-cut" : "transition-too-long-after-cut";
  explanation.place = DocumentPlace::Element(document, beforeCut ? index - 1 : index);
  explanation.place.pointer =
      DocumentPlace::Element(document, index, std::string("/") + field).pointer;
  explanation.text =
      std::string("the ") + (audio ? "audio" : "video") + " transition of " +
      ElementText(refusal.place) + " needs " + std::to_string(needed) + " frames of item " +
      std::to_string(explanation.place.itemNumber) + " (clip " +
      EscapedText(explanation.place.clip) + ") " + (beforeCut ? "before" : "after") +
      " the cut, which lasts " + std::to_string(available) + "; " +
      (largest >= 0 ? std::string(field) + " at most " + std::to_string(largest) + " fields"
                    : "no " + std::string(field) + " fits: this transition kind needs " +
                          std::to_string(needed) + " frames whatever its duration");
  explanation.numbers = {{"needed", needed},
                         {"available", available},
                         {"transitionElement", static_cast<std::int64_t>(index)}};
  if (largest >= 0) {
    explanation.numbers.emplace_back("maxDurationFields", largest);
  }
  return explanation;
}

std::optional<RefusalExplanation> ExplainBoundary(const PlaylistDocument& document,
                                                  const Refusal& refusal) {
  if (refusal.place.source != DocumentPlace::Source::Element) {
    return std::nullopt;
  }
  const bool in = Contains(refusal.message, "absolute IN");
  const char* const field = in ? "inBoundaryKind" : "outBoundaryKind";
  const auto& element = document.playlist.audioVideoTrack.elements[refusal.place.element];
  const std::int32_t value = in ? element.inBoundaryKind : element.outBoundaryKind;
  const bool known = value == Conversion::Absolute;
  RefusalExplanation explanation;
  explanation.kind = known ? "absolute-boundary" : "unknown-boundary-kind";
  explanation.place =
      DocumentPlace::Element(document, refusal.place.element, std::string("/") + field);
  explanation.text = DescribePlace(explanation.place) + ": " + field + " (" +
                     explanation.place.pointer + ") is " +
                     (known ? "absolute (0), which the engine does not take"
                            : std::to_string(value) + ", which is not a known boundary kind") +
                     "; use sameLimit, oppositeLimit or otherBoundary (1, 2 or 3)";
  explanation.numbers = {{"value", value}};
  return explanation;
}

std::optional<RefusalExplanation> ExplainMissingAsset(const PlaylistDocument& document,
                                                      const Refusal& refusal) {
  RefusalExplanation explanation;
  explanation.kind = "asset-not-found";
  explanation.place = refusal.place;
  if (refusal.place.source == DocumentPlace::Source::Element) {
    explanation.place = DocumentPlace::Element(document, refusal.place.element, "/umId");
  } else if (!refusal.place.auxTrack) {
    return std::nullopt;
  }
  explanation.text = DescribePlace(explanation.place) + ": the document has no asset for clip " +
                     EscapedText(explanation.place.clip) + " (asset key " +
                     EscapedText(AssetKeyOfClip(explanation.place.clip).Text()) +
                     "); add it to /assets or change " + explanation.place.pointer;
  return explanation;
}

std::optional<RefusalExplanation> ExplainAsset(const PlaylistDocument& document,
                                               const Refusal& refusal) {
  const auto& rate = document.playlist.rate;
  RefusalExplanation explanation;
  if (Contains(refusal.message, "TimeBoundaryToFields") &&
      (rate.numerator <= 0 || rate.denominator <= 0)) {
    // The assets are innocent: it is the playlist's rate that cannot count fields.
    explanation.kind = "playlist-rate";
    explanation.place.pointer = "/playlist/rate";
    explanation.text = "at /playlist/rate: the playlist's rate " + std::to_string(rate.numerator) +
                       "/" + std::to_string(rate.denominator) +
                       " needs a positive numerator and denominator";
    explanation.numbers = {{"numerator", rate.numerator}, {"denominator", rate.denominator}};
    return explanation;
  }
  if (refusal.place.source != DocumentPlace::Source::Asset) {
    return std::nullopt;
  }
  std::string field;
  std::string what;
  if (Contains(refusal.message, "no PhysicalTimebounds")) {
    field = "/timeBounds";
    what = "the asset has no recorded range; give timeBounds at least one";
  } else if (Contains(refusal.message, "no KytOperatorMetadata")) {
    field = "/operatorVideoRate";
    what = "the asset has no video rate; give operatorVideoRate";
  } else if (refusal.message == "null pointer") {
    field = "/resources";
    what = "a track layout of the asset lists a track the asset does not have";
  } else {
    return std::nullopt;
  }
  explanation.kind = "asset-unusable";
  explanation.place = refusal.place;
  explanation.place.pointer += field;
  explanation.text =
      DescribePlace(explanation.place) + ": " + what + " (" + explanation.place.pointer + ")";
  return explanation;
}

}  // namespace

std::optional<RefusalExplanation> ExplainRefusal(const PlaylistDocument& document,
                                                 DurationMode mode, const Refusal& refusal) {
  const std::string& message = refusal.message;
  if (Contains(message, "cannot be edited") &&
      Contains(message, "than their transition duration")) {
    return ExplainTransition(document, mode, refusal);
  }
  if (Contains(message, "absolute IN boundaries") || Contains(message, "absolute OUT boundaries")) {
    return ExplainBoundary(document, refusal);
  }
  if (message == "MediaAsset for sequence track item not found" ||
      message == "MediaAsset for aux-track not found") {
    return ExplainMissingAsset(document, refusal);
  }
  return ExplainAsset(document, refusal);
}

}  // namespace TimelineConvert
