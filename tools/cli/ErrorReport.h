// ErrorReport: how timeline-convert reports a failure on standard error. In
// text form: one line "timeline-convert: FILE: ..." (a refusal keeps the
// library's message alone on its first line and says where on a second); with
// --errors json: one JSON object per failure, holding only the fields that
// apply, so that batch jobs can sort failures without parsing sentences.
#pragma once

#include <ostream>
#include <string>

#include "analysis/Findings.h"
#include "analysis/Outcome.h"
#include "document/DocumentPlace.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

enum class ErrorFormat { Text, Json };

class FailureReport {
 public:
  FailureReport(ErrorFormat format, std::ostream& stream) : format_(format), stream_(stream) {}

  // A file that could not be read or written; `action` is "read" or "write".
  void Io(const std::string& file, const std::string& action, const std::string& reason) const;
  void Malformed(const std::string& file, const DocumentError& error) const;
  void Refused(const std::string& file, const Refusal& refusal) const;

 private:
  ErrorFormat format_;
  std::ostream& stream_;
};

// The place fields of a refusal or finding as JSON members ("element", "item",
// "clip", "asset", "track"), appended to an object's text without braces.
std::string PlaceJsonMembers(const DocumentPlace& place);

// A finding: "FILE: at element 2 (item 3, clip CAM-1): message", and as one
// JSON object with its kind, severity, place, pointer and numbers; each
// appended to `out` with no newline.
void AppendFindingLine(std::string& out, const std::string& file, const Findings& findings,
                       const Finding& finding);
void AppendFindingJson(std::string& out, const std::string& file, const Findings& findings,
                       const Finding& finding);

// The members of a JSON object of numbers, without braces.
std::string NumbersJson(const Numbers& numbers);

// A JSON string literal.
std::string JsonString(const std::string& text);

}  // namespace TimelineConvert
