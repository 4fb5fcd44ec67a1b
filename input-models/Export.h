// SPDX-License-Identifier: Apache-2.0
// Marks the types and functions that the shared library exports. The library is
// built with hidden visibility, so anything a caller links against must carry
// TIMELINE_ENGINE_CONVERSION_API; everything else stays internal to the shared
// object. TIMELINE_ENGINE_CONVERSION_LOCAL keeps a member of an exported class
// internal when only the library itself calls it.
#pragma once

#if defined(_WIN32)
#if defined(TIMELINE_ENGINE_CONVERSION_BUILDING)
#define TIMELINE_ENGINE_CONVERSION_API __declspec(dllexport)
#else
#define TIMELINE_ENGINE_CONVERSION_API __declspec(dllimport)
#endif
#define TIMELINE_ENGINE_CONVERSION_LOCAL
#else
#define TIMELINE_ENGINE_CONVERSION_API __attribute__((visibility("default")))
#define TIMELINE_ENGINE_CONVERSION_LOCAL __attribute__((visibility("hidden")))
#endif
