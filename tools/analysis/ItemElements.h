// ItemElements: which element of the document an engine item comes from. The
// conversion lays the elements' items out in element order in the first
// track, each element's transitions just before its media item, and the aux
// clip's item in the second; so an item's element follows from its place in
// its track and nothing is looked up by identifier text.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <typeinfo>

namespace TimelineConvert {

// The track that holds the elements' items, and the one that holds the aux
// clip's item when the playlist has one.
constexpr std::size_t kElementTrack = 0;
constexpr std::size_t kAuxTrack = 1;

// Walks one track's items in order and names the element of each.
class ElementWalk {
 public:
  // The walk of a track of a playlist of `elementCount` elements; only the
  // element track's items have an element.
  ElementWalk(bool elementTrack, std::size_t elementCount)
      : count_(elementTrack ? elementCount : 0) {}

  // The element of the next item (null for an empty item), or nothing past
  // the last element; a media item moves the walk on to the next element.
  std::optional<std::uint32_t> Next(const Kov::TimelineEngineModel::TrackItem* item) {
    std::optional<std::uint32_t> element;
    if (next_ < count_) {
      element = static_cast<std::uint32_t>(next_);
    }
    if (IsMedia(item)) {
      ++next_;
    }
    return element;
  }

 private:
  // Nearly every item is a media item itself, which its type says more
  // cheaply than a cast does; the cast answers for any other.
  static bool IsMedia(const Kov::TimelineEngineModel::TrackItem* item) {
    using Kov::TimelineEngineModel::MediaSummaryItem;
    return item != nullptr && (typeid(*item) == typeid(MediaSummaryItem) ||
                               dynamic_cast<const MediaSummaryItem*>(item) != nullptr);
  }

  std::size_t count_;
  std::size_t next_ = 0;
};

// An item as the transition or the media item its type says it is, each
// null otherwise. The cast is made only where the type names that kind: it is
// the costly part of a walk over every item, and an item of any other type is
// judged by its type alone.
struct ItemKind {
  const Kov::TimelineEngineModel::FxTransitionItem* transition = nullptr;
  const Kov::TimelineEngineModel::MediaSummaryItem* media = nullptr;
};

inline ItemKind KindOf(const Kov::TimelineEngineModel::TrackItem& item,
                       Kov::TimelineEngineModel::TrackItemType type) {
  namespace Engine = Kov::TimelineEngineModel;
  ItemKind kind;
  if (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition) {
    kind.transition = dynamic_cast<const Engine::FxTransitionItem*>(&item);
  } else if (type == Engine::MediaSummary) {
    kind.media = dynamic_cast<const Engine::MediaSummaryItem*>(&item);
  }
  return kind;
}

}  // namespace TimelineConvert
