// timeline-convert: runs the conversion library on a playlist kept in a JSON
// file, so that a conversion can be reproduced, inspected and compared
// without writing C++. Subcommands: convert (timeline as JSON), assets (the
// asset identifiers the playlist needs), render (an SVG or HTML picture) and
// check (what the library accepts but is almost certainly not meant).
//
// Exit status: 0 done; 1 the document, a file or the command line could not
// be used; 2 the library refused the conversion (its message on stderr, then
// where it comes from); 3 check found something.
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>
#include <string>

#include "Check.h"
#include "Diagnostics.h"
#include "PlaylistDocument.h"
#include "RefusalLocation.h"
#include "TimelineJson.h"
#include "TimelineSvg.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

constexpr int kUnusableInput = 1;
constexpr int kRefused = 2;

enum class Command { Convert, Assets, Render, Check };

struct Options {
  std::string input;
  std::string output = "-";
  std::string durationMode = "items";
  bool html = false;
  std::string errors = "text";
};

std::string InputName(const std::string& path) {
  return path == "-" ? "<stdin>" : path;
}

bool ReadInput(const std::string& path, std::string& text) {
  if (path == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    return !std::cin.bad();
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    return false;
  }
  std::ostringstream content;
  content << file.rdbuf();
  text = content.str();
  return !file.bad();
}

// The whole output exists before this is called, so a failed run never
// leaves a partial file behind; a failed write removes what it started.
bool WriteOutput(const std::string& path, const std::string& content) {
  if (path == "-") {
    std::cout << content << std::flush;
    return static_cast<bool>(std::cout);
  }
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  if (!file) {
    return false;
  }
  file << content;
  file.close();
  if (!file) {
    std::remove(path.c_str());
    return false;
  }
  return true;
}

int Run(Command command, const Options& options) {
  const bool jsonErrors = options.errors == "json";
  const TimelineConvert::FailureReport report(
      jsonErrors ? TimelineConvert::ErrorFormat::Json : TimelineConvert::ErrorFormat::Text,
      std::cerr);
  std::string text;
  if (!ReadInput(options.input, text)) {
    report.Io(InputName(options.input), "read", std::strerror(errno));
    return kUnusableInput;
  }
  TimelineConvert::PlaylistDocument document;
  try {
    document = TimelineConvert::ReadPlaylistDocument(text);
  } catch (const TimelineConvert::DocumentError& error) {
    report.Malformed(InputName(options.input), error);
    return kUnusableInput;
  }
  const auto mode = options.durationMode == "playlist"
                        ? Conversion::TimelineConverter::FromPlaylist
                        : Conversion::TimelineConverter::FromTrackItems;
  std::string result;
  int status = 0;
  try {
    if (command == Command::Check) {
      const auto checked = TimelineConvert::CheckDocument(document, mode);
      if (checked.refusal) {
        report.Refused(InputName(options.input), *checked.refusal);
      }
      result = TimelineConvert::CheckListing(InputName(options.input), checked, jsonErrors);
      status = TimelineConvert::CheckExitStatus(checked);
    } else if (command == Command::Assets) {
      result = TimelineConvert::ListUsedAssets(document);
    } else {
      const auto timeline =
          Conversion::TimelineConverter::ToTimeline(document.playlist, mode, document.assets);
      if (command == Command::Convert) {
        result = TimelineConvert::TimelineToJsonText(timeline);
      } else {
        const auto labels = TimelineConvert::LabelsFromDocument(document);
        result = TimelineConvert::TimelineToSvg(timeline, document.playlist.rate, labels);
        if (options.html) {
          result = TimelineConvert::SvgToHtmlPage(result, labels.title);
        }
      }
    }
  } catch (const std::exception& refusal) {
    // Only now, on the failure path, is the refusal's place looked for.
    auto place = TimelineConvert::LocateRefusal(document, mode);
    if (!place) {
      place = TimelineConvert::RefusalPlace();
      place->message = refusal.what();
    }
    report.Refused(InputName(options.input), *place);
    return kRefused;
  }
  if (!WriteOutput(options.output, result)) {
    report.Io(options.output, "write", std::strerror(errno));
    return kUnusableInput;
  }
  return status;
}

void AddInput(CLI::App& command, Options& options) {
  command
      .add_option("INPUT", options.input,
                  "Playlist document (JSON, see timeline-convert(1)); - reads standard input")
      ->required();
  command
      .add_option("--errors", options.errors,
                  "text: failures as sentences; json: one JSON object per failure on standard "
                  "error")
      ->check(CLI::IsMember({"text", "json"}))
      ->capture_default_str();
}

void AddConversionOptions(CLI::App& command, Options& options, const char* outputHelp) {
  AddInput(command, options);
  command.add_option("-o,--output", options.output, outputHelp)->capture_default_str();
  command
      .add_option("--duration-mode", options.durationMode,
                  "items: the timeline ends with its last media item; playlist: the playlist's "
                  "own durationInFields, in frames")
      ->check(CLI::IsMember({"items", "playlist"}))
      ->capture_default_str();
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{
      "Converts a replay server playlist, kept as JSON, into the editing engine's "
      "timeline.\nExit status: 0 done, 1 unusable document, file or arguments, 2 the "
      "library refused the conversion (its message is printed unchanged, then where it comes "
      "from), 3 check found something.\nThe manual: man timeline-convert."};
  app.name("timeline-convert");
  app.require_subcommand(1);
  Options options;

  auto* convert =
      app.add_subcommand("convert", "Convert the playlist and write the timeline as JSON");
  AddConversionOptions(*convert, options, "Where to write the timeline JSON; - is standard output");

  auto* assets = app.add_subcommand(
      "assets",
      "List the asset identifiers the playlist uses, in the library's order (aux clip first, "
      "repeats kept), one per line: identifier, clip id, present or missing in the document");
  AddInput(*assets, options);

  auto* render = app.add_subcommand(
      "render",
      "Convert the playlist and draw the timeline: one lane per track, picture and "
      "sound parts, transitions, a timecode ruler");
  AddConversionOptions(*render, options,
                       "Where to write the SVG (or HTML) picture; - is standard output");
  render->add_flag("--html", options.html, "Write a self-contained HTML page around the SVG");

  auto* check = app.add_subcommand(
      "check",
      "Convert the playlist and report what is legal but almost certainly not meant (negative "
      "or ignored speeds, overlaps, transitions that give nothing, a 0-frame aux item, IN or OUT "
      "outside the recorded material, unused or missing assets), one per line with its place, "
      "then a summary. Exit status 0 nothing found, 3 findings only, 2 refused, 1 unusable");
  AddConversionOptions(*check, options, "Where to write the findings; - is standard output");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUnusableInput;
  }
  const Command command = convert->parsed()  ? Command::Convert
                          : assets->parsed() ? Command::Assets
                          : check->parsed()  ? Command::Check
                                             : Command::Render;
  return Run(command, options);
}
