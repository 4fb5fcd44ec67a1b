// The last stage of every command: its output written whole or not at all,
// or the reason it could not be written; and which format that output takes
// when the command line leaves it to the file's name.
#include <algorithm>
#include <iostream>

#include "cli/OutputFile.h"
#include "commands/Commands.h"

namespace TimelineConvert {

namespace {

struct ExtensionRow {
  const char* extension;
  const char* format;
  const char* what;
};

constexpr ExtensionRow kExtensions[] = {
    {".otio", "otio", "an OpenTimelineIO document"},
    {".edl", "edl", "an edit decision list"},
    {".html", "html", "the viewer page"},
    {".htm", "html", "the viewer page"},
    {".svg", "svg", "an SVG picture"},
    {".json", "engine", "engine JSON"},
};

const char* WhatFormat(const std::string& format) {
  for (const auto& row : kExtensions) {
    if (format == row.format) {
      return row.what;
    }
  }
  return "that format";
}

std::string Lower(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) {
    return static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
  });
  return text;
}

}  // namespace

ExitStatus WriteResult(const CommandContext& context,
                       const std::function<void(std::ostream&)>& write) {
  try {
    WriteOutput(context.options.output, write);
  } catch (const OutputError& error) {
    context.report.Io(OutputName(error.Path()), "write", error.Reason());
    return ExitStatus::Unusable;
  }
  return ExitStatus::Done;
}

ExitStatus WriteResultTo(const CommandContext& context, const std::string& path,
                         const std::string& text) {
  try {
    WriteOutput(path, [&text](std::ostream& out) {
      out.write(text.data(), static_cast<std::streamsize>(text.size()));
    });
  } catch (const OutputError& error) {
    context.report.Io(OutputName(error.Path()), "write", error.Reason());
    return ExitStatus::Unusable;
  }
  return ExitStatus::Done;
}

std::string FormatOfFileName(const std::string& path) {
  const std::string name = Lower(path);
  for (const auto& row : kExtensions) {
    const std::string extension = row.extension;
    if (name.size() > extension.size() &&
        name.compare(name.size() - extension.size(), extension.size(), extension) == 0 &&
        name[name.size() - extension.size() - 1] != '/') {
      return row.format;
    }
  }
  return "";
}

std::string ChooseFormat(const CommandContext& context, const std::string& asked,
                         const std::vector<std::string>& writable, const std::string& fallback) {
  const std::string named = FormatOfFileName(context.options.output);
  if (!asked.empty() && !named.empty() && asked != named) {
    ReportUsage(context, "-o " + context.options.output + " names " + WhatFormat(named) + ", but " +
                             (context.options.html ? "--html" : "--format " + asked) +
                             " asks for " + WhatFormat(asked) +
                             "; change the file name or leave the option out");
    return "";
  }
  const std::string format = !asked.empty() ? asked : !named.empty() ? named : fallback;
  if (std::find(writable.begin(), writable.end(), format) == writable.end()) {
    ReportUsage(context, "-o " + context.options.output + " names " + WhatFormat(format) +
                             ", which this command does not write" +
                             (format == "html" || format == "svg"
                                  ? " (render draws the timeline)"
                                  : " (convert writes engine JSON, .otio and .edl)"));
    return "";
  }
  return format;
}

bool CompactJsonBuffer::Keep(char c) {
  if (inString_) {
    inString_ = escaped_ || c != '"';
    escaped_ = !escaped_ && c == '\\';
    return true;
  }
  if (c == ' ' || c == '\n' || c == '\t' || c == '\r') {
    return false;
  }
  inString_ = c == '"';
  return true;
}

CompactJsonBuffer::int_type CompactJsonBuffer::overflow(int_type next) {
  if (!traits_type::eq_int_type(next, traits_type::eof())) {
    const char c = traits_type::to_char_type(next);
    if (Keep(c)) {
      out_.put(c);
    }
  }
  return out_ ? traits_type::not_eof(next) : traits_type::eof();
}

// The kept characters of a piece go on in one write.
std::streamsize CompactJsonBuffer::xsputn(const char* text, std::streamsize count) {
  kept_.clear();
  for (std::streamsize index = 0; index < count; ++index) {
    if (Keep(text[index])) {
      kept_ += text[index];
    }
  }
  out_.write(kept_.data(), static_cast<std::streamsize>(kept_.size()));
  return out_ ? count : 0;
}

void ReportUsage(const CommandContext& context, const std::string& message) {
  if (context.options.errors == "json") {
    std::cerr << "{\"status\":\"usage\",\"message\":" << JsonString(message) << "}\n";
  } else {
    std::cerr << "timeline-convert: " << message << '\n';
  }
}

}  // namespace TimelineConvert
