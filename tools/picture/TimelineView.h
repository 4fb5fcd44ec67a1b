// TimelineView: what the SVG picture and the HTML viewer both show, worked
// out once from a converted timeline and the document it came from. Every
// drawn mark knows its item, its source element and what is wrong with it
// (a speed other than 1/1, a length of zero or less, an overlap without a
// transition, the element the library refused), so neither drawing has to
// look anything up again.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// One element of the playlist's audio-video track, as the document gives it,
// with the play speed in force for it (its own, or the one it inherits).
struct SourceElement {
  std::size_t index = 0;
  std::uint32_t number = 0;
  std::int32_t itemNumber = 0;
  std::string clip;
  std::int32_t inBoundaryKind = 0;
  std::int32_t outBoundaryKind = 0;
  std::int64_t videoIn = 0;
  std::int64_t videoOut = 0;
  std::int64_t audioIn = 0;
  std::int64_t audioOut = 0;
  std::int32_t videoTransitionType = 0;
  std::int32_t videoTransitionDuration = 0;
  std::int32_t audioTransitionType = 0;
  std::int32_t audioTransitionDuration = 0;
  bool ownSpeed = false;
  std::int32_t speedNumerator = 1;
  std::int32_t speedDenominator = 1;
};

// The refusal of a playlist, with the element it names when it names one.
struct PictureRefusal {
  std::string message;
  std::optional<std::size_t> element;
  // Where it comes from, as the tool's messages say it ("at element 1 (item
  // 2, clip CAM-2)"); empty when that is not known.
  std::string place;
};

// How the picture names things the timeline only knows by identifier.
struct PictureLabels {
  std::string title;
  // Asset identifier and a readable name (its clip id); numbered A1, A2, ...
  // in this order.
  std::vector<std::pair<std::string, std::string>> assets;
  // Media item identifier to the number the operator knows it by.
  std::unordered_map<std::string, std::string> itemNumbers;
  // Item identifier (media and transition items) to its index in elements.
  std::unordered_map<std::string, std::size_t> itemElements;
  std::vector<SourceElement> elements;
  // "items" or "playlist", with what it means.
  std::string durationMode;
  // Why the aux item plays no frames, from its finding.
  std::string auxReason;
  std::optional<PictureRefusal> refusal;
  // Every finding, as check reports them, for the picture to name.
  Findings findings;
};

// Assets in document order, items by their element's item number, the aux
// clip's item as "aux".
PictureLabels LabelsFromDocument(const PlaylistDocument& document, bool playlistDuration = false);

// The labels with what the outcome and the findings add: the refusal and its
// place, the aux item's reason, the findings themselves.
PictureLabels LabelsFromOutcome(const PlaylistDocument& document, const Outcome& outcome,
                                Findings findings);

enum class MarkKind : std::uint8_t { Picture, Sound, VideoTransition, AudioTransition, Refused };

// Bits of Mark::flags.
enum MarkFlag : std::uint8_t {
  kSpeedChanged = 1,  // plays at a speed other than 1/1
  kNegative = 2,      // lasts less than nothing on the timeline
  kZero = 4,          // plays media but takes no timeline frames
  kOverlap = 8,       // starts before the part before it ends, with no transition
  kAuxZero = 16,      // the aux item that plays nothing
  kRefused = 32,      // the element the library refused
};
constexpr std::uint8_t kProblemFlags = kNegative | kZero | kOverlap | kAuxZero | kRefused;

// The flags by the names the viewer knows them by, shipped in its page data.
struct NamedFlag {
  const char* name;
  MarkFlag flag;
};
constexpr NamedFlag kNamedFlags[] = {{"speed", kSpeedChanged}, {"negative", kNegative},
                                     {"zero", kZero},          {"overlap", kOverlap},
                                     {"auxZero", kAuxZero},    {"refused", kRefused}};

// One drawn thing in one row: a media part, a transition or the refused
// element. start and length in frames; length may be 0 or negative.
struct Mark {
  double start = 0;
  double length = 0;
  MarkKind kind = MarkKind::Picture;
  std::uint8_t flags = 0;
  // Index into TimelineView::items.
  std::uint32_t item = 0;
};

// The text a view item points at when the timeline has none for it (the
// refused element is no timeline item).
inline const std::string& NoText() {
  static const std::string empty;
  return empty;
}

// One item of the timeline with every field the details need. Its
// identifiers point into the timeline, which outlives the view: a large
// timeline is not held twice.
struct ViewItem {
  const std::string* id = &NoText();
  std::string number;  // "#3", "aux", "#?" or a transition's "#3 fx"
  std::optional<std::size_t> element;
  std::size_t track = 0;
  bool transition = false;
  // Media item fields.
  std::int64_t timelineVideoIn = 0, timelineVideoDuration = 0;
  std::int64_t timelineAudioIn = 0, timelineAudioDuration = 0;
  std::int64_t mediaVideoIn = 0, mediaVideoDuration = 0;
  std::int64_t mediaAudioIn = 0, mediaAudioDuration = 0;
  int asset = -1;  // index into PictureLabels::assets
  const std::string* mediaId = &NoText();
  // Transition fields.
  bool audio = false;
  std::int32_t effectKind = 0;
  std::int64_t offset = 0, duration = 0;
  std::uint8_t flags = 0;
};

struct ViewRow {
  std::size_t track = 0;
  bool sound = false;
  std::vector<Mark> marks;
};

struct TimelineView {
  std::vector<ViewItem> items;
  // Two rows per track, picture then sound.
  std::vector<ViewRow> rows;
  std::vector<std::string> trackIds;
  double firstFrame = 0;
  double lastFrame = 1;
  // The median length of the media parts, for a readable scale.
  double typicalLength = 1;
};

TimelineView MakeTimelineView(const Kov::TimelineEngineModel::Timeline& timeline,
                              const PictureLabels& labels);

// What either picture draws: the outcome's timeline, how to name its parts and
// the marks worked out from both.
struct Picture {
  const Kov::TimelineEngineModel::Timeline& timeline;
  Kov::TimePoints::Rate rate;
  PictureLabels labels;
  TimelineView view;
};

// The picture of an outcome and its findings, made once for either writer.
Picture MakePicture(const PlaylistDocument& document, const Outcome& outcome, Findings findings);

}  // namespace TimelineConvert
