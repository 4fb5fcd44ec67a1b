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
#include <optional>
#include <string>
#include <vector>

#include "Check.h"
#include "Diagnostics.h"
#include "OtioExport.h"
#include "OutputFile.h"
#include "PlaylistDocument.h"
#include "RefusalLocation.h"
#include "TimelineHtml.h"
#include "TimelineJson.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

constexpr int kUnusableInput = 1;
constexpr int kRefused = 2;

enum class Command { Convert, Assets, Render, Check };

struct Options {
  std::string input;
  std::string output = "-";
  std::string durationMode = "items";
  std::string format = "engine";
  bool html = false;
  std::string errors = "text";
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

// A failure found before the options are known, always as a sentence.
int Fail(int status, const std::string& message) {
  std::cerr << "timeline-convert: " << message << '\n';
  return status;
}

int Run(Command command, const Options& options) {
  const bool jsonErrors = options.errors == "json";
  const TimelineConvert::FailureReport report(
      jsonErrors ? TimelineConvert::ErrorFormat::Json : TimelineConvert::ErrorFormat::Text,
      std::cerr);
  std::string text;
  std::string problem;
  if (!ReadInput(options.input, text, problem)) {
    report.Io(InputName(options.input), "read", problem);
    return kUnusableInput;
  }
  TimelineConvert::PlaylistDocument document;
  try {
    document = TimelineConvert::ReadPlaylistDocument(text);
  } catch (const TimelineConvert::DocumentError& error) {
    report.Malformed(InputName(options.input), error);
    return kUnusableInput;
  }
  std::string().swap(text);  // the records hold all that is needed now
  const auto mode = options.durationMode == "playlist"
                        ? Conversion::TimelineConverter::FromPlaylist
                        : Conversion::TimelineConverter::FromTrackItems;
  // The whole result is made before the output is touched, so a refusal leaves
  // it as it was; the timeline's JSON is then streamed into it. Only a render
  // writes on refusal: the picture of the playlist up to the refused element.
  std::function<void(std::ostream&)> write;
  std::optional<TimelineConvert::RefusalPlace> refusal;
  int status = 0;
  try {
    if (command == Command::Render) {
      write = [picture = TimelineConvert::RenderDocument(document, mode, options.html, refusal)](
                  std::ostream& out) { out << picture; };
    } else if (command == Command::Check) {
      const auto checked = TimelineConvert::CheckDocument(document, mode);
      refusal = checked.refusal;
      status = TimelineConvert::CheckExitStatus(checked);
      write = [listing =
                   TimelineConvert::CheckListing(InputName(options.input), checked, jsonErrors)](
                  std::ostream& out) { out << listing; };
    } else if (command == Command::Assets) {
      write = [listing = TimelineConvert::ListUsedAssets(document)](std::ostream& out) {
        out << listing;
      };
    } else {
      auto timeline = std::make_shared<const Kov::TimelineEngineModel::Timeline>(
          Conversion::TimelineConverter::ToTimeline(document.playlist, mode, document.assets));
      if (options.format == "otio") {
        write = [text = TimelineConvert::TimelineToOtioText(
                     *timeline, TimelineConvert::OtioOptionsFromDocument(document, mode))](
                    std::ostream& out) { out << text; };
      } else {
        write = [timeline](std::ostream& out) {
          TimelineConvert::WriteTimelineJson(out, *timeline);
        };
      }
    }
  } catch (const std::exception& error) {
    // Only now, on the failure path, is the refusal's place looked for.
    refusal = TimelineConvert::LocateRefusal(document, mode);
    if (!refusal) {
      refusal = TimelineConvert::RefusalPlace();
      refusal->message = error.what();
    }
    report.Refused(InputName(options.input), *refusal);
    return kRefused;
  }
  if (refusal) {
    report.Refused(InputName(options.input), *refusal);
    status = kRefused;
  }
  try {
    TimelineConvert::WriteOutput(options.output, write);
  } catch (const TimelineConvert::OutputError& error) {
    report.Io(TimelineConvert::OutputName(error.Path()), "write", error.Reason());
    return kUnusableInput;
  }
  return status;
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
  // A reader that goes away, or a file size limit, is a write error with a
  // message, never a silent death half way.
  std::signal(SIGPIPE, SIG_IGN);
  std::signal(SIGXFSZ, SIG_IGN);
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
  convert
      ->add_option("--format", options.format,
                   "engine: the engine model as JSON; otio: an OpenTimelineIO document "
                   "(docs/otio.md)")
      ->check(CLI::IsMember({"engine", "otio"}))
      ->capture_default_str();

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
      "sound parts, transitions, a timecode ruler, flagged problems; a refused playlist is "
      "drawn up to the refused element, written, and exits with 2");
  AddConversionOptions(*render, options,
                       "Where to write the SVG (or HTML) picture; - is standard output");
  render->add_flag("--html", options.html,
                   "Write an offline viewer page (zoom, search, details) instead of the SVG");

  auto* check = app.add_subcommand(
      "check",
      "Convert the playlist and report what is legal but almost certainly not meant (negative "
      "or ignored speeds, overlaps, transitions that give nothing, a 0-frame aux item, IN or OUT "
      "outside the recorded material, unused or missing assets), one per line with its place, "
      "then a summary. Exit status 0 nothing found, 3 findings only, 2 refused, 1 unusable");
  AddConversionOptions(*check, options, "Where to write the findings; - is standard output");

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
                          : check->parsed()  ? Command::Check
                                             : Command::Render;
  try {
    return Run(command, options);
  } catch (const std::bad_alloc&) {
    return Fail(kUnusableInput, "out of memory");
  }
}
