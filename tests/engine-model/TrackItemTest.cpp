// Equality of the track item family: the left operand's class decides what is
// compared, identifier and type first, then every field of the class.
#include "engine-model/TrackItem.h"

#include <gtest/gtest.h>

#include "engine-model/FxTransitionItem.h"
#include "engine-model/MediaSummaryItem.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;

TEST(TrackItem, NewItemsCarryTheirTypeAndZeroedFields) {
  EXPECT_EQ(Engine::MediaSummary, Engine::MediaSummaryItem().GetType());
  EXPECT_EQ(Engine::FxAudioTransition, Engine::FxAudioTransitionItem().GetType());
  EXPECT_EQ(Engine::FxVideoTransition, Engine::FxVideoTransitionItem().GetType());
  EXPECT_EQ(Engine::MediaSummaryItem("a"), Engine::MediaSummaryItem("a"));
  Engine::TrackItem item("a", Engine::MediaSummary);
  item.Id("b");
  EXPECT_EQ("b", item.Id().Text());
}

TEST(TrackItem, MediaSummaryItemsCompareEveryField) {
  Engine::MediaSummaryItem base("item");
  base.mediaId = "asset";
  base.timelineVideoDuration = 10;
  const auto differsIn = [&](auto field, auto value) {
    Engine::MediaSummaryItem changed = base;
    changed.*field = value;
    return changed != base && base != changed;
  };
  EXPECT_TRUE(differsIn(&Engine::MediaSummaryItem::timelineVideoIn, 1));
  EXPECT_TRUE(differsIn(&Engine::MediaSummaryItem::timelineAudioDuration, 1));
  EXPECT_TRUE(differsIn(&Engine::MediaSummaryItem::mediaId, "other"));
  EXPECT_TRUE(differsIn(&Engine::MediaSummaryItem::mediaAudioIn, 1));
  EXPECT_TRUE(differsIn(&Engine::MediaSummaryItem::reservedA, 1));
  EXPECT_TRUE(differsIn(&Engine::MediaSummaryItem::reservedB, 1));
  Engine::MediaSummaryItem renamed = base;
  renamed.Id("other");
  EXPECT_NE(base, renamed);
}

TEST(TrackItem, TransitionItemsCompareTypeAndEffect) {
  Engine::TransitionEffect effect{2, 5, 10, ""};
  Engine::FxVideoTransitionItem video("t");
  Engine::FxAudioTransitionItem audio("t");
  video.FxTransition(effect);
  audio.FxTransition(effect);
  EXPECT_NE(video, audio);  // types 3 and 2
  Engine::FxVideoTransitionItem same("t");
  same.FxTransition(effect);
  EXPECT_EQ(video, same);
  effect.name = "named";
  same.FxTransition(effect);
  EXPECT_NE(video, same);
  EXPECT_EQ("named", same.FxTransition().name);
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
