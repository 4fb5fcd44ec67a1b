// Failure reports in text and JSON form. The JSON objects are written by hand,
// member by member, so the fields keep a fixed order that reads well in logs.
#include "cli/ErrorReport.h"

#include <cstdio>

#include <nlohmann/json.hpp>

namespace TimelineConvert {

namespace {

std::string Member(const char* name, const std::string& value) {
  return std::string(",\"") + name + "\":" + JsonString(value);
}

std::string Member(const char* name, long long value) {
  return std::string(",\"") + name + "\":" + std::to_string(value);
}

// "line 3, column 14" into its two numbers; false for any other text.
bool LineAndColumn(const std::string& where, long long& line, long long& column) {
  char rest = 0;
  return std::sscanf(where.c_str(), "line %lld, column %lld%c", &line, &column, &rest) == 2;
}

}  // namespace

std::string NumbersJson(const Numbers& numbers) {
  std::string members;
  for (const auto& number : numbers) {
    members += (members.empty() ? "" : ",") + JsonString(number.first) + ":" +
               std::to_string(number.second);
  }
  return members;
}

std::string JsonString(const std::string& text) {
  return nlohmann::json(text).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::string PlaceJsonMembers(const DocumentPlace& place) {
  switch (place.source) {
    case DocumentPlace::Source::Element:
      return Member("element", static_cast<long long>(place.element)) +
             Member("item", place.itemNumber) + Member("clip", place.clip);
    case DocumentPlace::Source::Asset:
      return Member("asset", place.asset) +
             (place.clip.empty() ? std::string() : Member("clip", place.clip));
    case DocumentPlace::Source::Playlist:
      break;
  }
  return place.auxTrack ? Member("track", "aux") + Member("clip", place.clip) : std::string();
}

void FailureReport::Io(const std::string& file, const std::string& action,
                       const std::string& reason) const {
  if (format_ == ErrorFormat::Text) {
    stream_ << "timeline-convert: cannot " << action << ' ' << file << ": " << reason << '\n';
    return;
  }
  stream_ << "{\"status\":\"io\"" << Member("message", "cannot " + action + ": " + reason)
          << Member("file", file) << "}\n";
}

void FailureReport::Malformed(const std::string& file, const DocumentError& error) const {
  if (format_ == ErrorFormat::Text) {
    stream_ << "timeline-convert: " << file << ": " << error.what() << '\n';
    return;
  }
  std::string problem = error.what();
  const std::string prefix = EscapedText(error.Where()) + ": ";
  if (problem.compare(0, prefix.size(), prefix) == 0) {
    problem.erase(0, prefix.size());
  }
  std::string place;
  long long line = 0;
  long long column = 0;
  if (!error.Where().empty() && error.Where()[0] == '/') {
    place = Member("pointer", error.Where());
  } else if (LineAndColumn(error.Where(), line, column)) {
    place = Member("line", line) + Member("column", column);
  }
  stream_ << "{\"status\":\"malformed\"" << Member("message", problem) << Member("file", file)
          << place << "}\n";
}

void FailureReport::Refused(const std::string& file, const Refusal& refusal) const {
  const auto& explanation = refusal.explanation;
  if (format_ == ErrorFormat::Json) {
    stream_ << "{\"status\":\"refused\"" << Member("message", refusal.message)
            << Member("file", file);
    if (!explanation) {
      stream_ << PlaceJsonMembers(refusal.place) << "}\n";
      return;
    }
    stream_ << Member("kind", explanation->kind) << PlaceJsonMembers(explanation->place)
            << (explanation->place.pointer.empty() ? ""
                                                   : Member("pointer", explanation->place.pointer))
            << Member("explanation", explanation->text) << ",\"numbers\":{"
            << NumbersJson(explanation->numbers) << "}}\n";
    return;
  }
  // Exactly the library's text first: it is what the operator was shown.
  stream_ << refusal.message << '\n';
  const std::string where = explanation ? explanation->text : DescribePlace(refusal.place);
  if (!where.empty()) {
    stream_ << "timeline-convert: " << file << ": " << where << '\n';
  }
}

void AppendFindingLine(std::string& out, const std::string& file, const Findings& findings,
                       const Finding& finding) {
  const std::string where = DescribePlace(findings.Place(finding));
  out += file;
  out += ": ";
  if (!where.empty()) {
    out += where;
    out += ": ";
  }
  findings.AppendMessage(out, finding);
}

void AppendFindingJson(std::string& out, const std::string& file, const Findings& findings,
                       const Finding& finding) {
  const DocumentPlace place = findings.Place(finding);
  out += "{\"status\":\"finding\",\"kind\":";
  out += JsonString(KindWord(finding.kind));
  out += ",\"message\":";
  out += JsonString(findings.Message(finding));
  out += ",\"file\":";
  out += JsonString(file);
  out += PlaceJsonMembers(place);
  out += Member("severity", SeverityWord(finding.severity));
  if (!place.pointer.empty()) {
    out += Member("pointer", place.pointer);
  }
  out += ",\"numbers\":{";
  out += NumbersJson(findings.NumbersOf(finding));
  out += "}}";
}

}  // namespace TimelineConvert
