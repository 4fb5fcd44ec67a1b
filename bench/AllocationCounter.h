// Counts the heap allocations of the current thread. Linking
// AllocationCounter.cpp into an executable replaces the global operator new
// (every form) with one that counts before it allocates, so the allocations of
// the library, of the standard library and of the caller are all seen.
#pragma once

#include <cstdint>

namespace TimelineEngineBench {

// Allocations made by operator new on this thread since it started.
std::uint64_t AllocationsOnThisThread();

}  // namespace TimelineEngineBench
