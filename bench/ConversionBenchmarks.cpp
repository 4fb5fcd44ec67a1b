// The conversion benchmarks. Every benchmark times one public operation over a
// synthetic input and, in the same iterations, the floor that builds the very
// same output from finished values; it reports per element (per asset for the
// media infos) the time and allocations of both and the ratio of their times.
// Only the building is timed: each output is destroyed outside the clock, and
// conversion and floor each start from the heap that the previous one left.
#include <benchmark/benchmark.h>

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

struct Totals {
  Clock::duration time{};
  std::uint64_t allocations = 0;
};

// Times one call, counts its allocations, and destroys its result untimed.
template <typename Call>
Clock::duration TimedCall(const Call& call, Totals& totals) {
  const std::uint64_t allocationsBefore = AllocationsOnThisThread();
  const Clock::time_point start = Clock::now();
  auto result = call();
  const Clock::time_point end = Clock::now();
  totals.allocations += AllocationsOnThisThread() - allocationsBefore;
  benchmark::DoNotOptimize(result);
  totals.time += end - start;
  return end - start;
}

double NanosecondsPer(const Totals& totals, double count) {
  return static_cast<double>(
             std::chrono::duration_cast<std::chrono::nanoseconds>(totals.time).count()) /
         count;
}

// The operation and its floor in turns; the reported iteration time is the
// operation's alone.
template <typename Convert, typename Floor>
void MeasureAgainstFloor(benchmark::State& state, std::size_t units, const Convert& convert,
                         const Floor& floor) {
  Totals converted;
  Totals built;
  for (auto _ : state) {
    const Clock::duration elapsed = TimedCall(convert, converted);
    state.SetIterationTime(std::chrono::duration<double>(elapsed).count());
    TimedCall(floor, built);
  }
  const double count = static_cast<double>(state.iterations()) * static_cast<double>(units);
  state.counters["ns_per_element"] = NanosecondsPer(converted, count);
  state.counters["floor_ns_per_element"] = NanosecondsPer(built, count);
  state.counters["floor_ratio"] =
      static_cast<double>(converted.time.count()) / static_cast<double>(built.time.count());
  state.counters["allocs_per_element"] = static_cast<double>(converted.allocations) / count;
  state.counters["floor_allocs_per_element"] = static_cast<double>(built.allocations) / count;
}

// Refuses to measure against a floor that does not build the same timeline.
bool CheckFloor(benchmark::State& state, const Prepared& prepared) {
  if (!SameTimeline(BuildTimeline(prepared.blueprint), prepared.expected)) {
    state.SkipWithError("the floor does not build the expected timeline");
    return false;
  }
  return true;
}

void ToTimelineBenchmark(benchmark::State& state, std::size_t elements, std::size_t ranges,
                         Conversion::TimelineConverter::DurationMode mode) {
  const Prepared& prepared = PreparedFor(elements, ranges);
  Engine::Timeline check = Conversion::TimelineConverter::ToTimeline(prepared.input.playlist, mode,
                                                                     prepared.input.assets);
  // The duration is the one field the mode decides; the floor copies the expected one.
  check.duration = prepared.expected.duration;
  if (!SameTimeline(check, prepared.expected) || !CheckFloor(state, prepared)) {
    if (!state.error_occurred()) {
      state.SkipWithError("the conversion differs from the expected timeline");
    }
    return;
  }
  MeasureAgainstFloor(
      state, elements,
      [&] {
        return Conversion::TimelineConverter::ToTimeline(prepared.input.playlist, mode,
                                                         prepared.input.assets);
      },
      [&] { return BuildTimeline(prepared.blueprint); });
}

void ToTrackBenchmark(benchmark::State& state, std::size_t elements, std::size_t ranges) {
  const Prepared& prepared = PreparedFor(elements, ranges);
  if (!CheckFloor(state, prepared)) {
    return;
  }
  MeasureAgainstFloor(
      state, elements,
      [&] {
        return Conversion::TrackConverter::ToTrack(prepared.input.playlist.audioVideoTrack, 0,
                                                   prepared.info);
      },
      [&] { return BuildTrack(prepared.blueprint.tracks.front()); });
}

void ListAssetsBenchmark(benchmark::State& state, std::size_t elements) {
  const Prepared& prepared = PreparedFor(elements, 1);
  MeasureAgainstFloor(
      state, elements,
      [&] {
        return Conversion::TimelineConverter::ListAssetsFromPlaylist(prepared.input.playlist);
      },
      [&] { return BuildAssetList(prepared.expectedAssets); });
}

// Every asset of the map in turn, as the timeline conversion walks it.
void ToMediaInfoBenchmark(benchmark::State& state, std::size_t ranges) {
  const Prepared& prepared = PreparedFor(kElementCounts[0], ranges);
  const auto& rate = prepared.input.playlist.rate;
  const auto& expectedInfos = prepared.expected.mediaInfos;
  MeasureAgainstFloor(
      state, prepared.assetsInMapOrder.size(),
      [&] {
        std::uint64_t sink = 0;
        for (const auto* asset : prepared.assetsInMapOrder) {
          auto info = Conversion::MediaInfoConverter::ToMediaInfo(*asset, rate);
          benchmark::DoNotOptimize(info);
          sink += static_cast<std::uint64_t>(info.duration);
        }
        return sink;
      },
      [&] {
        std::uint64_t sink = 0;
        for (const auto& expected : expectedInfos) {
          Engine::MediaInfo info = expected;
          benchmark::DoNotOptimize(info);
          sink += static_cast<std::uint64_t>(info.duration);
        }
        return sink;
      });
}

// The floor against itself: its figures alone, and in its ratio (ideally 1)
// the noise that every other ratio of the run carries too.
void FloorBenchmark(benchmark::State& state, std::size_t elements, std::size_t ranges) {
  const Prepared& prepared = PreparedFor(elements, ranges);
  if (!CheckFloor(state, prepared)) {
    return;
  }
  const auto build = [&] { return BuildTimeline(prepared.blueprint); };
  MeasureAgainstFloor(state, elements, build, build);
}

void Register(const std::string& name, std::function<void(benchmark::State&)> run) {
  benchmark::RegisterBenchmark(name.c_str(), [run](benchmark::State& state) { run(state); })
      ->UseManualTime()
      ->Unit(benchmark::kMillisecond);
}

void RegisterAll() {
  using Converter = Conversion::TimelineConverter;
  for (const std::size_t ranges : kRangeCounts) {
    for (const std::size_t elements : kElementCounts) {
      const std::string suffix =
          "/elements:" + std::to_string(elements) + "/ranges:" + std::to_string(ranges);
      Register("Floor" + suffix,
               [=](benchmark::State& state) { FloorBenchmark(state, elements, ranges); });
      Register("ToTimeline_FromTrackItems" + suffix, [=](benchmark::State& state) {
        ToTimelineBenchmark(state, elements, ranges, Converter::FromTrackItems);
      });
      Register("ToTimeline_FromPlaylist" + suffix, [=](benchmark::State& state) {
        ToTimelineBenchmark(state, elements, ranges, Converter::FromPlaylist);
      });
      Register("ToTrack" + suffix,
               [=](benchmark::State& state) { ToTrackBenchmark(state, elements, ranges); });
      if (ranges == 1) {
        Register("ListAssetsFromPlaylist" + suffix,
                 [=](benchmark::State& state) { ListAssetsBenchmark(state, elements); });
      }
    }
    Register(
        "ToMediaInfo/assets:" + std::to_string(kAssetCount) + "/ranges:" + std::to_string(ranges),
        [=](benchmark::State& state) { ToMediaInfoBenchmark(state, ranges); });
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
