// The words of the picture. The viewer receives what it shows of these in its
// page data, so that the SVG and the viewer write them alike.
#include "picture/PictureText.h"

#include "export/Timecode.h"
#include "picture/TimelineView.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>

namespace TimelineConvert {

std::string SpeedText(std::int32_t numerator, std::int32_t denominator) {
  if (denominator != 0) {
    const double value = static_cast<double>(numerator) / static_cast<double>(denominator);
    char buffer[32];
    std::snprintf(buffer, sizeof buffer, "%g", value);
    if (std::strtod(buffer, nullptr) == value && std::string(buffer).size() <= 6) {
      return "\xC3\x97" + std::string(buffer);
    }
  }
  return "\xC3\x97" + std::to_string(numerator) + "/" + std::to_string(denominator);
}

long long NominalFrameRate(const Kov::TimePoints::Rate& rate) {
  if (rate.numerator <= 0 || rate.denominator <= 0) {
    return 0;
  }
  return std::max(1LL, std::llround(static_cast<double>(rate.numerator) /
                                    static_cast<double>(rate.denominator)));
}

std::string Timecode(double frame, const Kov::TimePoints::Rate& rate) {
  const long long whole = std::llround(frame);
  TimecodeBase base;
  base.framesPerSecond = NominalFrameRate(rate);
  if (base.framesPerSecond <= 0) {
    return "frame " + std::to_string(whole);
  }
  base.dropFrame = IsDropFrameRate(rate);
  return TimecodeText(whole, base);
}

std::vector<long long> TickSteps(long long framesPerSecond) {
  std::vector<long long> steps;
  for (const long long frames : {1, 2, 5, 10, 20}) {
    if (framesPerSecond <= 0 || frames < framesPerSecond) {
      steps.push_back(frames);
    }
  }
  if (framesPerSecond > 0) {
    for (const long long seconds : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600}) {
      steps.push_back(seconds * framesPerSecond);
    }
  }
  return steps;
}

std::string AuxItemText(const std::string& auxReason) {
  return "aux item " + (auxReason.empty() ? std::string("plays 0 frames") : auxReason);
}

const char* ProblemWords(std::uint8_t flag) {
  switch (flag) {
    case kNegative:
      return "negative length on the timeline";
    case kZero:
      return "plays media but takes 0 frames on the timeline";
    case kOverlap:
      return "starts before the part before it ends, with no transition";
    default:
      return "";
  }
}

std::string EscapeXml(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  AppendEscapedXml(escaped, text);
  return escaped;
}

// Characters that need no escape are copied a run at a time.
void AppendEscapedXml(std::string& out, const std::string& text) {
  const char* run = text.data();
  const char* const end = run + text.size();
  for (const char* at = run; at != end; ++at) {
    const char* escaped = nullptr;
    switch (*at) {
      case '&':
        escaped = "&amp;";
        break;
      case '<':
        escaped = "&lt;";
        break;
      case '>':
        escaped = "&gt;";
        break;
      case '"':
        escaped = "&quot;";
        break;
      case '\'':
        escaped = "&apos;";
        break;
      default:
        // XML cannot carry most control characters, not even as references.
        if (static_cast<unsigned char>(*at) < 0x20 && *at != '\n' && *at != '\t') {
          escaped = "\xEF\xBF\xBD";
        }
    }
    if (escaped != nullptr) {
      out.append(run, at).append(escaped);
      run = at + 1;
    }
  }
  out.append(run, end);
}

}  // namespace TimelineConvert
