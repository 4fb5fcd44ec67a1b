// ExitStatus: what timeline-convert's exit status means, in one place.
#pragma once

namespace TimelineConvert {

enum class ExitStatus : int {
  Done = 0,
  // The document, a file or the command line could not be used, an output
  // could not be written, or memory ran out.
  Unusable = 1,
  // The library refused the conversion, or an export cannot hold the timeline.
  Refused = 2,
  // check found something (and nothing was refused).
  Findings = 3,
};

inline int ToInt(ExitStatus status) {
  return static_cast<int>(status);
}

}  // namespace TimelineConvert
