// SPDX-License-Identifier: Apache-2.0
// Transition items: an effect between two neighbouring media items, for the
// picture (FxVideoTransitionItem) or the sound (FxAudioTransitionItem).
#pragma once

#include "TrackItem.h"
#include "TransitionEffect.h"

namespace Kov {
namespace TimelineEngineModel {

class TIMELINE_ENGINE_CONVERSION_API FxTransitionItem : public TrackItem {
 public:
  FxTransitionItem() = default;
  FxTransitionItem(BusinessEntityModel::BaseTypes::Identifier id, TrackItemType type)
      : TrackItem(std::move(id), type) {}
  ~FxTransitionItem() override = default;

  /// Identifier, type, then the effect field by field. An item whose type
  /// matches but which is no transition item compares unequal.
  bool operator==(const TrackItem& other) const override {
    if (!TrackItem::operator==(other)) {
      return false;
    }
    const auto* item = dynamic_cast<const FxTransitionItem*>(&other);
    return item != nullptr && effect.kind == item->effect.kind &&
           effect.offset == item->effect.offset && effect.duration == item->effect.duration &&
           effect.name == item->effect.name;
  }

  virtual const TransitionEffect& FxTransition() const { return effect; }
  virtual void FxTransition(const TransitionEffect& newEffect) {
    effect.kind = newEffect.kind;
    effect.offset = newEffect.offset;
    effect.duration = newEffect.duration;
    effect.name = newEffect.name;
  }

  /// What the transition does, in frames.
  TransitionEffect effect;

 protected:
  FxTransitionItem(const FxTransitionItem&) = default;
  FxTransitionItem& operator=(const FxTransitionItem&) = default;
};

class TIMELINE_ENGINE_CONVERSION_API FxVideoTransitionItem : public FxTransitionItem {
 public:
  FxVideoTransitionItem()
      : FxTransitionItem(BusinessEntityModel::BaseTypes::Identifier(), FxVideoTransition) {}
  explicit FxVideoTransitionItem(BusinessEntityModel::BaseTypes::Identifier id)
      : FxTransitionItem(std::move(id), FxVideoTransition) {}
  FxVideoTransitionItem(const FxVideoTransitionItem&) = default;
  FxVideoTransitionItem& operator=(const FxVideoTransitionItem&) = default;
  ~FxVideoTransitionItem() override = default;

  bool operator==(const TrackItem& other) const override {
    return FxTransitionItem::operator==(other);
  }
};

class TIMELINE_ENGINE_CONVERSION_API FxAudioTransitionItem : public FxTransitionItem {
 public:
  FxAudioTransitionItem()
      : FxTransitionItem(BusinessEntityModel::BaseTypes::Identifier(), FxAudioTransition) {}
  explicit FxAudioTransitionItem(BusinessEntityModel::BaseTypes::Identifier id)
      : FxTransitionItem(std::move(id), FxAudioTransition) {}
  FxAudioTransitionItem(const FxAudioTransitionItem&) = default;
  FxAudioTransitionItem& operator=(const FxAudioTransitionItem&) = default;
  ~FxAudioTransitionItem() override = default;

  bool operator==(const TrackItem& other) const override {
    return FxTransitionItem::operator==(other);
  }
};

}  // namespace TimelineEngineModel
}  // namespace Kov
