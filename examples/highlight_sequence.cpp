// A realistic highlight sequence built in code: four clips with cuts, an
// overlapping video dissolve, an audio crossfade, a slow-motion replay and a
// commentary aux clip. Lists the assets the sequence needs, fills the asset map,
// converts the sequence and prints the timeline as a table.
#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdio>
#include <memory>
#include <string>

namespace {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;

// At 50/1 one video field lasts 100,000 ticks of 100 ns.
constexpr std::int64_t kTicksPerField = 100000;

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

// An asset recorded in two ranges, with a picture track and two sound tracks.
Assets::MediaAsset RecordedAsset(const Kov::BusinessEntityModel::BaseTypes::Identifier& id,
                                 std::int64_t firstRangeFields) {
  Assets::MediaAsset asset;
  asset.id = id;
  asset.assetKind = 0;
  asset.timeBounds.Insert({{0, 0}, {firstRangeFields * kTicksPerField, 0}});
  asset.timeBounds.Insert({{5000 * kTicksPerField, 0}, {5600 * kTicksPerField, 0}});
  asset.shortBounds = {{100 * kTicksPerField, 0}, {900 * kTicksPerField, 0}};

  auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
  profile->videoRate = 50;
  asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] = profile;

  static const auto picture = std::make_shared<Assets::Track>(Assets::Track{"video-1", "", 2});
  static const auto sound1 = std::make_shared<Assets::Track>(Assets::Track{"audio-1", "", 0});
  static const auto sound2 = std::make_shared<Assets::Track>(Assets::Track{"audio-2", "", 0});
  auto layout = std::make_shared<Assets::TrackLayout>();
  layout->id = "layout-1";
  layout->tracks = {sound1.get(), picture.get(), sound2.get()};
  auto resource = std::make_shared<Assets::MediaResource>();
  resource->trackLayouts.Insert(SharedReference<Assets::TrackLayout>(layout, layout->id));
  asset.resources.Insert(SharedReference<Assets::MediaResource>(resource, "resource-1"));
  return asset;
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
  auto assets = std::make_shared<Assets::MediaAssetMap>();
  std::int64_t rangeFields = 3000;
  for (const auto& id : Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist)) {
    if (assets->count(id) == 0) {
      assets->emplace(id, RecordedAsset(id, rangeFields));
      rangeFields += 1000;
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
