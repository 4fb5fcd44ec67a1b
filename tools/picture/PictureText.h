// PictureText: the words both pictures show, written once: a speed, a
// timecode, and text made safe for markup.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <charconv>
#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

namespace TimelineConvert {

// "×1/2" style text of a speed, as a decimal where it is exact and short.
std::string SpeedText(std::int32_t numerator, std::int32_t denominator);

// The whole frames per second nearest to `rate`; 0 when it counts none.
long long NominalFrameRate(const Kov::TimePoints::Rate& rate);

// Frames as HH:MM:SS:FF at the nearest whole frame rate of `rate`, or
// "frame N" when the rate has none.
std::string Timecode(double frame, const Kov::TimePoints::Rate& rate);

// The ruler's round steps in frames, shortest first: whole frames below a
// second, then whole seconds and minutes; a ruler takes the first whose
// ticks stand far enough apart, doubling the last beyond them.
std::vector<long long> TickSteps(long long framesPerSecond);

// What the aux item that plays nothing is labelled: "aux item " and why.
std::string AuxItemText(const std::string& auxReason);

// What a problem flag of a mark means, in both pictures' words: "negative
// length on the timeline" and the like; empty for a flag without one.
const char* ProblemWords(std::uint8_t flag);

// Text made safe for XML character data and attribute values.
std::string EscapeXml(const std::string& text);
void AppendEscapedXml(std::string& out, const std::string& text);

// What a TextBuffer appends without a string of its own: text made safe for
// XML, and a number with one decimal as "%.1f" writes it.
struct EscapedXml {
  const std::string& text;
};
inline EscapedXml Escaped(const std::string& text) {
  return {text};
}
struct OneDecimal {
  double value;
};

// Text built by appending, with a stream's `<<` for text and whole numbers:
// a picture is formatted straight into one buffer.
class TextBuffer {
 public:
  TextBuffer& operator<<(const std::string& text) {
    text_ += text;
    return *this;
  }
  TextBuffer& operator<<(const char* text) {
    text_ += text;
    return *this;
  }
  TextBuffer& operator<<(char character) {
    text_ += character;
    return *this;
  }
  TextBuffer& operator<<(const EscapedXml& escaped) {
    AppendEscapedXml(text_, escaped.text);
    return *this;
  }
  TextBuffer& operator<<(OneDecimal number) {
    char digits[400];  // the widest double has 309 digits before the point
    text_.append(digits, std::to_chars(digits, digits + sizeof digits, number.value,
                                       std::chars_format::fixed, 1)
                             .ptr);
    return *this;
  }
  // A stream prints these as characters, not numbers: say which is meant.
  TextBuffer& operator<<(signed char) = delete;
  TextBuffer& operator<<(unsigned char) = delete;
  TextBuffer& operator<<(bool) = delete;
  template <typename Integer, typename = std::enable_if_t<std::is_integral<Integer>::value>>
  TextBuffer& operator<<(Integer value) {
    char digits[24];
    text_.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
    return *this;
  }

  void Reserve(std::size_t bytes) { text_.reserve(bytes); }
  // The text, handed over: the buffer is empty after.
  std::string Take() { return std::move(text_); }

 private:
  std::string text_;
};

}  // namespace TimelineConvert
