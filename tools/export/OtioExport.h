// OtioExport: the converted timeline as an OpenTimelineIO document (.otio), so
// that a sequence can be opened in editing applications and the tools around
// that interchange format. docs/otio.md states the mapping; this is its only
// implementation. Media items become clips placed where the engine plays them,
// transition items become transitions at the cuts, and every object keeps its
// engine fields under metadata["timeline_engine"].
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <map>
#include <optional>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "export/EdlExport.h"

namespace TimelineConvert {

// A timeline that the interchange format cannot hold as the engine plays it
// (a negative length, two items of one side on the same frames without an
// overlapping transition, ...). The text names the item.
class OtioExportRefusal : public std::runtime_error {
 public:
  explicit OtioExportRefusal(const std::string& message, DocumentPlace place = {},
                             std::string itemId = "")
      : std::runtime_error(message), place_(std::move(place)), itemId_(std::move(itemId)) {}
  // The place in the document, when a finding names it.
  const DocumentPlace& Place() const { return place_; }
  // The engine item the message names, when it names one.
  const std::string& ItemId() const { return itemId_; }

 private:
  DocumentPlace place_;
  std::string itemId_;
};

// Whether the transition reaches back before its cut or forward by less than
// nothing, which the format's in and out offsets cannot say. The findings
// judge it; the writer only asserts it.
bool OtioCannotHoldTransition(const Kov::TimelineEngineModel::FxTransitionItem& item);

// The frames by which the item after the transition starts late on the
// track: an overlapping transition's offset, 0 for any other kind.
std::int64_t OtioOverlapOf(const Kov::TimelineEngineModel::FxTransitionItem& item);

struct OtioExportOptions {
  // The playlist's rate: every time of the document is in frames at it.
  Kov::TimePoints::Rate rate{50, 1};
  Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode durationMode =
      Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::FromTrackItems;
  // The timeline's name; the timeline identifier when empty.
  std::string timelineName;
  // Clip names by asset identifier; a clip whose asset has none is named by
  // the identifier itself.
  std::map<std::string, std::string> assetNames;
  // The document's elements in order: numbers for the clips' metadata and the
  // speed in force. An item's element follows from its place in the element
  // track (analysis/ItemElements.h); an item beyond them takes its speed from
  // its lengths.
  std::vector<EdlElement> elements;
  // Whether the aux track holds the aux clip's item.
  bool auxTrack = false;
  // Where the media files are: "{clip}" and "{asset}" are replaced by the
  // clip name and the asset identifier. Empty: a MissingReference.
  std::string mediaUrl;
  // JSON without indentation.
  bool compact = false;
};

// What the document states only approximately, per engine item.
struct OtioNote {
  std::string itemId;
  std::string text;
  // The item's element (by its place), or whether it is the aux clip's item.
  std::optional<std::size_t> element;
  bool aux = false;
};

// The rate of the document's playlist, its clip id as the timeline's name and
// the clip ids of its assets as clip names.
OtioExportOptions OtioOptionsFromDocument(
    const PlaylistDocument& document,
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode mode);

// The document's text, indented by four (or compact), ending in a newline.
// Throws OtioExportRefusal. What had to be approximated is appended to
// `approximations` when given.
std::string TimelineToOtioText(const Kov::TimelineEngineModel::Timeline& timeline,
                               const OtioExportOptions& options,
                               std::vector<OtioNote>* approximations = nullptr);

// The same, written into `out` a block at a time, so that memory stays small
// whatever the size of the timeline. Throws OtioExportRefusal before
// writing anything: the timeline is walked once without writing first.
void WriteOtio(std::ostream& out, const Kov::TimelineEngineModel::Timeline& timeline,
               const OtioExportOptions& options);

// The checks of an export of a converted outcome: refuses, with the first
// finding that blocks it or the first problem met, what the format cannot
// hold; appends what it approximates to `approximations` when given. Then
// WriteOtio writes it.
void CheckOtio(const Outcome& outcome, const Findings& findings, const OtioExportOptions& options,
               std::vector<OtioNote>* approximations = nullptr);

}  // namespace TimelineConvert
