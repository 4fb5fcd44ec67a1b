// EdlExport: one side of the converted timeline as a CMX 3600 edit decision
// list, the list every broadcast editing application imports. docs/edl.md
// states the mapping. The writer only reads the engine timeline and a few
// facts the document knows (element and item numbers, clip names, speeds);
// it reports what the list cannot hold as problems with their place, and
// what it could only approximate element by element, so that a caller can
// show both before anyone imports the list.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace TimelineConvert {

// What the document knows about the element an engine item comes from.
struct EdlElement {
  std::uint32_t number = 0;
  std::int32_t itemNumber = 0;
  // The speed in force for the element (its own or the one it inherits).
  std::int32_t speedNumerator = 1;
  std::int32_t speedDenominator = 1;
  std::size_t index = 0;  // in the document's audio-video track
};

struct EdlExportInput {
  // The playlist's rate: every engine time is in frames at it.
  Kov::TimePoints::Rate rate{50, 1};
  // The list's title, before the side's name.
  std::string title;
  // Clip names by asset identifier; an asset without one is named by its
  // identifier.
  std::map<std::string, std::string> clipNames;
  // The document's elements in order. An item's element follows from its
  // place in the element track (analysis/ItemElements.h); an item beyond
  // them is named by its identifier and its speed is read from its media and
  // timeline lengths.
  std::vector<EdlElement> elements;
  // Whether the aux track holds the aux clip's item, named as the aux clip.
  bool auxTrack = false;
};

// The picture and the sound of the main track, the sound of the aux track.
enum class EdlSide { Picture, Sound, Aux };

const char* EdlSideName(EdlSide side);
std::optional<EdlSide> EdlSideFromName(const std::string& name);

// An engine item, as the messages name it.
struct EdlPlace {
  // Null for a problem of the whole list or an empty item.
  const Kov::TimelineEngineModel::TrackItem* item = nullptr;
  std::optional<EdlElement> element;
  bool aux = false;
  std::string clip;
  // "element 3 (item 3, clip CAM-A)", "the aux clip (clip CAM-A)", or
  // "item <id> (clip CAM-A)".
  std::string Text() const;
  // The item's identifier; empty without an item.
  std::string ItemId() const;
};

struct EdlNote {
  EdlPlace place;
  std::string text;
};

// What a list cannot hold, as a kind and the values its text quotes, so that
// a check of a long timeline keeps no sentence per problem.
enum class EdlProblemKind : std::uint8_t {
  EmptyItem,                  // no values
  TransitionAfterTransition,  // the earlier transition's id in `detail`
  NegativeTransition,         // offset, duration
  UnknownType,                // the type
  NegativeLength,             // timeline length, media length, 1 for the picture
  BeyondRange,                // no values
  Reverse,                    // the speed's numerator and denominator
  MediaBeforeMaterial,        // the source IN
  BeyondTimecode,             // the last frame, the frames in 24 hours
  BeforeFrameZero,            // the record IN
  OverlapWithoutDissolve,     // the frames of overlap
  MoreThanOneItem,            // the frames of overlap
  Rate,                       // the rate's numerator and denominator, the most frames a second
};

// "starts before frame 0, at frame -3."
void AppendEdlProblemText(std::string& out, EdlProblemKind kind, const std::int64_t* values,
                          const std::string& detail = "");

struct EdlProblem {
  EdlPlace place;
  EdlProblemKind kind = EdlProblemKind::EmptyItem;
  std::int64_t values[3] = {};
  std::string detail;
  std::string Text() const;
};

struct EdlResult {
  // The list; empty when there are problems.
  std::string text;
  // Why the list cannot be written: what an EDL cannot hold.
  std::vector<EdlProblem> problems;
  // What the list states only approximately, in timeline order.
  std::vector<EdlNote> approximations;
};

// The sides of the timeline that play anything, in the order above.
std::vector<EdlSide> EdlSidesOf(const Kov::TimelineEngineModel::Timeline& timeline);

// The list of one side. Throws nothing but std::bad_alloc, whatever the
// timeline and input hold.
// `problemsOnly`: find the problems alone, without the text and the
// approximations, which a check does not need and a long timeline has many of.
EdlResult TimelineToEdl(const Kov::TimelineEngineModel::Timeline& timeline,
                        const EdlExportInput& input, EdlSide side, bool problemsOnly = false);

// The problems alone, handed to `found` one by one as they are met and kept
// nowhere, for a check of a timeline of any length. Their places name no
// clip: a finding names the element instead.
void FindEdlProblems(const Kov::TimelineEngineModel::Timeline& timeline,
                     const EdlExportInput& input, EdlSide side,
                     const std::function<void(const EdlProblem&)>& found);

}  // namespace TimelineConvert
