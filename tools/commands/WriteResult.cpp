// The last stage of every command: its output written whole or not at all,
// or the reason it could not be written.
#include "cli/OutputFile.h"
#include "commands/Commands.h"

namespace TimelineConvert {

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

}  // namespace TimelineConvert
