// The floor of a conversion: the cost of building its output and nothing else.
// A blueprint holds the finished values of an expected output (taken apart once,
// ahead of any measurement); the Build functions make a new output from it the
// way the conversion has to: every item newly allocated as a std::unique_ptr of
// its concrete class and handed to the track as a std::shared_ptr, every
// identifier text copied into a new Identifier, vectors reserved to size.
#pragma once

#include <cstdint>
#include <vector>

#include <TimelineEngineConversion/TimelineEngineConversion.h>

namespace TimelineEngineBench {

namespace Engine = Kov::TimelineEngineModel;

// One item of an expected track, by its concrete class; exactly one is set.
struct BlueprintItem {
  const Engine::MediaSummaryItem* media = nullptr;
  const Engine::FxVideoTransitionItem* videoTransition = nullptr;
  const Engine::FxAudioTransitionItem* audioTransition = nullptr;
};

struct TrackBlueprint {
  Kov::BusinessEntityModel::BaseTypes::Identifier id;
  std::int32_t type = 0;
  std::vector<BlueprintItem> items;
};

// Refers into the timeline it was made from, which must outlive it.
struct TimelineBlueprint {
  const Engine::Timeline* source = nullptr;
  std::vector<TrackBlueprint> tracks;
};

// Sorts the items of an expected timeline by class; throws
// std::invalid_argument for an item of a class that the conversion never makes.
TimelineBlueprint MakeBlueprint(const Engine::Timeline& expected);

Engine::Track BuildTrack(const TrackBlueprint& blueprint);
Engine::Timeline BuildTimeline(const TimelineBlueprint& blueprint);
std::vector<Kov::BusinessEntityModel::BaseTypes::Identifier> BuildAssetList(
    const std::vector<Kov::BusinessEntityModel::BaseTypes::Identifier>& expected);

// Item by item equality of two timelines (through the items' own equality),
// with the classes of the items compared too.
bool SameTimeline(const Engine::Timeline& a, const Engine::Timeline& b);

}  // namespace TimelineEngineBench
