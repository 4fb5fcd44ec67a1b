// EdlText: the text of an edit decision list from events already placed: the
// fixed columns of the event lines, the M2 speed lines and the comments that
// carry clip names and element numbers. Nothing here decides where an event
// goes; EdlExport does.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "export/EdlExport.h"
#include "export/Timecode.h"

namespace TimelineConvert {

// A speed as an M2 line states it: frames a second to one decimal.
struct EdlSpeed {
  std::string text;  // empty: plays at 1/1
  bool exact = true;
};

struct EdlEvent {
  EdlPlace place;
  std::string clip;
  std::string reel;
  std::string channel;
  std::int64_t recordIn = 0, recordOut = 0;
  std::int64_t sourceIn = 0, sourceOut = 0;
  std::int64_t mediaIn = 0, mediaDuration = 0, timelineDuration = 0;
  std::int64_t speedNumerator = 1, speedDenominator = 1;
  EdlSpeed speedText;
  // A dissolve into this event, from the event `from` or from black.
  std::int64_t dissolveLength = 0;
  bool fromBlack = false;
  std::optional<std::size_t> from;
};

// Sound tracks of an asset by its tracks description ("V+M+M" has two).
int EdlSoundTracks(const std::string& description);

// The clip name with control characters as spaces, so that it cannot break
// a line.
std::string EdlSafeText(const std::string& text);

// At most eight letters, digits and underscores of the clip name; "AX" (an
// unnamed source) when none is left, and never one of the names that mean
// black or colour bars.
std::string EdlReelName(const std::string& clip);

// Frames a second of `numerator/denominator` at the base's whole rate, to one
// decimal: "025.0".
EdlSpeed EdlSpeedText(std::int64_t numerator, std::int64_t denominator, const TimecodeBase& base);

// The whole list. Event numbers past 999 take more digits and are noted in
// `approximations`.
std::string EdlListText(const std::string& title, EdlSide side, const TimecodeBase& base,
                        const std::vector<EdlEvent>& events, std::vector<EdlNote>& approximations);

}  // namespace TimelineConvert
