// The engine JSON writer formats its text by hand: it must be byte for byte
// the text a JSON library prints for the same tree with an indent of two,
// whatever the identifiers hold (quotes, control characters, other scripts,
// bytes that are not UTF-8) and whatever is empty or missing.
#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <sstream>

#include "export/EngineJson.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Tree = nlohmann::ordered_json;

Tree ItemTree(const Engine::TrackItem& item) {
  Tree tree{{"id", item.Id().Text()}, {"type", static_cast<std::int32_t>(item.GetType())}};
  if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(&item)) {
    tree["timelineVideoIn"] = media->timelineVideoIn;
    tree["timelineVideoDuration"] = media->timelineVideoDuration;
    tree["timelineAudioIn"] = media->timelineAudioIn;
    tree["timelineAudioDuration"] = media->timelineAudioDuration;
    tree["mediaId"] = media->mediaId.Text();
    tree["mediaVideoIn"] = media->mediaVideoIn;
    tree["mediaVideoDuration"] = media->mediaVideoDuration;
    tree["mediaAudioIn"] = media->mediaAudioIn;
    tree["mediaAudioDuration"] = media->mediaAudioDuration;
    tree["reservedA"] = media->reservedA;
    tree["reservedB"] = media->reservedB;
  } else if (const auto* fx = dynamic_cast<const Engine::FxTransitionItem*>(&item)) {
    const auto& effect = fx->FxTransition();
    tree["effect"] = Tree{{"kind", effect.kind},
                          {"offset", effect.offset},
                          {"duration", effect.duration},
                          {"name", effect.name}};
  }
  return tree;
}

// The whole timeline as one tree, printed by the JSON library.
std::string LibraryText(const Engine::Timeline& timeline) {
  Tree tracks = Tree::array();
  for (const auto& track : timeline.tracks) {
    Tree items = Tree::array();
    for (const auto& item : track.items) {
      items.push_back(item ? ItemTree(*item) : Tree());
    }
    tracks.push_back(Tree{{"id", track.id.Text()}, {"type", track.type}, {"items", items}});
  }
  Tree infos = Tree::array();
  for (const auto& info : timeline.mediaInfos) {
    infos.push_back(Tree{{"id", info.id.Text()},
                         {"limitIn", info.limitIn},
                         {"duration", info.duration},
                         {"tracksDescription", info.tracksDescription}});
  }
  const Tree tree{{"id", timeline.id.Text()},
                  {"secondaryId", timeline.secondaryId.Text()},
                  {"duration", timeline.duration},
                  {"tracks", tracks},
                  {"mediaInfos", infos}};
  return tree.dump(2, ' ', false, Tree::error_handler_t::replace) + "\n";
}

TEST(EngineJson, PrintsWhatTheJsonLibraryPrints) {
  struct Case {
    const char* name;
    std::string text;  // every identifier and name of the timeline
    bool empty;        // no tracks, items or media infos
  };
  const Case cases[] = {
      {"plain", "6f1c-00a1", false},
      {"quotes and backslashes", "a\"b\\c/d", false},
      {"control characters", std::string("t\tn\nz\0x\x1f\x7f", 9), false},
      {"other scripts", "caf\xC3\xA9 \xE2\x80\xA6 \xF0\x9F\x8E\xAC", false},
      {"bytes that are not UTF-8", "a\xFF\xC3(b\xED\xA0\x80", false},
      {"nothing at all", "", true},
  };
  for (const auto& row : cases) {
    Engine::Timeline timeline;
    timeline.id = row.text;
    timeline.secondaryId = row.text + "2";
    timeline.duration = -9223372036854775807 - 1;
    if (!row.empty) {
      auto media = std::make_shared<Engine::MediaSummaryItem>();
      media->Id(row.text);
      media->mediaId = row.text;
      media->timelineVideoIn = 9223372036854775807;
      media->mediaAudioDuration = -25;
      auto fx = std::make_shared<Engine::FxAudioTransitionItem>(row.text);
      fx->effect = {2, -12, 24, row.text};
      timeline.tracks.push_back({row.text, 3, {media, nullptr, fx}});
      timeline.tracks.push_back({"empty", 1, {}});
      timeline.mediaInfos.push_back({row.text, 4, 100, row.text});
    }
    const std::string expected = LibraryText(timeline);
    EXPECT_EQ(TimelineConvert::TimelineToJsonText(timeline), expected) << row.name;
    std::ostringstream streamed;
    TimelineConvert::WriteTimelineJson(streamed, timeline);
    EXPECT_EQ(streamed.str(), expected) << row.name;
  }
}

}  // namespace
