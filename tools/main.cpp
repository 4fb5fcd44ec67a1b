// timeline-convert: runs the conversion library on a playlist kept in a JSON
// file, so that a conversion can be reproduced, inspected and compared
// without writing C++. This file is the table of commands: name, help,
// options and the function that runs it (commands/); tools/README.md follows
// each command through the files it passes.
//
// Exit status (cli/ExitStatus.h): 0 done; 1 the document, a file or the
// command line could not be used; 2 the library refused the conversion (its
// message on stderr, then where it comes from) or an export cannot hold the
// timeline; 3 check found something.
#include <CLI/CLI.hpp>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <exception>
#include <iostream>
#include <new>
#include <sstream>
#include <string>
#include <vector>

#include "analysis/Findings.h"
#include "cli/EditDistance.h"
#include "cli/ExitStatus.h"
#include "commands/Commands.h"

namespace {

using namespace TimelineConvert;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

// A failure found before the options are known, always as a sentence.
int Fail(ExitStatus status, const std::string& message) {
  std::cerr << "timeline-convert: " << message << '\n';
  return ToInt(status);
}

// An unknown first word is named as such, with the nearest command.
bool IsUnknownCommand(const CLI::App& app, const std::string& word, std::string& message) {
  if (word.empty() || word[0] == '-') {
    return false;
  }
  std::vector<std::string> names;
  for (const CLI::App* command : app.get_subcommands({})) {
    if (command->get_name() == word) {
      return false;
    }
    names.push_back(command->get_name());
  }
  const std::string nearest = NearestWord(word, names);
  message = "unknown command \"" + word + "\"" +
            (nearest.empty() ? "; the commands are convert, assets, render and check"
                             : " (did you mean \"" + nearest + "\"?)");
  return true;
}

// The command-line parser's sentences that leave a user guessing, said
// plainly; any other passes as it is.
std::string ParserMessage(const CLI::App& top, const std::string& said) {
  // "The following argument was not expected: X" or "... arguments were
  // not expected: X Y": an unknown option is the likelier slip, so it is named.
  const auto listed = said.find(" expected: ");
  if (said.compare(0, 14, "The following ") == 0 && listed != std::string::npos) {
    std::istringstream words(said.substr(listed + 11));
    std::string word;
    std::string first;
    while (words >> word) {
      if (first.empty() || (word[0] == '-' && first[0] != '-')) {
        first = word;
      }
    }
    word = first;
    if (word.empty() || word[0] != '-') {
      return "one INPUT only: \"" + word + "\" is one too many";
    }
    std::vector<std::string> names;
    for (const CLI::App* command : top.get_subcommands({})) {
      if (command->parsed()) {
        for (const CLI::Option* option : command->get_options()) {
          for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
          }
        }
      }
    }
    const std::string nearest = NearestWord(word, names);
    return "unknown option " + word +
           (nearest.empty() ? std::string() : " (did you mean " + nearest + "?)");
  }
  if (said == "A subcommand is required") {
    return "a command is needed: convert, assets, render or check";
  }
  if (said == "INPUT is required") {
    return "no INPUT: name a playlist document, or - for standard input";
  }
  const std::string missing = " required ";
  const auto colon = said.find(": ");
  if (colon != std::string::npos && said.find(missing) != std::string::npos && said.size() > 8 &&
      said.compare(said.size() - 8, 8, " missing") == 0) {
    return said.substr(0, colon) + " needs a value";
  }
  return said;
}

void AddInput(CLI::App& command, CommandOptions& options) {
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

void AddConversionOptions(CLI::App& command, CommandOptions& options, const char* outputHelp) {
  AddInput(command, options);
  command.add_option("-o,--output", options.output, outputHelp)->capture_default_str();
  command
      .add_option("--duration-mode", options.durationMode,
                  "items: the timeline ends with its last media item; playlist: the playlist's "
                  "own durationInFields, in frames")
      ->check(CLI::IsMember({"items", "playlist"}))
      ->capture_default_str();
}

void AddConvertOptions(CLI::App& command, CommandOptions& options) {
  AddConversionOptions(command, options,
                       "Where to write the timeline; - is standard output; its extension "
                       "(.json, .otio, .edl) picks the format; a folder takes one EDL per side");
  command
      .add_option("--format", options.format,
                  "engine: the engine model as JSON; otio: an OpenTimelineIO document "
                  "(docs/otio.md); edl: CMX 3600 edit decision lists (docs/edl.md). Default: "
                  "by the output's extension, else engine")
      ->check(CLI::IsMember({"engine", "otio", "edl"}));
  command
      .add_option("--side", options.side,
                  "With --format edl: write only the list of this side (picture, sound, aux)")
      ->check(CLI::IsMember({"picture", "sound", "aux"}));
  command.add_option("--media-url", options.mediaUrl,
                     "With OpenTimelineIO: where the media files are, {clip} and {asset} "
                     "replaced (file:///media/{clip}.mxf); without it references are missing");
  command.add_option("--report", options.report,
                     "Also write, element by element, what the export carried exactly, "
                     "approximated or refused (text; JSON with --errors json)");
  command.add_flag("--compact", options.compact,
                   "Write the JSON (engine or OpenTimelineIO) without indentation");
}

void AddAssetsOptions(CLI::App& command, CommandOptions& options) {
  AddInput(command, options);
  command
      .add_option("-o,--output", options.output, "Where to write the list; - is standard output")
      ->capture_default_str();
}

void AddRenderOptions(CLI::App& command, CommandOptions& options) {
  AddConversionOptions(command, options,
                       "Where to write the SVG (or HTML) picture; - is standard output");
  command.add_flag("--html", options.html,
                   "Write an offline viewer page (zoom, search, details) instead of the SVG");
}

// A list of finding kinds, each one the tool knows.
CLI::Validator FindingKindList() {
  return CLI::Validator(
      [](std::string& kind) {
        const auto kinds = FindingKinds();
        if (std::find(kinds.begin(), kinds.end(), kind) != kinds.end()) {
          return std::string();
        }
        const std::string nearest = NearestWord(kind, kinds);
        return "unknown finding kind \"" + kind + "\"" +
               (nearest.empty() ? std::string("; docs/cli.md lists them")
                                : " (did you mean \"" + nearest + "\"?)");
      },
      "KIND,...");
}

void AddCheckOptions(CLI::App& command, CommandOptions& options) {
  AddConversionOptions(command, options, "Where to write the findings; - is standard output");
  command.add_option("--only", options.onlyKinds, "Report only these kinds of finding")
      ->delimiter(',')
      ->check(FindingKindList());
  command.add_option("--ignore", options.ignoredKinds, "Do not report these kinds of finding")
      ->delimiter(',')
      ->check(FindingKindList());
  command.add_flag("--all", options.allFindings,
                   "Every finding of a kind, not the first 10 and a count of the rest");
  command
      .add_option("--max-drift", options.findingOptions.maxDrift,
                  "Frames picture and sound may start apart before av-drift reports an item")
      ->check(CLI::Validator(
          [](const std::string& frames) {
            return frames.find_first_not_of("0123456789") == std::string::npos
                       ? std::string()
                       : "a count of frames, 0 or more, is expected, not \"" + frames + "\"";
          },
          "FRAMES"))
      ->capture_default_str();
  command
      .add_option("--speed-limit", options.findingOptions.speedLimit,
                  "Speeds faster than this or slower than its inverse are reported")
      ->check(CLI::Range(std::int64_t{1}, std::int64_t{1} << 31))
      ->capture_default_str();
}

struct CommandRow {
  const char* name;
  const char* help;
  void (*addOptions)(CLI::App&, CommandOptions&);
  ExitStatus (*run)(const CommandContext&);
};

const CommandRow kCommands[] = {
    {"convert",
     "Convert the playlist and write the timeline as engine JSON, OpenTimelineIO or CMX 3600 "
     "edit decision lists",
     AddConvertOptions, RunConvert},
    {"assets",
     "List the asset identifiers the playlist uses, in the library's order (aux clip first, "
     "repeats kept), one per line: identifier, clip id, present or missing in the document",
     AddAssetsOptions, RunAssets},
    {"render",
     "Convert the playlist and draw the timeline: one lane per track, picture and "
     "sound parts, transitions, a timecode ruler, flagged problems; a refused playlist is "
     "drawn up to the refused element, written, and exits with 2",
     AddRenderOptions, RunRender},
    {"check",
     "Convert the playlist and report what is legal but almost certainly not meant (negative, "
     "ignored or extreme speeds, overlaps, picture and sound drifting apart, transitions that "
     "give nothing, run short of material or that an export cannot hold, parts or an aux item "
     "of 0 frames, IN or OUT outside the recorded material, broken recorded ranges, unused or "
     "missing assets), one per line with its place, then a summary; a refusal says what to "
     "change. Exit status 0 nothing found, 3 findings, 2 refused, 1 unusable",
     AddCheckOptions, RunCheck},
};

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
  CommandOptions options;
  std::vector<std::pair<const CLI::App*, const CommandRow*>> commands;
  for (const auto& row : kCommands) {
    auto* command = app.add_subcommand(row.name, row.help);
    row.addOptions(*command, options);
    commands.emplace_back(command, &row);
  }

  app.set_version_flag("-V,--version", std::string("timeline-convert ") + TEC_TOOL_VERSION +
                                           " (conversion library " +
                                           Conversion::LibraryVersionText() + ")");
  // CLI11's own messages carry the tool's name too, on one line.
  app.failure_message([](const CLI::App* top, const CLI::Error& error) {
    return "timeline-convert: " + ParserMessage(*top, error.what()) +
           " (timeline-convert --help lists the commands and options)\n";
  });
  std::string unknown;
  if (argc > 1 && IsUnknownCommand(app, argv[1], unknown)) {
    return Fail(ExitStatus::Unusable, unknown);
  }
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : ToInt(ExitStatus::Unusable);
  }
  const CommandRow* chosen = nullptr;
  for (const auto& command : commands) {
    if (command.first->parsed()) {
      chosen = command.second;
    }
  }
  try {
    return ToInt(RunCommand(chosen->run, options));
  } catch (const std::bad_alloc&) {
    return Fail(ExitStatus::Unusable, "out of memory");
  } catch (const std::exception& error) {
    // Refusals are handled where they arise; anything else still ends with a
    // message, never with an abort.
    return Fail(ExitStatus::Unusable, std::string("unexpected failure: ") + error.what());
  }
}
