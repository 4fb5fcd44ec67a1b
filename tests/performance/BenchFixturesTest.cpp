// The benchmark fixtures measure what they claim: the synthetic input converts
// and covers every boundary pair, both effect kinds and speed changes; its
// range count leaves the timeline alone; the floor builds the same timeline
// from new items; and the allocation counter counts each operator new once.
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>

#include "AllocationCounter.h"
#include "OutputFloor.h"
#include "SyntheticInput.h"
#include "support/PlaylistBuilders.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Engine = Kov::TimelineEngineModel;
using Converter = Conversion::TimelineConverter;
using TimelineEngineBench::AllocationsOnThisThread;
using TimelineEngineBench::MakeSyntheticInput;

Engine::Timeline Convert(const TimelineEngineBench::SyntheticInput& input) {
  return Converter::ToTimeline(input.playlist, Converter::FromTrackItems, input.assets);
}

TEST(SyntheticInputTest, CoversTheCasesThatTheBenchmarksClaim) {
  const auto input = MakeSyntheticInput(2000, 1);
  std::set<std::pair<std::int32_t, std::int32_t>> boundaryKinds;
  for (const auto& element : input.playlist.audioVideoTrack.elements) {
    boundaryKinds.emplace(element.inBoundaryKind, element.outBoundaryKind);
  }
  EXPECT_EQ(9u, boundaryKinds.size());

  const Engine::Timeline timeline = Convert(input);
  ASSERT_EQ(2u, timeline.tracks.size());
  EXPECT_EQ(TimelineEngineBench::kAssetCount, timeline.mediaInfos.size());
  std::set<std::pair<int, std::int32_t>> transitionKinds;
  std::size_t media = 0;
  std::size_t rescaled = 0;
  std::set<std::string> assets;
  for (const auto& item : timeline.tracks[0].items) {
    if (const auto* fx = dynamic_cast<const Engine::FxTransitionItem*>(item.get())) {
      transitionKinds.emplace(item->GetType(), fx->effect.kind);
      continue;
    }
    const auto& summary = dynamic_cast<const Engine::MediaSummaryItem&>(*item);
    ++media;
    rescaled += summary.timelineVideoDuration != summary.mediaVideoDuration ? 1 : 0;
    assets.insert(summary.mediaId.Text());
    // Every element plays a part of at least 100 frames, inside its asset.
    EXPECT_GE(summary.mediaVideoDuration, 100);
    EXPECT_LE(summary.mediaAudioIn + summary.mediaAudioDuration, TimelineEngineBench::kAssetFrames);
  }
  EXPECT_EQ(2000u, media);
  EXPECT_EQ(2000u * 3 / 4 * 2 + 1 - 1, timeline.tracks[0].items.size() - media);
  const std::set<std::pair<int, std::int32_t>> allKinds = {{Engine::FxVideoTransition, 1},
                                                           {Engine::FxVideoTransition, 2},
                                                           {Engine::FxAudioTransition, 1},
                                                           {Engine::FxAudioTransition, 2}};
  EXPECT_EQ(allKinds, transitionKinds);
  EXPECT_GT(rescaled, 2000u / 4);
  EXPECT_LT(rescaled, 2000u);
  // Every asset is played, each one twice.
  EXPECT_EQ(TimelineEngineBench::kAssetCount, assets.size());
}

TEST(SyntheticInputTest, RangeCountChangesNothingButTheWorkOfTheDuration) {
  const auto oneRange = MakeSyntheticInput(300, 1);
  const auto manyRanges = MakeSyntheticInput(300, 100);
  EXPECT_EQ(100u, manyRanges.assets->begin()->second.timeBounds.size());
  EXPECT_TRUE(TimelineEngineBench::SameTimeline(Convert(oneRange), Convert(manyRanges)));
  testing_support::ExpectThrowExactly<std::invalid_argument>(
      [] { MakeSyntheticInput(1, 7); }, "the range count must divide the asset's field count");
}

TEST(OutputFloorTest, BuildsTheSameTimelineFromNewItems) {
  const auto input = MakeSyntheticInput(500, 1);
  const Engine::Timeline expected = Convert(input);
  const auto blueprint = TimelineEngineBench::MakeBlueprint(expected);

  const std::uint64_t before = AllocationsOnThisThread();
  const Engine::Timeline floor = TimelineEngineBench::BuildTimeline(blueprint);
  const std::uint64_t floorAllocations = AllocationsOnThisThread() - before;
  const Engine::Timeline converted = Convert(input);
  const std::uint64_t conversionAllocations = AllocationsOnThisThread() - before - floorAllocations;

  EXPECT_TRUE(TimelineEngineBench::SameTimeline(expected, floor));
  for (std::size_t t = 0; t < floor.tracks.size(); ++t) {
    for (std::size_t i = 0; i < floor.tracks[t].items.size(); ++i) {
      ASSERT_NE(expected.tracks[t].items[i], floor.tracks[t].items[i]);
      ASSERT_EQ(1, floor.tracks[t].items[i].use_count());
    }
  }
  // The floor needs no allocation that the conversion could do without.
  EXPECT_LE(floorAllocations, conversionAllocations);
  EXPECT_EQ(expected.tracks[0].items.size(),
            TimelineEngineBench::BuildTrack(blueprint.tracks[0]).items.size());
}

TEST(OutputFloorTest, ComparisonSeesEveryDifferenceAndBlueprintsRefuseStrangers) {
  const auto input = MakeSyntheticInput(50, 1);
  const Engine::Timeline expected = Convert(input);
  const auto blueprint = TimelineEngineBench::MakeBlueprint(expected);

  Engine::Timeline changed = TimelineEngineBench::BuildTimeline(blueprint);
  std::static_pointer_cast<Engine::MediaSummaryItem>(changed.tracks[0].items.back())
      ->mediaAudioIn += 1;
  EXPECT_FALSE(TimelineEngineBench::SameTimeline(expected, changed));
  changed = TimelineEngineBench::BuildTimeline(blueprint);
  changed.mediaInfos[7].tracksDescription += "+M";
  EXPECT_FALSE(TimelineEngineBench::SameTimeline(expected, changed));
  changed = TimelineEngineBench::BuildTimeline(blueprint);
  changed.tracks[1].items.push_back(changed.tracks[1].items.front());
  EXPECT_FALSE(TimelineEngineBench::SameTimeline(expected, changed));

  // Same values, other class: an audio transition posing as a video one.
  const auto& video =
      dynamic_cast<const Engine::FxVideoTransitionItem&>(*expected.tracks[0].items[1]);
  auto impostor = std::make_shared<Engine::FxAudioTransitionItem>(video.Id());
  impostor->Id(video.Id());
  changed = TimelineEngineBench::BuildTimeline(blueprint);
  changed.tracks[0].items[1] = impostor;
  EXPECT_FALSE(TimelineEngineBench::SameTimeline(expected, changed));

  struct StrangeItem : Engine::TrackItem {};
  changed.tracks[0].items[1] = std::make_shared<StrangeItem>();
  testing_support::ExpectThrowExactly<std::invalid_argument>(
      [&] { TimelineEngineBench::MakeBlueprint(changed); },
      "an item of a class that the conversion never makes");
  changed.tracks[0].items[1].reset();
  testing_support::ExpectThrowExactly<std::invalid_argument>(
      [&] { TimelineEngineBench::MakeBlueprint(changed); }, "an empty item");
}

// Keeps an allocation observable, so that the compiler cannot drop a new
// whose result is only deleted.
template <typename T>
T* Observed(T* pointer) {
  T* volatile kept = pointer;
  return kept;
}

TEST(AllocationCounterTest, CountsEveryFormOfNewOnce) {
  struct alignas(64) Wide {
    char bytes[64];
  };
  std::uint64_t counts[7] = {};
  std::uint64_t last = AllocationsOnThisThread();
  const auto step = [&last] {
    const std::uint64_t now = AllocationsOnThisThread();
    const std::uint64_t made = now - last;
    last = now;
    return made;
  };
  delete Observed(new int(1));
  counts[0] = step();
  delete[] Observed(new char[0]);
  counts[1] = step();
  delete Observed(new (std::nothrow) long(2));
  counts[2] = step();
  Wide* wide = Observed(new Wide());
  const bool aligned = reinterpret_cast<std::uintptr_t>(wide) % alignof(Wide) == 0;
  delete wide;
  counts[3] = step();
  {
    const std::string shortText(Observed("held inline"));
    const std::string guidText(36, *Observed("a"));
  }
  counts[4] = step();
  const auto shared = std::make_shared<int>(0);
  counts[5] = step();
  counts[6] = step();
  // Checked only now: a failing check allocates its message.
  const std::uint64_t expected[7] = {1, 1, 1, 1, 1, 1, 0};
  for (int i = 0; i < 7; ++i) {
    EXPECT_EQ(expected[i], counts[i]) << "step " << i;
  }
  EXPECT_TRUE(aligned);
  EXPECT_EQ(0, *shared);
}

}  // namespace
