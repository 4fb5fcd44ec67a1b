// Outcome: the document's playlist converted once. Either the whole timeline,
// or the library's refusal (its text unchanged), the place it comes from and
// the timeline of what converts before it. Only the library's refusals are
// located here: an exporter's refusal happens later and is its own type, and
// running out of memory is never taken for a refusal.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "document/DocumentPlace.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

using DurationMode =
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode;

// The values a message quotes, by name, so that a script or the viewer can use
// them without reading the sentence.
using Numbers = std::vector<std::pair<std::string, std::int64_t>>;

// What to change so that a refused playlist converts: the place of the value
// (for a transition, the item it overruns, with the pointer of its duration),
// one sentence with the numbers, and the numbers by name.
struct RefusalExplanation {
  std::string kind;  // a stable finding word, such as "transition-too-long-before-cut"
  DocumentPlace place;
  std::string text;  // follows "timeline-convert: FILE: "
  Numbers numbers;
};

struct Refusal {
  Refusal(std::string message_, DocumentPlace place_,
          std::optional<RefusalExplanation> explanation_ = std::nullopt)
      : message(std::move(message_)),
        place(std::move(place_)),
        explanation(std::move(explanation_)) {}

  std::string message;  // the library's message, unchanged
  DocumentPlace place;  // the part that fails when converted on its own
  std::optional<RefusalExplanation> explanation;
};

struct Outcome {
  DurationMode mode{};
  // The whole timeline, or, when refused, the elements before the refused one
  // (without the aux clip when that is what fails); empty when even that is refused.
  Kov::TimelineEngineModel::Timeline timeline;
  std::optional<Refusal> refusal;
};

// Converts once; on a refusal, finds its place by running the library's own
// public functions on parts of the document. std::bad_alloc passes through.
Outcome ConvertDocument(const PlaylistDocument& document, DurationMode mode);

// The explanation of a located refusal, or nothing for a message it does not know.
std::optional<RefusalExplanation> ExplainRefusal(const PlaylistDocument& document,
                                                 DurationMode mode, const Refusal& refusal);

}  // namespace TimelineConvert
