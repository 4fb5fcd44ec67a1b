// Timecode: SMPTE timecode labels for frame numbers, as edit decision lists,
// editing applications and both pictures show them. A rate of 30000/1001 or
// 60000/1001 is counted in drop-frame timecode (labels skipped so that the
// clock keeps up with real time); every other rate counts whole frames at its
// nominal rate. The one definition of the rule: the viewer receives its
// numbers (frames a second, labels skipped a minute) in the page data.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <optional>
#include <string>

namespace TimelineConvert {

struct TimecodeBase {
  // Frames in one second of labels: 25 at 25/1, 30 at 30000/1001.
  std::int64_t framesPerSecond = 0;
  bool dropFrame = false;
};

// Beyond this, counts of a day's frames would leave the 64-bit range.
constexpr std::int64_t kMostFramesPerSecond = 1000000;

// Whether a rate is counted in drop-frame timecode: 30000/1001 and 60000/1001.
bool IsDropFrameRate(const Kov::TimePoints::Rate& rate);

// Labels skipped at the start of a minute but each tenth: 2 at 30 frames, 4
// at 60, none without drop frame.
std::int64_t DroppedPerMinute(const TimecodeBase& base);

// The labels of a rate; nothing for a rate that is not positive or whose
// nearest whole rate exceeds kMostFramesPerSecond.
std::optional<TimecodeBase> TimecodeBaseOf(const Kov::TimePoints::Rate& rate);

// The first frame that no two-digit hour can label.
std::int64_t FramesIn24Hours(const TimecodeBase& base);

// "HH:MM:SS:FF"; drop-frame labels put ';' before the frames unless
// `colonsOnly`. Nothing for a frame before 0 or beyond 24 hours.
std::optional<std::string> SmpteTimecode(std::int64_t frame, const TimecodeBase& base,
                                         bool colonsOnly = false);

// The label of any frame, one before 0 with a "-" and hours past 99 as they
// come (a picture's ruler reaches both). `base` counts at least one frame a
// second.
std::string TimecodeText(std::int64_t frame, const TimecodeBase& base, bool colonsOnly = false);

}  // namespace TimelineConvert
