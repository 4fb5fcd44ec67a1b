// Drop-frame counting skips the labels ;00 and ;01 (at 60 frames: ;00 to ;03)
// at the start of every minute except each tenth, so that a label count at
// 30 frames a second matches a clock running at 30000/1001.
#include "export/Timecode.h"

#include <cstdio>

namespace TimelineConvert {

namespace {

// Labels skipped at the start of a minute: 2 at 30 frames, 4 at 60.
std::int64_t DroppedPerMinute(const TimecodeBase& base) {
  return base.dropFrame ? base.framesPerSecond / 15 : 0;
}

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
  base.dropFrame = rate.denominator == 1001 && (rate.numerator == 30000 || rate.numerator == 60000);
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
  std::int64_t label = frame;
  const std::int64_t dropped = DroppedPerMinute(base);
  if (dropped > 0) {
    const std::int64_t perMinute = base.framesPerSecond * 60 - dropped;
    const std::int64_t tens = frame / FramesPerTenMinutes(base);
    const std::int64_t rest = frame % FramesPerTenMinutes(base);
    label += 9 * dropped * tens;
    if (rest >= dropped) {
      label += dropped * ((rest - dropped) / perMinute);
    }
  }
  const std::int64_t fps = base.framesPerSecond;
  const std::int64_t frames = label % fps;
  const std::int64_t seconds = label / fps % 60;
  const std::int64_t minutes = label / (fps * 60) % 60;
  const std::int64_t hours = label / (fps * 3600);
  const char separator = base.dropFrame && !colonsOnly ? ';' : ':';
  // Rates above 99 frames a second take three digits for the frames.
  char text[48];
  std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld%c%02lld", static_cast<long long>(hours),
                static_cast<long long>(minutes), static_cast<long long>(seconds), separator,
                static_cast<long long>(frames));
  return std::string(text);
}

}  // namespace TimelineConvert
