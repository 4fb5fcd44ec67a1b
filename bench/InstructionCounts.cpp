// Instruction counts and stack depth of single calls, for scripts/bench.sh.
// It makes the synthetic input of the given size (and the floor's blueprint),
// makes one untimed call of the operation, frees its result, then measures one
// more call, starting from merged free lists (malloc_trim). Under callgrind
// (--instr-atstart=no) it dumps that call's counts under the operation's name
// (the result is freed after the dump); run on its own, it prints the stack
// depth of that call. Each operation runs in a process of its own, so that the
// conversion and its floor start from heaps with the same history:
//
//   TimelineEngineConversionInstructions <operation> <elements> <ranges>
//   operations: ToTimeline FloorTimeline ToTrack FloorTrack
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#if __has_include(<valgrind/callgrind.h>)
#include <valgrind/callgrind.h>
#define TEC_HAVE_CALLGRIND 1
#else
#define TEC_HAVE_CALLGRIND 0
#endif

#include "OutputFloor.h"
#include "SyntheticInput.h"

namespace TimelineEngineBench {
namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;

// Deep enough for any call measured here; the depth is reported only below it.
constexpr std::size_t kPaintedStack = 256 * 1024;
constexpr unsigned char kPaint = 0xA5;

bool UnderValgrind() {
#if TEC_HAVE_CALLGRIND
  return RUNNING_ON_VALGRIND != 0;
#else
  return false;
#endif
}

// Both functions have the same frame, one after the other below their caller's:
// the second reads, on purpose, the bytes that the first left there.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"

// Fills the stack below the caller's frame with a known byte, so that what a
// call overwrites afterwards can be measured.
[[gnu::noinline]] void PaintStack() {
  volatile unsigned char area[kPaintedStack];
  for (std::size_t i = 0; i < kPaintedStack; ++i) {
    area[i] = kPaint;
  }
}

// How deep below the caller's frame the stack was written since PaintStack:
// the painted bytes left untouched at the far end are not counted.
[[gnu::noinline]] std::size_t StackWritten() {
  volatile unsigned char area[kPaintedStack];
  std::size_t untouched = 0;
  while (untouched < kPaintedStack && area[untouched] == kPaint) {
    ++untouched;
  }
  return kPaintedStack - untouched;
}

#pragma GCC diagnostic pop

// One untimed call, then the measured one: its instructions (under callgrind)
// or its stack depth (on its own).
template <typename Call>
void Count(const char* name, const Call& call) {
  { auto warmUp = call(); }
  // Freeing the warm-up result leaves the allocator's small free lists full,
  // and the first large request after that merges them all, whichever side
  // makes it: merged here, that cost is counted on neither side.
  malloc_trim(0);
  if (UnderValgrind()) {
#if TEC_HAVE_CALLGRIND
    CALLGRIND_START_INSTRUMENTATION;
    CALLGRIND_ZERO_STATS;
    auto result = call();
    CALLGRIND_DUMP_STATS_AT(name);
    CALLGRIND_STOP_INSTRUMENTATION;
#endif
    return;
  }
  PaintStack();
  { auto result = call(); }
  std::printf("stack %s %zu\n", name, StackWritten());
}

}  // namespace
}  // namespace TimelineEngineBench

int main(int argc, char** argv) {
  using namespace TimelineEngineBench;
  if (argc != 4) {
    std::fprintf(stderr, "usage: %s <operation> <elements> <ranges>\n", argv[0]);
    return 2;
  }
  const std::string operation = argv[1];
  const SyntheticInput input =
      MakeSyntheticInput(std::strtoul(argv[2], nullptr, 10), std::strtoul(argv[3], nullptr, 10));
  const auto& playlist = input.playlist;
  const Engine::Timeline expected = Conversion::TimelineConverter::ToTimeline(
      playlist, Conversion::TimelineConverter::FromTrackItems, input.assets);
  const TimelineBlueprint blueprint = MakeBlueprint(expected);
  const Conversion::ExternalSequenceInfo info{expected.id, playlist.rate, input.assets};

  if (operation == "ToTimeline") {
    Count("ToTimeline", [&] {
      return Conversion::TimelineConverter::ToTimeline(
          playlist, Conversion::TimelineConverter::FromTrackItems, input.assets);
    });
  } else if (operation == "FloorTimeline") {
    Count("FloorTimeline", [&] { return BuildTimeline(blueprint); });
  } else if (operation == "ToTrack") {
    Count("ToTrack",
          [&] { return Conversion::TrackConverter::ToTrack(playlist.audioVideoTrack, 0, info); });
  } else if (operation == "FloorTrack") {
    Count("FloorTrack", [&] { return BuildTrack(blueprint.tracks.front()); });
  } else {
    std::fprintf(stderr, "unknown operation %s\n", operation.c_str());
    return 2;
  }
  return 0;
}
