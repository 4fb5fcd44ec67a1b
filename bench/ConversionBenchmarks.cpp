// The conversion benchmarks. Every public operation is timed over a synthetic
// input, and so is its floor, which builds the very same output from finished
// values; both sides are measured the same way, each in a benchmark of its
// own, after one untimed call, in two patterns:
//   steady  each call's result replaces the previous one, so freeing the
//           previous result is inside the clock (a caller that keeps the last
//           result until the next one is made);
//   own     each result is freed outside the clock, before the next call (a
//           caller that converts one sequence after another and drops each).
// Per element (per asset for the media infos) every benchmark reports its time,
// its allocations and the page faults met inside the clock; scripts/bench.sh
// sets each operation against its floor.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "AllocationCounter.h"
#include "OutputFloor.h"
#include "SyntheticInput.h"

namespace TimelineEngineBench {
namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kElementCounts[] = {1000, 10000, 100000};
constexpr std::size_t kRangeCounts[] = {1, 100};

enum class Pattern { Steady, Own };

// One input with everything that its benchmarks compare against.
struct Prepared {
  std::size_t elements = 0;
  std::size_t ranges = 0;
  SyntheticInput input;
  Conversion::ExternalSequenceInfo info;
  Engine::Timeline expected;
  TimelineBlueprint blueprint;
  std::vector<Identifier> expectedAssets;
  std::vector<const Kov::DataModel::MediaAssets::MediaAsset*> assetsInMapOrder;
};

// Inputs are large; only the one in use is kept, and benchmarks are registered
// input by input so that each is made once.
const Prepared& PreparedFor(std::size_t elements, std::size_t ranges) {
  static std::unique_ptr<Prepared> current;
  if (current && current->elements == elements && current->ranges == ranges) {
    return *current;
  }
  current.reset();
  auto prepared = std::make_unique<Prepared>();
  prepared->elements = elements;
  prepared->ranges = ranges;
  prepared->input = MakeSyntheticInput(elements, ranges);
  const auto& playlist = prepared->input.playlist;
  prepared->expected = Conversion::TimelineConverter::ToTimeline(
      playlist, Conversion::TimelineConverter::FromTrackItems, prepared->input.assets);
  prepared->blueprint = MakeBlueprint(prepared->expected);
  prepared->expectedAssets = Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist);
  prepared->info = Conversion::ExternalSequenceInfo{prepared->expected.id, playlist.rate,
                                                    prepared->input.assets};
  for (const auto& entry : *prepared->input.assets) {
    prepared->assetsInMapOrder.push_back(&entry.second);
  }
  current = std::move(prepared);
  return *current;
}

// Minor and major page faults of this thread so far.
std::int64_t PageFaultsOnThisThread() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return usage.ru_minflt + usage.ru_majflt;
}

// What the timed calls of one benchmark added up to.
struct Totals {
  Clock::duration time{};
  std::uint64_t allocations = 0;
  std::int64_t pageFaults = 0;
};

// Measures around one timed stretch of a benchmark.
class Stopwatch {
 public:
  explicit Stopwatch(Totals& totals)
      : totals_(totals),
        allocations_(AllocationsOnThisThread()),
        pageFaults_(PageFaultsOnThisThread()),
        start_(Clock::now()) {}

  // Stops the clock and returns the time since the start.
  Clock::duration Stop() {
    const Clock::duration elapsed = Clock::now() - start_;
    totals_.pageFaults += PageFaultsOnThisThread() - pageFaults_;
    totals_.allocations += AllocationsOnThisThread() - allocations_;
    totals_.time += elapsed;
    return elapsed;
  }

 private:
  Totals& totals_;
  std::uint64_t allocations_;
  std::int64_t pageFaults_;
  Clock::time_point start_;
};

// Times `call` in the benchmark's iterations in the given pattern, after one
// untimed call, and reports per unit.
template <typename Call>
void Measure(benchmark::State& state, std::size_t units, Pattern pattern, const Call& call) {
  Totals totals;
  if (pattern == Pattern::Steady) {
    auto result = call();
    for (auto _ : state) {
      Stopwatch stopwatch(totals);
      result = call();
      const Clock::duration elapsed = stopwatch.Stop();
      benchmark::DoNotOptimize(result);
      state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
    }
  } else {
    { benchmark::DoNotOptimize(call()); }
    for (auto _ : state) {
      Stopwatch stopwatch(totals);
      auto result = call();
      const Clock::duration elapsed = stopwatch.Stop();
      benchmark::DoNotOptimize(result);
      state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
    }
  }
  const double count = static_cast<double>(state.iterations()) * static_cast<double>(units);
  state.counters["ns_per_element"] =
      static_cast<double>(
          std::chrono::duration_cast<std::chrono::nanoseconds>(totals.time).count()) /
      count;
  state.counters["allocs_per_element"] = static_cast<double>(totals.allocations) / count;
  state.counters["faults_per_element"] = static_cast<double>(totals.pageFaults) / count;
}

// Refuses to measure against a floor that does not build the same timeline.
bool CheckFloor(benchmark::State& state, const Prepared& prepared) {
  if (!SameTimeline(BuildTimeline(prepared.blueprint), prepared.expected)) {
    state.SkipWithError("the floor does not build the expected timeline");
    return false;
  }
  return true;
}

void ToTimelineBenchmark(benchmark::State& state, const Prepared& prepared, Pattern pattern,
                         Conversion::TimelineConverter::DurationMode mode) {
  Engine::Timeline check = Conversion::TimelineConverter::ToTimeline(prepared.input.playlist, mode,
                                                                     prepared.input.assets);
  // The duration is the one field the mode decides; the floor copies the expected one.
  check.duration = prepared.expected.duration;
  if (!SameTimeline(check, prepared.expected)) {
    state.SkipWithError("the conversion differs from the expected timeline");
    return;
  }
  Measure(state, prepared.elements, pattern, [&] {
    return Conversion::TimelineConverter::ToTimeline(prepared.input.playlist, mode,
                                                     prepared.input.assets);
  });
}

void FloorTimelineBenchmark(benchmark::State& state, const Prepared& prepared, Pattern pattern) {
  if (CheckFloor(state, prepared)) {
    Measure(state, prepared.elements, pattern, [&] { return BuildTimeline(prepared.blueprint); });
  }
}

void ToTrackBenchmark(benchmark::State& state, const Prepared& prepared, Pattern pattern) {
  Measure(state, prepared.elements, pattern, [&] {
    return Conversion::TrackConverter::ToTrack(prepared.input.playlist.audioVideoTrack, 0,
                                               prepared.info);
  });
}

void FloorTrackBenchmark(benchmark::State& state, const Prepared& prepared, Pattern pattern) {
  if (CheckFloor(state, prepared)) {
    Measure(state, prepared.elements, pattern,
            [&] { return BuildTrack(prepared.blueprint.tracks.front()); });
  }
}

void ListAssetsBenchmark(benchmark::State& state, const Prepared& prepared, Pattern pattern) {
  Measure(state, prepared.elements, pattern, [&] {
    return Conversion::TimelineConverter::ListAssetsFromPlaylist(prepared.input.playlist);
  });
}

void FloorAssetListBenchmark(benchmark::State& state, const Prepared& prepared, Pattern pattern) {
  Measure(state, prepared.elements, pattern,
          [&] { return BuildAssetList(prepared.expectedAssets); });
}

// Every asset of the map in turn, as the timeline conversion walks it; the
// floor copies the finished media infos. Each info is freed inside the clock.
void ToMediaInfoBenchmark(benchmark::State& state, const Prepared& prepared) {
  const auto& rate = prepared.input.playlist.rate;
  Measure(state, prepared.assetsInMapOrder.size(), Pattern::Steady, [&] {
    std::uint64_t sink = 0;
    for (const auto* asset : prepared.assetsInMapOrder) {
      auto info = Conversion::MediaInfoConverter::ToMediaInfo(*asset, rate);
      benchmark::DoNotOptimize(info);
      sink += static_cast<std::uint64_t>(info.duration);
    }
    return sink;
  });
}

void FloorMediaInfoBenchmark(benchmark::State& state, const Prepared& prepared) {
  Measure(state, prepared.assetsInMapOrder.size(), Pattern::Steady, [&] {
    std::uint64_t sink = 0;
    for (const auto& expected : prepared.expected.mediaInfos) {
      Engine::MediaInfo info = expected;
      benchmark::DoNotOptimize(info);
      sink += static_cast<std::uint64_t>(info.duration);
    }
    return sink;
  });
}

using Run = std::function<void(benchmark::State&, const Prepared&, Pattern)>;

void Register(const std::string& name, std::size_t elements, std::size_t ranges, Pattern pattern,
              Run run) {
  const std::string fullName = name + (pattern == Pattern::Steady ? "/steady" : "/own") +
                               "/elements:" + std::to_string(elements) +
                               "/ranges:" + std::to_string(ranges);
  benchmark::RegisterBenchmark(
      fullName.c_str(),
      [=](benchmark::State& state) { run(state, PreparedFor(elements, ranges), pattern); })
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

void RegisterAll() {
  using Converter = Conversion::TimelineConverter;
  for (const std::size_t ranges : kRangeCounts) {
    for (const std::size_t elements : kElementCounts) {
      for (const Pattern pattern : {Pattern::Steady, Pattern::Own}) {
        Register("FloorTimeline", elements, ranges, pattern, FloorTimelineBenchmark);
        Register("ToTimeline_FromTrackItems", elements, ranges, pattern,
                 [](benchmark::State& state, const Prepared& prepared, Pattern p) {
                   ToTimelineBenchmark(state, prepared, p, Converter::FromTrackItems);
                 });
        Register("ToTimeline_FromPlaylist", elements, ranges, pattern,
                 [](benchmark::State& state, const Prepared& prepared, Pattern p) {
                   ToTimelineBenchmark(state, prepared, p, Converter::FromPlaylist);
                 });
        Register("FloorTrack", elements, ranges, pattern, FloorTrackBenchmark);
        Register("ToTrack", elements, ranges, pattern, ToTrackBenchmark);
        if (ranges == 1) {
          Register("FloorAssetList", elements, ranges, pattern, FloorAssetListBenchmark);
          Register("ListAssetsFromPlaylist", elements, ranges, pattern, ListAssetsBenchmark);
        }
      }
    }
    // Per asset of the map of the smallest input.
    Register("FloorMediaInfo", kElementCounts[0], ranges, Pattern::Steady,
             [](benchmark::State& state, const Prepared& prepared, Pattern) {
               FloorMediaInfoBenchmark(state, prepared);
             });
    Register("ToMediaInfo", kElementCounts[0], ranges, Pattern::Steady,
             [](benchmark::State& state, const Prepared& prepared, Pattern) {
               ToMediaInfoBenchmark(state, prepared);
             });
  }
}

}  // namespace
}  // namespace TimelineEngineBench

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) {
    return 1;
  }
  TimelineEngineBench::RegisterAll();
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
