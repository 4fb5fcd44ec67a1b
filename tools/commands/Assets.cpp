// assets: the asset identifiers the playlist uses; no conversion needed.
#include "commands/Commands.h"
#include "document/AssetKeys.h"

namespace TimelineConvert {

ExitStatus RunAssets(const CommandContext& context) {
  const std::string listing = ListUsedAssets(context.document);
  return WriteResult(context, [&listing](std::ostream& out) { out << listing; });
}

}  // namespace TimelineConvert
