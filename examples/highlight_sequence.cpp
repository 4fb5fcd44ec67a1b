// A realistic highlight sequence built in code: four clips with cuts, an
// overlapping video dissolve, an audio crossfade, a slow-motion replay and a
// commentary aux clip. It is the sequence of examples/highlight.json, assets
// included, so that both runs of the quick start print the same timeline.
// Fills the asset map, checks it against the assets the sequence lists,
// converts the sequence and prints the timeline as a table.
#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdio>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

namespace {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;

Sequences::AudioVideoElement Element(unsigned number, int itemNumber, const char* clip,
                                     std::int64_t inField, std::int64_t outField) {
  Sequences::AudioVideoElement element;
  element.number = number;
  element.serverId = Data::Servers::ServerId(7);
  element.playlistNumber = 12;
  element.itemNumber = itemNumber;
  element.umId = Data::Clips::UmId(clip);
  element.inBoundaryKind = Conversion::SameLimit;       // IN from the clip's start
  element.outBoundaryKind = Conversion::OppositeLimit;  // OUT from the clip's start
  element.videoInValue = element.audioInValue = inField;
  element.videoOutValue = element.audioOutValue = outField;
  return element;
}

Sequences::Playlist HighlightSequence() {
  Sequences::Playlist playlist;
  playlist.serverId = Data::Servers::ServerId(7);
  playlist.number = 12;
  playlist.umId = Data::Clips::UmId("HL-0012");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.durationInFields = 1200;

  auto& elements = playlist.audioVideoTrack.elements;
  elements.push_back(Element(1, 1, "CAM-A-0031", 100, 400));  // 150 frames of the goal

  auto dissolve = Element(2, 2, "CAM-B-0032", 40, 240);  // reverse angle
  dissolve.transitionType = 2;                           // overlapping dissolve
  dissolve.videoTransitionDuration = 20;                 // 10 frames
  dissolve.audioTransitionType = 6;                      // crossfade ending at the cut
  dissolve.audioTransitionDuration = 16;
  elements.push_back(dissolve);

  auto slowMotion = Element(3, 3, "CAM-SSM-001", 0, 200);
  slowMotion.speed = {1, 2};  // half speed: 100 media frames last 200
  elements.push_back(slowMotion);

  auto wipe = Element(4, 4, "CAM-A-0031", 500, 700);
  wipe.speed = {1, 1};
  wipe.transitionType = 14;  // centred on the cut
  wipe.videoTransitionDuration = 24;
  elements.push_back(wipe);

  playlist.auxTrackUmId = Data::Clips::UmId("COMMENT-01");
  return playlist;
}

// Ticks of 100 ns from a count of seconds.
constexpr std::int64_t Seconds(std::int64_t seconds) {
  return seconds * 10000000;
}

// An asset as examples/highlight.json gives it: recorded ranges in seconds, the
// marked range, the operator's video rate (0 for none) and the kinds of the
// tracks of its one layout (2 picture, 0 sound), in layout order.
Assets::MediaAsset RecordedAsset(const char* clip,
                                 std::initializer_list<std::pair<int, int>> rangesInSeconds,
                                 Kov::TimePoints::TimeBounds marked, std::int64_t operatorRate,
                                 std::initializer_list<std::int32_t> trackKinds) {
  Assets::MediaAsset asset;
  char buffer[Data::Guid::kTextLength + 1];
  asset.id = Data::Clips::Guid(clip).ToString(buffer, sizeof buffer);
  for (const auto& range : rangesInSeconds) {
    asset.timeBounds.Insert({{Seconds(range.first), 0}, {Seconds(range.second), 0}});
  }
  asset.shortBounds = marked;
  if (operatorRate != 0) {
    auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
    profile->videoRate = operatorRate;
    asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] =
        profile;
  }
  auto resource = std::make_shared<Assets::MediaResource>();
  auto layout = std::make_shared<Assets::TrackLayout>();
  layout->id = "layout-1";
  int trackNumber = 0;
  for (const std::int32_t kind : trackKinds) {
    // The resource owns its tracks; the layout only points at them.
    auto track = std::make_shared<Assets::Track>(
        Assets::Track{"track-" + std::to_string(++trackNumber), "", kind});
    layout->tracks.push_back(track.get());
    resource->tracks.Insert(track);
  }
  resource->trackLayouts.Insert(SharedReference<Assets::TrackLayout>(layout, layout->id));
  asset.resources.Insert(SharedReference<Assets::MediaResource>(resource, "resource-1"));
  return asset;
}

// The four assets of examples/highlight.json, with the same times and layouts.
std::shared_ptr<Assets::MediaAssetMap> HighlightAssets() {
  constexpr std::int32_t kPicture = 2;
  constexpr std::int32_t kSound = 0;
  const Kov::TimePoints::TimeBounds noMarkedRange{};
  auto assets = std::make_shared<Assets::MediaAssetMap>();
  for (auto asset :
       {RecordedAsset("CAM-A-0031", {{0, 30}, {50, 56}}, {{Seconds(1), 0}, {Seconds(9), 0}}, 50,
                      {kSound, kPicture, kSound}),
        RecordedAsset("CAM-B-0032", {{0, 40}}, noMarkedRange, 50, {kPicture, kSound}),
        RecordedAsset("CAM-SSM-001", {{0, 50}}, noMarkedRange, 50, {kPicture}),
        RecordedAsset("COMMENT-01", {{0, 60}}, {{Seconds(2), 0}, {Seconds(22), 0}}, 0, {kSound})}) {
    const auto id = asset.id;
    assets->emplace(id, std::move(asset));
  }
  return assets;
}

void PrintTimeline(const Engine::Timeline& timeline) {
  std::printf("timeline %s, duration %lld frames\n\n", timeline.id.Text().c_str(),
              static_cast<long long>(timeline.duration));
  std::printf("%-38s %-8s %s\n", "asset", "duration", "tracks");
  for (const auto& info : timeline.mediaInfos) {
    std::printf("%-38s %8lld %s\n", info.id.Text().c_str(), static_cast<long long>(info.duration),
                info.tracksDescription.c_str());
  }
  for (const auto& track : timeline.tracks) {
    std::printf("\ntrack %s\n", track.id.Text().c_str());
    std::printf("%-36s %-8s %8s %8s %8s %8s %8s %8s\n", "item", "kind", "tl.v.in", "tl.v.len",
                "tl.a.in", "tl.a.len", "m.v.in", "m.a.in");
    for (const auto& item : track.items) {
      const std::string& shortId = item->Id().Text();
      if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
        std::printf("%-36s %-8s %8lld %8lld %8lld %8lld %8lld %8lld\n", shortId.c_str(), "media",
                    static_cast<long long>(media->timelineVideoIn),
                    static_cast<long long>(media->timelineVideoDuration),
                    static_cast<long long>(media->timelineAudioIn),
                    static_cast<long long>(media->timelineAudioDuration),
                    static_cast<long long>(media->mediaVideoIn),
                    static_cast<long long>(media->mediaAudioIn));
      } else if (const auto* fx = dynamic_cast<const Engine::FxTransitionItem*>(item.get())) {
        const auto& effect = fx->FxTransition();
        std::printf("%-36s %-8s effect %d, offset %lld, duration %lld\n", shortId.c_str(),
                    item->GetType() == Engine::FxVideoTransition ? "video-fx" : "audio-fx",
                    effect.kind, static_cast<long long>(effect.offset),
                    static_cast<long long>(effect.duration));
      }
    }
  }
}

}  // namespace

int main() {
  const Sequences::Playlist playlist = HighlightSequence();
  const auto assets = HighlightAssets();
  // A caller fetches what the playlist lists; here every listed asset is at hand.
  for (const auto& id : Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist)) {
    if (assets->count(id) == 0) {
      std::fprintf(stderr, "missing asset %s\n", id.Text().c_str());
      return 1;
    }
  }
  try {
    PrintTimeline(Conversion::TimelineConverter::ToTimeline(
        playlist, Conversion::TimelineConverter::FromTrackItems, assets));
  } catch (const std::exception& error) {
    std::fprintf(stderr, "refused: %s\n", error.what());
    return 2;
  }
  return 0;
}
