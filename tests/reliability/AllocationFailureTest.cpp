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
#include <vector>

#include "ModelText.h"
#include "RepresentativeSequence.h"

namespace {

// Single-threaded by design: nothing else allocates while a run is armed.
std::size_t liveAllocations = 0;
// Allocations still allowed before the injected failure; negative when disarmed.
long allocationsBeforeFailure = -1;
bool failureInjected = false;

void* Allocate(std::size_t size) {
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

void Release(void* memory) {
  if (memory != nullptr) {
    --liveAllocations;
    std::free(memory);
  }
}

}  // namespace

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void operator delete(void* memory) noexcept {
  Release(memory);
}
void operator delete[](void* memory) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  Release(memory);
}

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

bool Fails(const char* conversion, long n, const std::string& what) {
  std::fprintf(stderr, "%s, allocation %ld failing: %s\n", conversion, n, what.c_str());
  return false;
}

// The text of convert()'s result or of its refusal, with allocation n failing
// (none for n = 0), copied into `outcome`, whose capacity is reserved so that
// the allocation count before and after the run can be compared. Only
// convert() runs armed.
template <typename Convert, typename DescribeResult>
void Run(const Convert& convert, const DescribeResult& describe, long n, std::string& outcome) {
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
  outcome.assign(describe(*result));
}

// Runs `convert` with allocation n failing, for n = 1, 2, ... until a run
// completes without meeting the failure, which must give the unarmed outcome.
template <typename Convert, typename DescribeResult>
bool SurvivesEveryAllocationFailure(const char* conversion,
                                    const reliability::RepresentativeSequence& sequence,
                                    const Convert& convert, const DescribeResult& describe) {
  // Unarmed first: this also makes the library's shared constants.
  std::string reference;
  Run(convert, describe, 0, reference);
  const std::string input = reliability::Describe(sequence);
  const std::string badAlloc =
      std::string("refused ") + typeid(std::bad_alloc).name() + ": std::bad_alloc";
  std::string outcome;
  outcome.reserve(4 * reference.size() + 1024);
  for (long n = 1;; ++n) {
    const std::size_t liveBefore = liveAllocations;
    Run(convert, describe, n, outcome);
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
  namespace Engine = Kov::TimelineEngineModel;
  using Conversion::TimelineConverter;
  const auto describeTimeline = [](const Engine::Timeline& timeline) {
    return ModelText::Describe(timeline);
  };
  const reliability::RepresentativeSequence sequence = reliability::MakeRepresentativeSequence();
  // The same sequence with a transition longer than the media before its cut:
  // the refusal's message is built while allocations fail, too.
  reliability::RepresentativeSequence refused = reliability::MakeRepresentativeSequence();
  refused.playlist.audioVideoTrack.elements[2].videoTransitionDuration = 2000;

  const auto convertRefused = [&] {
    return TimelineConverter::ToTimeline(refused.playlist, TimelineConverter::FromPlaylist,
                                         refused.assets);
  };
  std::string refusal;
  Run(convertRefused, describeTimeline, 0, refusal);
  if (refusal.rfind(std::string("refused ") + typeid(std::logic_error).name(), 0) != 0) {
    Fails("ToTimeline refused", 0, "the long transition is not refused: " + refusal);
    return EXIT_FAILURE;
  }

  bool passed = SurvivesEveryAllocationFailure(
      "ToTimeline", sequence,
      [&] {
        return TimelineConverter::ToTimeline(sequence.playlist, TimelineConverter::FromTrackItems,
                                             sequence.assets);
      },
      describeTimeline);
  passed &= SurvivesEveryAllocationFailure("ToTimeline refused", refused, convertRefused,
                                           describeTimeline);
  passed &= SurvivesEveryAllocationFailure(
      "ListAssetsFromPlaylist", sequence,
      [&] { return TimelineConverter::ListAssetsFromPlaylist(sequence.playlist); },
      [](const std::vector<Kov::BusinessEntityModel::BaseTypes::Identifier>& ids) {
        std::string text;
        for (const auto& id : ids) {
          text += id.Text() + " ";
        }
        return text;
      });
  return passed ? EXIT_SUCCESS : EXIT_FAILURE;
}
