// Outcome: the document's playlist converted once. Either the whole timeline,
// or the library's refusal (its text unchanged), the place it comes from and
// the timeline of what converts before it. Only the library's refusals are
// located here: an exporter's refusal happens later and is its own type, and
// running out of memory is never taken for a refusal.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <optional>
#include <string>

#include "document/DocumentPlace.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

using DurationMode =
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode;

struct Refusal {
  std::string message;  // the library's message, unchanged
  DocumentPlace place;
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

}  // namespace TimelineConvert
