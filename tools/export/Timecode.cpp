// Drop-frame counting skips the labels ;00 and ;01 (at 60 frames: ;00 to ;03)
// at the start of every minute except each tenth, so that a label count at
// 30 frames a second matches a clock running at 30000/1001.
#include "export/Timecode.h"

#include <cstdio>

namespace TimelineConvert {

std::int64_t DroppedPerMinute(const TimecodeBase& base) {
  return base.dropFrame ? base.framesPerSecond / 15 : 0;
}

bool IsDropFrameRate(const Kov::TimePoints::Rate& rate) {
  return rate.denominator == 1001 && (rate.numerator == 30000 || rate.numerator == 60000);
}

namespace {

std::int64_t FramesPerTenMinutes(const TimecodeBase& base) {
  return base.framesPerSecond * 600 - 9 * DroppedPerMinute(base);
}

}  // namespace

std::optional<TimecodeBase> TimecodeBaseOf(const Kov::TimePoints::Rate& rate) {
  if (rate.numerator <= 0 || rate.denominator <= 0) {
    return std::nullopt;
  }
  // The nearest whole rate, at least one frame a second.
  const std::int64_t whole = rate.numerator / rate.denominator;
  const std::int64_t rest = rate.numerator % rate.denominator;
  const std::int64_t nearest = whole + (rest >= rate.denominator - rest ? 1 : 0);
  if (nearest > kMostFramesPerSecond) {
    return std::nullopt;
  }
  TimecodeBase base;
  base.dropFrame = IsDropFrameRate(rate);
  base.framesPerSecond = nearest < 1 ? 1 : nearest;
  return base;
}

std::int64_t FramesIn24Hours(const TimecodeBase& base) {
  return 24 * 6 * FramesPerTenMinutes(base);
}

std::optional<std::string> SmpteTimecode(std::int64_t frame, const TimecodeBase& base,
                                         bool colonsOnly) {
  if (base.framesPerSecond <= 0 || frame < 0 || frame >= FramesIn24Hours(base)) {
    return std::nullopt;
  }
  return TimecodeText(frame, base, colonsOnly);
}

std::string TimecodeText(std::int64_t frame, const TimecodeBase& base, bool colonsOnly) {
  // Unsigned, so that the most negative frame has a magnitude too.
  unsigned long long label = frame < 0 ? 0ULL - static_cast<unsigned long long>(frame)
                                       : static_cast<unsigned long long>(frame);
  const auto fps = static_cast<unsigned long long>(base.framesPerSecond);
  const auto dropped = static_cast<unsigned long long>(DroppedPerMinute(base));
  if (dropped > 0) {
    const unsigned long long perMinute = fps * 60 - dropped;
    const unsigned long long perTenMinutes = perMinute * 10 + dropped;
    const unsigned long long rest = label % perTenMinutes;
    label += 9 * dropped * (label / perTenMinutes) +
             (rest > dropped ? dropped * ((rest - dropped) / perMinute) : 0);
  }
  const unsigned long long seconds = label / fps;
  const char separator = base.dropFrame && !colonsOnly ? ';' : ':';
  // Rates above 99 frames a second take three digits for the frames.
  char text[64];
  std::snprintf(text, sizeof text, "%s%02llu:%02llu:%02llu%c%02llu", frame < 0 ? "-" : "",
                seconds / 3600, seconds / 60 % 60, seconds % 60, separator, label % fps);
  return text;
}

}  // namespace TimelineConvert
