// Concurrent conversions: eight threads convert the same playlist with the
// same shared asset map at once, many times, and each also converts a copy of
// its own; every result must equal the one made afterwards on one thread, and
// the shared input must be unchanged. The threads start together before any
// conversion has run, so the library's shared constants are made under
// contention as well. Run under ThreadSanitizer by scripts/sanitizers.sh; a
// plain program, so that no uninstrumented test framework runs in the threads.
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "RepresentativeSequence.h"

namespace {

using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

constexpr int kThreads = 8;
constexpr int kRounds = 100;

// The texts of one round of conversions of a sequence: both duration modes and
// the asset listing.
std::string ConvertAll(const reliability::RepresentativeSequence& sequence) {
  return ModelText::Describe(TimelineConverter::ToTimeline(
             sequence.playlist, TimelineConverter::FromTrackItems, sequence.assets)) +
         ModelText::Describe(TimelineConverter::ToTimeline(
             sequence.playlist, TimelineConverter::FromPlaylist, sequence.assets)) +
         reliability::Describe(TimelineConverter::ListAssetsFromPlaylist(sequence.playlist));
}

}  // namespace

int main() {
  const reliability::RepresentativeSequence shared;
  const std::string input = reliability::Describe(shared);
  std::atomic<int> ready{0};
  // Per thread, the texts of the shared and of its own sequence in turn, or a refusal.
  std::vector<std::vector<std::string>> results(kThreads);
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&, t] {
      const reliability::RepresentativeSequence own;
      ready.fetch_add(1);
      while (ready.load() < kThreads) {
        std::this_thread::yield();
      }
      try {
        for (int round = 0; round < kRounds; ++round) {
          results[t].push_back(ConvertAll(shared));
          results[t].push_back(ConvertAll(own));
        }
      } catch (const std::exception& error) {
        results[t].push_back(std::string("refused: ") + error.what());
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  const std::string reference = ConvertAll(shared);
  int mismatches = 0;
  for (int t = 0; t < kThreads; ++t) {
    for (const std::string& text : results[t]) {
      if (text != reference) {
        std::fprintf(stderr, "thread %d: not the single-threaded result: %.200s\n", t,
                     text.c_str());
        ++mismatches;
      }
    }
  }
  if (reliability::Describe(shared) != input) {
    std::fprintf(stderr, "the shared input changed\n");
    ++mismatches;
  }
  if (mismatches != 0) {
    return EXIT_FAILURE;
  }
  std::printf("%d threads x %d rounds: every result equals the single-threaded one\n", kThreads,
              kRounds);
  return EXIT_SUCCESS;
}
