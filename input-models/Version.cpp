// The version of the shared object, fixed when it is built from the macros of
// its own Version.h.
#include "Version.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

VersionNumber LibraryVersion() {
  return VersionNumber{TIMELINE_ENGINE_CONVERSION_VERSION_MAJOR,
                       TIMELINE_ENGINE_CONVERSION_VERSION_MINOR,
                       TIMELINE_ENGINE_CONVERSION_VERSION_PATCH};
}

const char* LibraryVersionText() {
  return TIMELINE_ENGINE_CONVERSION_VERSION_TEXT;
}

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
