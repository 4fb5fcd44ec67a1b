// Taking an expected timeline apart and building it again. Building does no
// look-up, no arithmetic and no type test: everything it needs was settled
// when the blueprint was made.
#include "OutputFloor.h"

#include <memory>
#include <stdexcept>
#include <typeinfo>

namespace TimelineEngineBench {

namespace {

using Kov::BusinessEntityModel::BaseTypes::Identifier;

BlueprintItem ClassifyItem(const Engine::TrackItem& item) {
  BlueprintItem sorted;
  if (typeid(item) == typeid(Engine::MediaSummaryItem)) {
    sorted.media = static_cast<const Engine::MediaSummaryItem*>(&item);
  } else if (typeid(item) == typeid(Engine::FxVideoTransitionItem)) {
    sorted.videoTransition = static_cast<const Engine::FxVideoTransitionItem*>(&item);
  } else if (typeid(item) == typeid(Engine::FxAudioTransitionItem)) {
    sorted.audioTransition = static_cast<const Engine::FxAudioTransitionItem*>(&item);
  } else {
    throw std::invalid_argument("an item of a class that the conversion never makes");
  }
  return sorted;
}

// A new owner of a copy, made the way the conversion makes its items.
template <typename ItemT>
std::shared_ptr<Engine::TrackItem> Rebuild(const ItemT& item) {
  std::unique_ptr<ItemT> copy(new ItemT(item));
  return copy;
}

}  // namespace

TimelineBlueprint MakeBlueprint(const Engine::Timeline& expected) {
  TimelineBlueprint blueprint;
  blueprint.source = &expected;
  for (const Engine::Track& track : expected.tracks) {
    TrackBlueprint sorted{track.id, track.type, {}};
    sorted.items.reserve(track.items.size());
    for (const auto& item : track.items) {
      if (!item) {
        throw std::invalid_argument("an empty item");
      }
      sorted.items.push_back(ClassifyItem(*item));
    }
    blueprint.tracks.push_back(std::move(sorted));
  }
  return blueprint;
}

Engine::Track BuildTrack(const TrackBlueprint& blueprint) {
  Engine::Track track;
  track.id = blueprint.id;
  track.type = blueprint.type;
  track.items.reserve(blueprint.items.size());
  for (const BlueprintItem& item : blueprint.items) {
    if (item.media != nullptr) {
      track.items.push_back(Rebuild(*item.media));
    } else if (item.videoTransition != nullptr) {
      track.items.push_back(Rebuild(*item.videoTransition));
    } else {
      track.items.push_back(Rebuild(*item.audioTransition));
    }
  }
  return track;
}

Engine::Timeline BuildTimeline(const TimelineBlueprint& blueprint) {
  const Engine::Timeline& source = *blueprint.source;
  Engine::Timeline timeline;
  timeline.id = source.id;
  timeline.secondaryId = source.secondaryId;
  timeline.duration = source.duration;
  timeline.mediaInfos.reserve(source.mediaInfos.size());
  for (const Engine::MediaInfo& info : source.mediaInfos) {
    timeline.mediaInfos.push_back(info);
  }
  timeline.tracks.reserve(blueprint.tracks.size());
  for (const TrackBlueprint& track : blueprint.tracks) {
    timeline.tracks.push_back(BuildTrack(track));
  }
  return timeline;
}

std::vector<Identifier> BuildAssetList(const std::vector<Identifier>& expected) {
  std::vector<Identifier> assets;
  assets.reserve(expected.size());
  for (const Identifier& id : expected) {
    assets.push_back(id);
  }
  return assets;
}

bool SameTimeline(const Engine::Timeline& a, const Engine::Timeline& b) {
  if (a.id != b.id || a.secondaryId != b.secondaryId || a.duration != b.duration ||
      a.tracks.size() != b.tracks.size() || a.mediaInfos.size() != b.mediaInfos.size()) {
    return false;
  }
  for (std::size_t i = 0; i < a.mediaInfos.size(); ++i) {
    const Engine::MediaInfo& x = a.mediaInfos[i];
    const Engine::MediaInfo& y = b.mediaInfos[i];
    if (x.id != y.id || x.limitIn != y.limitIn || x.duration != y.duration ||
        x.tracksDescription != y.tracksDescription) {
      return false;
    }
  }
  for (std::size_t t = 0; t < a.tracks.size(); ++t) {
    const Engine::Track& x = a.tracks[t];
    const Engine::Track& y = b.tracks[t];
    if (x.id != y.id || x.type != y.type || x.items.size() != y.items.size()) {
      return false;
    }
    for (std::size_t i = 0; i < x.items.size(); ++i) {
      const Engine::TrackItem& p = *x.items[i];
      const Engine::TrackItem& q = *y.items[i];
      if (typeid(p) != typeid(q) || p != q) {
        return false;
      }
    }
  }
  return true;
}

}  // namespace TimelineEngineBench
