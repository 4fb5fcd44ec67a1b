// SPDX-License-Identifier: Apache-2.0
// The library's version: macros for compile-time checks against the headers a
// caller builds with, and functions that report the version of the shared
// object actually loaded, so a host can refuse a library of another major
// version before it converts anything.
#pragma once

#include "Export.h"

// The build refuses to configure when these differ from the CMake project version.
#define TIMELINE_ENGINE_CONVERSION_VERSION_MAJOR 1
#define TIMELINE_ENGINE_CONVERSION_VERSION_MINOR 0
#define TIMELINE_ENGINE_CONVERSION_VERSION_PATCH 0
#define TIMELINE_ENGINE_CONVERSION_VERSION_TEXT "1.0.0"
// One number that grows with every release, for `#if` tests: 10000 * major + 100 * minor + patch.
#define TIMELINE_ENGINE_CONVERSION_VERSION            \
  (TIMELINE_ENGINE_CONVERSION_VERSION_MAJOR * 10000 + \
   TIMELINE_ENGINE_CONVERSION_VERSION_MINOR * 100 + TIMELINE_ENGINE_CONVERSION_VERSION_PATCH)

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {

struct VersionNumber {
  /// Incremented when the binary interface breaks (the shared object's SOVERSION).
  int major = 0;
  /// Incremented when the API grows compatibly.
  int minor = 0;
  /// Incremented for fixes only.
  int patch = 0;
};

/// The version the loaded library was built as. A caller built against headers
/// of another major version must not use it: the binary interface differs.
TIMELINE_ENGINE_CONVERSION_API VersionNumber LibraryVersion();

/// The same, as "major.minor.patch".
TIMELINE_ENGINE_CONVERSION_API const char* LibraryVersionText();

}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
