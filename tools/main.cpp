// timeline-convert: runs the conversion library on a playlist kept in a JSON
// file, so that a conversion can be reproduced, inspected and compared
// without writing C++. Subcommands: convert (timeline as JSON), assets (the
// asset identifiers the playlist needs) and render (an SVG or HTML picture).
//
// Exit status: 0 done; 1 the document, a file or the command line could not
// be used; 2 the library refused the conversion (its message on stderr).
#include <CLI/CLI.hpp>

#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fstream>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "OutputFile.h"
#include "PlaylistDocument.h"
#include "TimelineJson.h"
#include "TimelineSvg.h"

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
  return path == "-" ? "standard input" : path;
}

// The whole input, or the reason it cannot be had.
bool ReadInput(const std::string& path, std::string& text, std::string& problem) {
  if (path == "-") {
    text.assign(std::istreambuf_iterator<char>(std::cin), std::istreambuf_iterator<char>());
    problem = std::cin.bad() ? std::strerror(errno) : "";
    return problem.empty();
  }
  struct stat status;
  if (::stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
    problem = "it is a directory";
    return false;
  }
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    problem = std::strerror(errno);
    return false;
  }
  // Read straight into the text, sized up front where the size is known, so
  // the document is held once and not copied.
  if (S_ISREG(status.st_mode)) {
    text.reserve(static_cast<std::size_t>(status.st_size));
  }
  std::vector<char> chunk(1 << 16);
  while (file.read(chunk.data(), static_cast<std::streamsize>(chunk.size())) || file.gcount() > 0) {
    text.append(chunk.data(), static_cast<std::size_t>(file.gcount()));
  }
  problem = file.bad() ? std::strerror(errno) : "";
  return problem.empty();
}

int Fail(int status, const std::string& message) {
  std::cerr << "timeline-convert: " << message << '\n';
  return status;
}

int Run(Command command, const Options& options) {
  std::string text;
  std::string problem;
  if (!ReadInput(options.input, text, problem)) {
    return Fail(kUnusableInput, "cannot read " + InputName(options.input) + ": " + problem);
  }
  TimelineConvert::PlaylistDocument document;
  try {
    document = TimelineConvert::ReadPlaylistDocument(text);
  } catch (const TimelineConvert::DocumentError& error) {
    return Fail(kUnusableInput, InputName(options.input) + ": " + error.what());
  }
  std::string().swap(text);  // the records hold all that is needed now
  // The whole result is made before the output is touched, so a refusal leaves
  // it as it was; the timeline's JSON is then streamed into it.
  std::function<void(std::ostream&)> write;
  try {
    if (command == Command::Assets) {
      write = [listing = TimelineConvert::ListUsedAssets(document)](std::ostream& out) {
        out << listing;
      };
    } else {
      const auto mode = options.durationMode == "playlist"
                            ? Conversion::TimelineConverter::FromPlaylist
                            : Conversion::TimelineConverter::FromTrackItems;
      auto timeline = std::make_shared<const Kov::TimelineEngineModel::Timeline>(
          Conversion::TimelineConverter::ToTimeline(document.playlist, mode, document.assets));
      if (command == Command::Convert) {
        write = [timeline](std::ostream& out) {
          TimelineConvert::WriteTimelineJson(out, *timeline);
        };
      } else {
        const auto labels = TimelineConvert::LabelsFromDocument(document);
        std::string picture =
            TimelineConvert::TimelineToSvg(*timeline, document.playlist.rate, labels);
        if (options.html) {
          picture = TimelineConvert::SvgToHtmlPage(picture, labels.title);
        }
        write = [picture = std::move(picture)](std::ostream& out) { out << picture; };
      }
    }
  } catch (const std::exception& refusal) {
    // The library's text unchanged after the tool's name: it is what the
    // operator was shown.
    return Fail(kRefused, refusal.what());
  }
  try {
    TimelineConvert::WriteOutput(options.output, write);
  } catch (const TimelineConvert::OutputError& error) {
    return Fail(kUnusableInput, error.what());
  }
  return 0;
}

// The edit distance between two words, to suggest the command meant.
std::size_t Distance(const std::string& from, const std::string& to) {
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t j = 0; j <= to.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= from.size(); ++i) {
    std::size_t diagonal = row[0];
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t above = row[j];
      row[j] =
          std::min({row[j] + 1, row[j - 1] + 1, diagonal + (from[i - 1] == to[j - 1] ? 0 : 1)});
      diagonal = above;
    }
  }
  return row[to.size()];
}

// An unknown first word is named as such, with the nearest command.
bool IsUnknownCommand(const CLI::App& app, const std::string& word, std::string& message) {
  if (word.empty() || word[0] == '-') {
    return false;
  }
  std::string nearest;
  std::size_t best = std::string::npos;
  for (const CLI::App* command : app.get_subcommands({})) {
    if (command->get_name() == word) {
      return false;
    }
    if (Distance(word, command->get_name()) < best) {
      best = Distance(word, command->get_name());
      nearest = command->get_name();
    }
  }
  message = "unknown command \"" + word + "\" (did you mean \"" + nearest + "\"?)";
  return true;
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
  // A reader that goes away, or a file size limit, is a write error with a
  // message, never a silent death half way.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
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
  assets->add_option("-o,--output", options.output, "Where to write the list; - is standard output")
      ->capture_default_str();

  auto* render = app.add_subcommand(
      "render",
      "Convert the playlist and draw the timeline: one lane per track, picture and "
      "sound parts, transitions, a timecode ruler");
  AddConversionOptions(*render, options,
                       "Where to write the SVG (or HTML) picture; - is standard output");
  render->add_flag("--html", options.html, "Write a self-contained HTML page around the SVG");

  app.set_version_flag("-V,--version", std::string("timeline-convert ") + TEC_TOOL_VERSION +
                                           " (conversion library " +
                                           Conversion::LibraryVersionText() + ")");
  // CLI11's own messages carry the tool's name too, on one line.
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return std::string("timeline-convert: ") + error.what() +
           " (timeline-convert --help lists the commands and options)\n";
  });
  std::string unknown;
  if (argc > 1 && IsUnknownCommand(app, argv[1], unknown)) {
    return Fail(kUnusableInput, unknown);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : kUnusableInput;
  }
  const Command command = convert->parsed()  ? Command::Convert
                          : assets->parsed() ? Command::Assets
                                             : Command::Render;
  try {
    return Run(command, options);
  } catch (const std::bad_alloc&) {
    return Fail(kUnusableInput, "out of memory");
  }
}
