// PictureText: the words both pictures show, written once: a speed, a
// timecode, and text made safe for markup.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <string>

namespace TimelineConvert {

// "×1/2" style text of a speed, as a decimal where it is exact and short.
std::string SpeedText(std::int32_t numerator, std::int32_t denominator);

// The whole frames per second nearest to `rate`; 0 when it counts none.
long long NominalFrameRate(const Kov::TimePoints::Rate& rate);

// Frames as HH:MM:SS:FF at the nearest whole frame rate of `rate`, or
// "frame N" when the rate has none.
std::string Timecode(double frame, const Kov::TimePoints::Rate& rate);

// What a problem flag of a mark means, in both pictures' words: "negative
// length on the timeline" and the like; empty for a flag without one.
const char* ProblemWords(std::uint8_t flag);

// Text made safe for XML character data and attribute values.
std::string EscapeXml(const std::string& text);

}  // namespace TimelineConvert
