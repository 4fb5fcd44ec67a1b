// Equality of the track item family: the left operand's class decides what is
// compared, identifier and type first, then every field of the class, each
// field on its own.
#include <gtest/gtest.h>

#include <functional>

#include "support/PlaylistBuilders.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Kov::BusinessEntityModel::BaseTypes::Identifier;

template <typename Item>
struct FieldCase {
  const char* name;
  std::function<void(Item&)> change;
};

// An item that answers another identifier than the one it holds.
struct RenamedItem : Engine::MediaSummaryItem {
  using MediaSummaryItem::MediaSummaryItem;
  const Identifier& Id() const override { return alias; }
  Identifier alias = "alias";
};

TEST(TrackItem, MediaSummaryItemsDifferInEachFieldAndTheIdentifierTheOtherAnswers) {
  using Item = Engine::MediaSummaryItem;
  const FieldCase<Item> cases[] = {
      {"id", [](Item& i) { i.Id("other"); }},
      {"timelineVideoIn", [](Item& i) { i.timelineVideoIn = 1; }},
      {"timelineVideoDuration", [](Item& i) { i.timelineVideoDuration = 1; }},
      {"timelineAudioIn", [](Item& i) { i.timelineAudioIn = 1; }},
      {"timelineAudioDuration", [](Item& i) { i.timelineAudioDuration = 1; }},
      {"mediaId", [](Item& i) { i.mediaId = "other"; }},
      {"mediaVideoIn", [](Item& i) { i.mediaVideoIn = 1; }},
      {"mediaVideoDuration", [](Item& i) { i.mediaVideoDuration = 1; }},
      {"mediaAudioIn", [](Item& i) { i.mediaAudioIn = 1; }},
      {"mediaAudioDuration", [](Item& i) { i.mediaAudioDuration = 1; }},
      {"reservedA", [](Item& i) { i.reservedA = 1; }},
      {"reservedB", [](Item& i) { i.reservedB = 1; }},
  };
  const Item base("item");
  EXPECT_EQ(base, Item("item"));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Item changed = base;
    c.change(changed);
    EXPECT_NE(base, changed);
    EXPECT_NE(changed, base);
  }
  EXPECT_NE(base, RenamedItem("item"));
}

TEST(TrackItem, TransitionItemsDifferInTypeAndEachEffectField) {
  using Item = Engine::FxVideoTransitionItem;
  const FieldCase<Item> cases[] = {
      {"id", [](Item& i) { i.Id("other"); }},
      {"kind", [](Item& i) { i.effect.kind = 1; }},
      {"offset", [](Item& i) { i.effect.offset = 6; }},
      {"duration", [](Item& i) { i.effect.duration = 11; }},
      {"name", [](Item& i) { i.effect.name = "named"; }},
  };
  Item base("t");
  base.FxTransition({2, 5, 10, ""});
  Item same = base;
  EXPECT_EQ(base, same);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Item changed = base;
    c.change(changed);
    EXPECT_NE(base, changed);
  }
  Engine::FxAudioTransitionItem audio("t");
  audio.FxTransition(base.FxTransition());
  EXPECT_NE(base, audio);  // types 3 and 2
  EXPECT_NE(audio, base);
}

TEST(TrackItem, ItemsOfDifferentClassesAreNeverEqual) {
  const Engine::MediaSummaryItem media("x");
  const Engine::FxVideoTransitionItem video("x");
  EXPECT_NE(media, video);
  EXPECT_NE(video, media);
  // A bare item that claims a subclass's type is not read as that subclass.
  const Engine::TrackItem bareMedia("x", Engine::MediaSummary);
  const Engine::TrackItem bareVideo("x", Engine::FxVideoTransition);
  EXPECT_NE(media, bareMedia);
  EXPECT_NE(video, bareVideo);
  EXPECT_EQ(bareMedia, media);  // a bare item compares identifier and type only
}

}  // namespace
