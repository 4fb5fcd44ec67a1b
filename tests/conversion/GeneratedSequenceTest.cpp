// Sequences of realistic size from support/SequenceGenerator.h, and tracks at
// the edges of the per-call look-up of clips, checked against what holds for
// any sequence without working its timeline out: each media item names the key
// that the asset listing gives for its element and plays what the element
// plays when converted alone, the timeline's track is the track converted on
// its own, and a refused element is refused the same whatever follows it.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "support/PlaylistBuilders.h"
#include "support/Refusals.h"
#include "support/SequenceGenerator.h"

namespace {

using namespace testing_support;
using Conversion::TimelineConverter;
using Conversion::TrackConverter;
constexpr std::size_t kNone = static_cast<std::size_t>(-1);

std::string MediaPart(const Engine::MediaSummaryItem& item) {
  return item.mediaId.Text() + " " + std::to_string(item.mediaVideoIn) + "+" +
         std::to_string(item.mediaVideoDuration) + " " + std::to_string(item.mediaAudioIn) + "+" +
         std::to_string(item.mediaAudioDuration);
}

std::vector<const Engine::MediaSummaryItem*> MediaItems(const Engine::Track& track) {
  std::vector<const Engine::MediaSummaryItem*> items;
  for (const auto& item : track.items) {
    if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
      items.push_back(media);
    }
  }
  return items;
}

// The element in a track of its own, with a map that holds its asset only.
std::string ConvertedAlone(const Sequences::AudioVideoElement& element, const Identifier& key,
                           const Assets::MediaAssetMap& assets) {
  auto own = std::make_shared<Assets::MediaAssetMap>();
  own->emplace(key, assets.at(key));
  Sequences::Track<Sequences::AudioVideoElement> track;
  track.elements = {element};
  const Engine::Track converted =
      TrackConverter::ToTrack(track, 0, {"ALONE", Kov::TimePoints::Rate{50, 1}, own});
  const auto media = MediaItems(converted);
  return media.size() == 1 ? MediaPart(*media[0]) : "not one media item";
}

// The checks of a playlist that converts; reports the first element that breaks one.
void CheckConverted(const Sequences::Playlist& playlist,
                    const std::shared_ptr<Assets::MediaAssetMap>& assets) {
  Engine::Timeline timeline;
  ASSERT_NO_THROW(timeline = TimelineConverter::ToTimeline(
                      playlist, TimelineConverter::FromTrackItems, assets));
  const Engine::Track track =
      TrackConverter::ToTrack(playlist.audioVideoTrack, 0, {timeline.id, playlist.rate, assets});
  ASSERT_FALSE(timeline.tracks.empty());
  EXPECT_EQ(assets->size(), timeline.mediaInfos.size());  // once per asset, not per use
  EXPECT_EQ(track.id, timeline.tracks[0].id);
  ASSERT_EQ(track.items.size(), timeline.tracks[0].items.size());
  for (std::size_t i = 0; i < track.items.size(); ++i) {
    if (!(*track.items[i] == *timeline.tracks[0].items[i])) {
      ADD_FAILURE() << "item " << i << ": the timeline has "
                    << Describe(*timeline.tracks[0].items[i]) << ", the track alone "
                    << Describe(*track.items[i]);
      break;
    }
  }

  const auto& elements = playlist.audioVideoTrack.elements;
  const auto listed = TimelineConverter::ListAssetsFromPlaylist(playlist);
  const std::size_t first = listed.size() - elements.size();  // after the aux clip's key
  const auto media = MediaItems(timeline.tracks[0]);
  ASSERT_EQ(elements.size(), media.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const Identifier& key = listed[first + i];
    if (media[i]->mediaId != key) {
      ADD_FAILURE() << "element " << i << " (" << elements[i].umId.GetUmId() << ") plays "
                    << media[i]->mediaId.Text() << ", listed as " << key.Text();
      break;
    }
    const std::string alone = ConvertedAlone(elements[i], key, *assets);
    if (MediaPart(*media[i]) != alone) {
      ADD_FAILURE() << "element " << i << " (" << elements[i].umId.GetUmId() << ") plays "
                    << MediaPart(*media[i]) << ", alone " << alone;
      break;
    }
  }
}

// The refusal's type and text, or "" when the playlist converts; a refusal
// must be one of the table's.
std::string RefusalOf(const Sequences::Playlist& playlist,
                      const std::shared_ptr<Assets::MediaAssetMap>& assets) {
  try {
    TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets);
    return "";
  } catch (const std::exception& error) {
    EXPECT_TRUE(IsConversionRefusal(error, playlist.audioVideoTrack.elements[0].playlistNumber))
        << error.what();
    return std::string(typeid(error).name()) + ": " + error.what();
  }
}

SequenceShape Shape(std::size_t elements, std::size_t clips, std::size_t maxRanges,
                    std::size_t unusedAssets = 0, bool auxClip = true) {
  SequenceShape shape;
  shape.elements = elements;
  shape.clips = clips;
  shape.maxRanges = maxRanges;
  shape.unusedAssets = unusedAssets;
  shape.auxClip = auxClip;
  shape.trackLayouts = unusedAssets > 0;
  return shape;
}

// A seed that once failed gets a row of its own here.
struct SeedCase {
  const char* name;
  std::uint64_t seed;
  SequenceShape shape;
} const kSeedCases[] = {
    {"a short highlight without aux clip", 7, Shape(20, 17, 3, 0, false)},
    {"one range per asset", 11, Shape(400, 120, 1)},
    {"a whole event, a map of hundreds of assets", 2024, Shape(2000, 300, 100, 500)},
    {"few clips played often", 5, Shape(600, 17, 100)},
};

TEST(GeneratedSequences, MediaItemsPlayWhatTheirElementsPlayAlone) {
  for (const SeedCase& c : kSeedCases) {
    SCOPED_TRACE(std::string(c.name) + ", seed " + std::to_string(c.seed));
    const GeneratedSequence generated = GenerateSequence(c.seed, c.shape);
    CheckConverted(generated.playlist, generated.assets);
  }
}

TEST(GeneratedSequences, ARefusalIsTheSameWhateverFollowsIt) {
  for (std::uint64_t seed = 1; seed <= 24; ++seed) {
    SCOPED_TRACE("seed " + std::to_string(seed));
    SequenceShape shape = Shape(20 + seed * 13, 17 + seed, 1 + seed % 9);
    shape.plantRefusal = true;
    GeneratedSequence generated = GenerateSequence(seed, shape);
    ASSERT_NE(kNone, generated.refusedElement);
    const std::string whole = RefusalOf(generated.playlist, generated.assets);
    EXPECT_NE("", whole);
    auto& elements = generated.playlist.audioVideoTrack.elements;
    elements.resize(generated.refusedElement + 1);
    EXPECT_EQ(whole, RefusalOf(generated.playlist, generated.assets));
    elements.pop_back();
    CheckConverted(generated.playlist, generated.assets);
  }
}

// Clip texts that agree in their first 8 bytes and differ in the 9th to 11th
// (the 12th is the text's end): "CAMERA-A" followed by 1 to 3 characters.
std::vector<std::string> ClipsSharingEightBytes(std::size_t count) {
  static const std::string kChars = "0123456789XYZ";
  std::vector<std::string> clips;
  for (std::size_t n = 0; clips.size() < count; ++n) {
    std::string suffix;
    for (std::size_t rest = n; suffix.empty() || rest > 0; rest /= kChars.size()) {
      suffix += kChars[rest % kChars.size()];
    }
    clips.push_back("CAMERA-A" + suffix.substr(0, 3));
  }
  return clips;
}

// Every clip once, then every clip again backwards, each asset of its own
// length, read back from its end so that a mixed-up asset plays other frames.
Sequences::Playlist PlayingEachTwice(const std::vector<std::string>& clips,
                                     Assets::MediaAssetMap& assets) {
  std::vector<Sequences::AudioVideoElement> elements;
  for (std::size_t n = 0; n < 2 * clips.size(); ++n) {
    const std::string& clip = clips[n < clips.size() ? n : 2 * clips.size() - 1 - n];
    elements.push_back(
        AvElement(clip.c_str(), Conversion::OppositeLimit, Conversion::OppositeLimit, 200, 100));
    if (n < clips.size()) {
      auto asset = AssetWithRanges(clip.c_str(), {FieldRange(0, 400 + 2 * static_cast<int>(n))});
      assets.emplace(asset.id, asset);
    }
  }
  return PlaylistOf(elements);
}

// Then a clip whose asset is missing, agreeing with all the others in its
// first 8 bytes: refused after the look-up has grown.
TEST(ClipLookUp, TracksOfSixteenSeventeenAndThirtyThreeClipsSharingEightBytes) {
  for (const std::size_t count : {1, 16, 17, 32, 33, 64, 65}) {
    SCOPED_TRACE(std::to_string(count) + " clips");
    const auto clips = ClipsSharingEightBytes(count + 1);
    auto assets = std::make_shared<Assets::MediaAssetMap>();
    auto playlist = PlayingEachTwice({clips.begin(), clips.end() - 1}, *assets);
    CheckConverted(playlist, assets);
    playlist.audioVideoTrack.elements.push_back(
        AvElement(clips.back().c_str(), Conversion::SameLimit, Conversion::OppositeLimit, 0, 20));
    ExpectRefused(
        [&] { TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets); },
        kTrackAssetMissing);
  }
}

}  // namespace
