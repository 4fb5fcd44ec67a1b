// timeline-convert: runs the conversion library on a playlist kept in a JSON
// file, so that a conversion can be reproduced, inspected and compared
// without writing C++. Subcommands: convert (timeline as JSON), assets (the
// asset identifiers the playlist needs) and render (an SVG or HTML picture).
//
// Exit status: 0 done; 1 the document, a file or the command line could not
// be used; 2 the library refused the conversion (its message on stderr).
#include <CLI/CLI.hpp>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>
#include <iterator>
#include <optional>
#include <sstream>
#include <string>

#include "PlaylistDocument.h"
#include "TimelineHtml.h"
#include "TimelineJson.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

constexpr int kUnusableInput = 1;
constexpr int kRefused = 2;

enum class Command { Convert, Assets, Render };

struct Options {
  std::string input;
  std::string output = "-";
  std::string durationMode = "items";
  bool html = false;
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

int Fail(int status, const std::string& message) {
  std::cerr << "timeline-convert: " << message << '\n';
  return status;
}

int Run(Command command, const Options& options) {
  std::string text;
  if (!ReadInput(options.input, text)) {
    return Fail(kUnusableInput,
                "cannot read " + InputName(options.input) + ": " + std::strerror(errno));
  }
  TimelineConvert::PlaylistDocument document;
  try {
    document = TimelineConvert::ReadPlaylistDocument(text);
  } catch (const TimelineConvert::DocumentError& error) {
    return Fail(kUnusableInput, InputName(options.input) + ": " + error.what());
  }
  std::string result;
  if (command == Command::Render) {
    // A refused playlist is still drawn, as far as it converts, and written.
    std::optional<std::string> refusal;
    result = TimelineConvert::RenderDocument(document, options.durationMode == "playlist",
                                             options.html, refusal);
    if (refusal) {
      std::cerr << *refusal << '\n';
    }
    if (!WriteOutput(options.output, result)) {
      return Fail(kUnusableInput, "cannot write " + options.output + ": " + std::strerror(errno));
    }
    return refusal ? kRefused : 0;
  }
  try {
    if (command == Command::Assets) {
      result = TimelineConvert::ListUsedAssets(document);
    } else {
      const auto mode = options.durationMode == "playlist"
                            ? Conversion::TimelineConverter::FromPlaylist
                            : Conversion::TimelineConverter::FromTrackItems;
      const auto timeline =
          Conversion::TimelineConverter::ToTimeline(document.playlist, mode, document.assets);
      result = TimelineConvert::TimelineToJsonText(timeline);
    }
  } catch (const std::exception& refusal) {
    // Exactly the library's text: it is what the operator was shown.
    std::cerr << refusal.what() << '\n';
    return kRefused;
  }
  if (!WriteOutput(options.output, result)) {
    return Fail(kUnusableInput, "cannot write " + options.output + ": " + std::strerror(errno));
  }
  return 0;
}

void AddInput(CLI::App& command, Options& options) {
  command
      .add_option("INPUT", options.input,
                  "Playlist document (JSON, see docs/json-format.md); - reads standard input")
      ->required();
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
      "library refused the conversion (its message is printed unchanged)."};
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
      "sound parts, transitions, a timecode ruler, flagged problems; a refused playlist is "
      "drawn up to the refused element, written, and exits with 2");
  AddConversionOptions(*render, options,
                       "Where to write the SVG (or HTML) picture; - is standard output");
  render->add_flag("--html", options.html,
                   "Write an offline viewer page (zoom, search, details) instead of the SVG");

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUnusableInput;
  }
  const Command command = convert->parsed()  ? Command::Convert
                          : assets->parsed() ? Command::Assets
                                             : Command::Render;
  return Run(command, options);
}
