// The stages every command starts with: the input read whole and the
// document read once.
#include <iostream>

#include "cli/InputFile.h"
#include "commands/Commands.h"

namespace TimelineConvert {

namespace LeftToExit {
namespace {
// The last value kept: from it every kept value stays reachable.
Left* last = nullptr;
}  // namespace

void Keep(Left* left) {
  left->previous = last;
  last = left;
}
}  // namespace LeftToExit

DurationMode CommandContext::Mode() const {
  using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;
  return options.durationMode == "playlist" ? TimelineConverter::FromPlaylist
                                            : TimelineConverter::FromTrackItems;
}

ExitStatus RunCommand(ExitStatus (*command)(const CommandContext&), const CommandOptions& options) {
  const FailureReport report(options.errors == "json" ? ErrorFormat::Json : ErrorFormat::Text,
                             std::cerr);
  const std::string inputName = InputName(options.input);
  InputText text;
  std::string problem;
  if (!ReadInput(options.input, text, problem)) {
    report.Io(inputName, "read", problem);
    return ExitStatus::Unusable;
  }
  PlaylistDocument document;
  try {
    document = ReadPlaylistDocument(text.View());
  } catch (const DocumentError& error) {
    report.Malformed(inputName, error);
    return ExitStatus::Unusable;
  }
  text.Release();  // the records hold all that is needed now
  const ExitStatus status = command(CommandContext{options, document, report, inputName});
  LeaveToExit(document);
  return status;
}

}  // namespace TimelineConvert
