// Allocation-failure injection. This program replaces the global operator new
// with one that fails at the N-th allocation after being armed, and runs a
// representative conversion for every N from 1 until a run completes. Every
// run must end in std::bad_alloc or in the reference result, must free every
// allocation it made (counted here; LeakSanitizer checks again at exit under
// the address sanitizer) and must leave its input unchanged. It is a program
// of its own because the replacement applies to the whole process.
#include <cstdio>
#include <cstdlib>
#include <new>
#include <optional>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "RepresentativeSequence.h"

namespace {

// Single-threaded by design: nothing else allocates while a run is armed.
std::size_t liveAllocations = 0;
// Allocations still allowed before the injected failure; negative when disarmed.
long allocationsBeforeFailure = -1;
bool failureInjected = false;

}  // namespace

namespace {

void* CountedAllocate(std::size_t size) {
  if (allocationsBeforeFailure == 0) {
    allocationsBeforeFailure = -1;
    failureInjected = true;
    throw std::bad_alloc();
  }
  if (allocationsBeforeFailure > 0) {
    --allocationsBeforeFailure;
  }
  void* memory = std::malloc(size == 0 ? 1 : size);
  if (memory == nullptr) {
    throw std::bad_alloc();
  }
  ++liveAllocations;
  return memory;
}

void CountedRelease(void* memory) noexcept {
  if (memory != nullptr) {
    --liveAllocations;
    std::free(memory);
  }
}

}  // namespace

// Every form, as a sanitizer runtime replaces them all.
void* operator new(std::size_t size) {
  return CountedAllocate(size);
}
void* operator new[](std::size_t size) {
  return CountedAllocate(size);
}
void operator delete(void* memory) noexcept {
  CountedRelease(memory);
}
void operator delete[](void* memory) noexcept {
  CountedRelease(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  CountedRelease(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  CountedRelease(memory);
}

namespace {

using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

bool Fails(const char* conversion, long n, const std::string& what) {
  std::fprintf(stderr, "%s, allocation %ld failing: %s\n", conversion, n, what.c_str());
  return false;
}

// The text of convert()'s result or of its refusal, with allocation n failing
// (none for n = 0), copied into `outcome`, whose capacity is reserved so that
// the allocation count before and after the run can be compared. Only
// convert() runs armed.
template <typename Convert>
void Run(const Convert& convert, long n, std::string& outcome) {
  std::optional<decltype(convert())> result;
  failureInjected = false;
  allocationsBeforeFailure = n - 1;
  try {
    result.emplace(convert());
  } catch (const std::exception& error) {
    allocationsBeforeFailure = -1;
    outcome.assign(std::string("refused ") + typeid(error).name() + ": " + error.what());
    return;
  }
  allocationsBeforeFailure = -1;
  using ModelText::Describe;
  using reliability::Describe;
  outcome.assign(Describe(*result));
}

// Runs `convert` with allocation n failing, for n = 1, 2, ... until a run
// completes without meeting the failure, which must give the unarmed outcome,
// here starting with `expected`.
template <typename Convert>
bool SurvivesEveryAllocationFailure(const char* conversion,
                                    const reliability::RepresentativeSequence& sequence,
                                    const Convert& convert, const std::string& expected = "") {
  // Unarmed first: this also makes the library's shared constants.
  std::string reference;
  Run(convert, 0, reference);
  if (reference.rfind(expected, 0) != 0) {
    return Fails(conversion, 0, "the unarmed outcome is not " + expected + ": " + reference);
  }
  const std::string input = reliability::Describe(sequence);
  const std::string badAlloc =
      std::string("refused ") + typeid(std::bad_alloc).name() + ": std::bad_alloc";
  std::string outcome;
  outcome.reserve(4 * reference.size() + 1024);
  for (long n = 1;; ++n) {
    const std::size_t liveBefore = liveAllocations;
    Run(convert, n, outcome);
    if (!failureInjected) {
      if (outcome != reference) {
        return Fails(conversion, n, "no failure met, but not the unarmed outcome: " + outcome);
      }
      if (n == 1) {
        return Fails(conversion, n, "no allocation seen: the replacement is not in effect");
      }
      std::printf("%s: each of its %ld allocations failed cleanly\n", conversion, n - 1);
      return true;
    }
    if (outcome != badAlloc) {
      return Fails(conversion, n, "ended in " + outcome);
    }
    if (liveAllocations != liveBefore) {
      return Fails(conversion, n,
                   std::to_string(liveAllocations - liveBefore) + " allocations not freed");
    }
    if (reliability::Describe(sequence) != input) {
      return Fails(conversion, n, "the input changed");
    }
  }
}

}  // namespace

int main() {
  const reliability::RepresentativeSequence sequence;
  // The same sequence with a transition longer than the media before its cut:
  // the refusal's message is built while allocations fail, too.
  reliability::RepresentativeSequence refused;
  refused.playlist.audioVideoTrack.elements[2].videoTransitionDuration = 2000;
  bool passed = SurvivesEveryAllocationFailure("ToTimeline", sequence, [&] {
    return TimelineConverter::ToTimeline(sequence.playlist, TimelineConverter::FromTrackItems,
                                         sequence.assets);
  });
  passed &= SurvivesEveryAllocationFailure(
      "ToTimeline refused", refused,
      [&] {
        return TimelineConverter::ToTimeline(refused.playlist, TimelineConverter::FromPlaylist,
                                             refused.assets);
      },
      std::string("refused ") + typeid(std::logic_error).name());
  passed &= SurvivesEveryAllocationFailure("ListAssetsFromPlaylist", sequence, [&] {
    return TimelineConverter::ListAssetsFromPlaylist(sequence.playlist);
  });
  return passed ? EXIT_SUCCESS : EXIT_FAILURE;
}
