// Marks the types and functions that the shared library exports. The library is
// built with hidden visibility, so anything a caller links against must carry
// this marker; everything else stays internal to the shared object.
#pragma once

#if defined(_WIN32)
#if defined(TIMELINE_ENGINE_CONVERSION_BUILDING)
#define TIMELINE_ENGINE_CONVERSION_API __declspec(dllexport)
#else
#define TIMELINE_ENGINE_CONVERSION_API __declspec(dllimport)
#endif
#else
#define TIMELINE_ENGINE_CONVERSION_API __attribute__((visibility("default")))
#endif
