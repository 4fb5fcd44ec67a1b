// TimelineView: what the SVG picture and the HTML viewer both show, worked
// out once from a converted timeline and the document it came from. Every
// drawn mark knows its item, its source element, its speed and what is wrong
// with it, so neither drawing has to look anything up again. What is wrong is
// never judged here: it is read from the findings, so that the picture flags
// exactly what check reports, at the same element and side.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "analysis/Findings.h"
#include "analysis/ItemElements.h"
#include "analysis/Outcome.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// One element of the playlist's audio-video track, as the document gives it
// (the document outlives the picture, so the element is not copied), with
// the play speed in force for it (its own, or the one it inherits).
struct SourceElement {
  const Kov::Replivo::Data::Sequences::AudioVideoElement* element = nullptr;
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
  std::vector<SourceElement> elements;
  // The track that holds the elements' items and the one that holds the aux
  // clip's item. The conversion lays the elements' items out in element
  // order, each element's transitions just before its media item, so an
  // item's element follows from its position in the track: nothing is looked
  // up by identifier text.
  std::size_t elementTrack = kElementTrack;
  std::optional<std::size_t> auxTrack;
  // "items" or "playlist", with what it means.
  std::string durationMode;
  // Why the aux item plays no frames, from its finding.
  std::string auxReason;
  std::optional<PictureRefusal> refusal;
  // Every finding, as check reports them, for the picture to name; in a
  // Picture only the first kShownFindingsPerKind of each kind, with the
  // counts of all.
  Findings findings;
};

// Assets in document order, the elements with the speed in force for each,
// the aux clip's track when the playlist has one.
PictureLabels LabelsFromDocument(const PlaylistDocument& document, bool playlistDuration = false);

// The labels with what the outcome and the findings add: the refusal and its
// place, the aux item's reason, the findings themselves.
PictureLabels LabelsFromOutcome(const PlaylistDocument& document, const Outcome& outcome,
                                Findings findings);

enum class MarkKind : std::uint8_t { Picture, Sound, VideoTransition, AudioTransition, Refused };

// Bits of Mark::flags. The speed is shown as the element plays it; every
// other bit is the finding named beside it, at the mark's element and side.
enum MarkFlag : std::uint8_t {
  kSpeedChanged = 1,  // plays at a speed other than 1/1
  kNegative = 2,      // negative-duration: lasts less than nothing on the timeline
  kZero = 4,          // zero-length-part: plays media but takes no timeline frames
  kOverlap = 8,       // overlap: starts inside an earlier part, with no transition
  kAuxZero = 16,      // empty-aux-item: the aux item that plays nothing
  kRefused = 32,      // a refusal: the element the library refused
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

// One item of the timeline with every field the details need: it points at
// the timeline's own item, which outlives the view, so that a large timeline
// is not held twice.
struct ViewItem {
  // The media or transition item drawn (as `transition` says); none for the
  // refused element, which is no timeline item.
  const Kov::TimelineEngineModel::TrackItem* source = nullptr;
  std::optional<std::uint32_t> element;  // index into PictureLabels::elements
  std::uint32_t track = 0;
  std::int32_t asset = -1;  // index into PictureLabels::assets
  std::uint8_t flags = 0;
  bool transition = false;
  bool audio = false;  // an audio transition
  bool aux = false;    // the aux clip's item

  const std::string& Id() const;
  // The media item's fields; all 0 for a transition or the refused element.
  const Kov::TimelineEngineModel::MediaSummaryItem& Media() const;
  // The transition's effect; all 0 for a media item or the refused element.
  const Kov::TimelineEngineModel::TransitionEffect& Effect() const;
};

// Appends the number the operator knows an item by: "#3", "aux", "#?", a
// transition's "#3 video fx", the refused element's "#3".
void AppendItemNumber(std::string& out, const ViewItem& item, const PictureLabels& labels);
std::string ItemNumber(const ViewItem& item, const PictureLabels& labels);

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

// The most findings of one kind either picture names; past that it counts them.
constexpr std::size_t kShownFindingsPerKind = 1000;

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
