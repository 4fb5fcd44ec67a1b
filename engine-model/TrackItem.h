// SPDX-License-Identifier: Apache-2.0
// TrackItem: the polymorphic root of everything a track of the editing engine
// holds. Its virtual operations keep a fixed slot order (destructor, equality,
// Id(), Id(const Identifier&), GetType()) that every subclass extends after them.
#pragma once

#include <cstdint>
#include <utility>

#include "../input-models/Export.h"
#include "../input-models/Identifier.h"

namespace Kov {
namespace TimelineEngineModel {

/// Which concrete class an item is.
enum TrackItemType : std::int32_t {
  MediaSummary = 1,       ///< MediaSummaryItem: media placed on the timeline
  FxAudioTransition = 2,  ///< FxAudioTransitionItem: a sound transition
  FxVideoTransition = 3,  ///< FxVideoTransitionItem: a picture transition
};

class TIMELINE_ENGINE_CONVERSION_API TrackItem {
 public:
  TrackItem() = default;
  TrackItem(BusinessEntityModel::BaseTypes::Identifier id, TrackItemType type)
      : id_(std::move(id)), type_(type) {}
  virtual ~TrackItem() = default;

  /// Equal when identifier and type are equal; subclasses compare their fields too.
  virtual bool operator==(const TrackItem& other) const {
    return id_ == other.id_ && type_ == other.type_;
  }
  virtual const BusinessEntityModel::BaseTypes::Identifier& Id() const { return id_; }
  virtual void Id(const BusinessEntityModel::BaseTypes::Identifier& id) { id_ = id; }
  virtual const TrackItemType& GetType() const { return type_; }

  bool operator!=(const TrackItem& other) const { return !(*this == other); }

 protected:
  TrackItem(const TrackItem&) = default;
  TrackItem& operator=(const TrackItem&) = default;

 private:
  BusinessEntityModel::BaseTypes::Identifier id_;
  TrackItemType type_ = static_cast<TrackItemType>(0);
};

}  // namespace TimelineEngineModel
}  // namespace Kov
