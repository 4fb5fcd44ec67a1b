// Which element an engine item belongs to, and what kind of item it is, are
// settled by type and cast together: these rows catch a shortcut that trusts
// the one where the other disagrees (an item of a class made from a media
// item, an item whose type names what its class is not).
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <vector>

#include "analysis/ItemElements.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Kov::BusinessEntityModel::BaseTypes::Identifier;
using TimelineConvert::ElementWalk;
using TimelineConvert::KindOf;

// A media item of a class of its own, as a caller of the model may make.
struct TaggedMediaItem : Engine::MediaSummaryItem {};

// A media item whose type says it is a transition.
struct MisnamedMediaItem : Engine::MediaSummaryItem {
  const Engine::TrackItemType& GetType() const override { return type; }
  Engine::TrackItemType type = Engine::FxVideoTransition;
};

struct ItemRow {
  const char* name;
  std::shared_ptr<Engine::TrackItem> item;
  bool media;       // moves the walk on
  bool kindMedia;   // KindOf names it a media item
  bool transition;  // KindOf names it a transition
};

TEST(ItemElements, TypeAndClassTogetherSayWhatAnItemIs) {
  const ItemRow rows[] = {
      {"media", std::make_shared<Engine::MediaSummaryItem>(), true, true, false},
      {"media of a class of its own", std::make_shared<TaggedMediaItem>(), true, true, false},
      {"media typed as a transition", std::make_shared<MisnamedMediaItem>(), true, false, false},
      {"video transition",
       std::make_shared<Engine::FxTransitionItem>(Identifier(), Engine::FxVideoTransition), false,
       false, true},
      {"audio transition",
       std::make_shared<Engine::FxTransitionItem>(Identifier(), Engine::FxAudioTransition), false,
       false, true},
      {"transition typed as media",
       std::make_shared<Engine::FxTransitionItem>(Identifier(), Engine::MediaSummary), false, false,
       false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    ElementWalk walk(true, 5);
    EXPECT_EQ(walk.Next(row.item.get()), std::optional<std::uint32_t>(0));
    EXPECT_EQ(walk.Next(nullptr), std::optional<std::uint32_t>(row.media ? 1 : 0));
    const auto kind = KindOf(*row.item, row.item->GetType());
    EXPECT_EQ(kind.media != nullptr, row.kindMedia);
    EXPECT_EQ(kind.transition != nullptr, row.transition);
  }
}

TEST(ItemElements, AWalkPastTheLastElementNamesNone) {
  ElementWalk walk(true, 1);
  const Engine::MediaSummaryItem media;
  EXPECT_EQ(walk.Next(&media), std::optional<std::uint32_t>(0));
  EXPECT_EQ(walk.Next(&media), std::nullopt);
  ElementWalk aux(false, 3);
  EXPECT_EQ(aux.Next(&media), std::nullopt);
}

}  // namespace
