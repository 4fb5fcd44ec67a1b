// A host application's round trip through the installed library: make sure the
// loaded library is the one the headers describe, build a two-clip sequence,
// ask which assets it plays, fetch them into the shared map, convert, and print
// the timeline, or the operator's message when the sequence is refused.
#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <memory>

namespace {

namespace Data = Kov::Replivo::Data;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;

// At 50/1 one video field lasts 100,000 ticks of 100 ns.
constexpr std::int64_t kTicksPerField = 100000;

// Plays the clip from inField to outField, both counted from its first field.
Data::Sequences::AudioVideoElement Cut(unsigned number, const char* clip, std::int64_t inField,
                                       std::int64_t outField) {
  Data::Sequences::AudioVideoElement element;
  element.number = number;
  element.serverId = Data::Servers::ServerId(1);
  element.playlistNumber = 3;
  element.itemNumber = static_cast<std::int32_t>(number);
  element.umId = Data::Clips::UmId(clip);
  element.inBoundaryKind = Conversion::SameLimit;
  element.outBoundaryKind = Conversion::OppositeLimit;
  element.videoInValue = element.audioInValue = inField;
  element.videoOutValue = element.audioOutValue = outField;
  return element;
}

Data::Sequences::Playlist TwoCutSequence() {
  Data::Sequences::Playlist playlist;
  playlist.umId = Data::Clips::UmId("PL-0003");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.audioVideoTrack.elements.push_back(Cut(1, "CAM-A-0101", 100, 600));
  playlist.audioVideoTrack.elements.push_back(Cut(2, "CAM-B-0102", 0, 300));
  return playlist;
}

// Stands in for the host's asset store: every clip was recorded for one
// minute at 50 Hz.
Assets::MediaAsset FetchAsset(const Identifier& id) {
  Assets::MediaAsset asset;
  asset.id = id;
  asset.timeBounds.Insert({{0, 0}, {3000 * kTicksPerField, 0}});
  auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
  profile->videoRate = 50;
  asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] = profile;
  return asset;
}

void PrintTimeline(const Engine::Timeline& timeline) {
  std::printf("timeline %s: %lld frames, %zu track(s), %zu asset(s)\n", timeline.id.Text().c_str(),
              static_cast<long long>(timeline.duration), timeline.tracks.size(),
              timeline.mediaInfos.size());
  for (const auto& track : timeline.tracks) {
    for (const auto& item : track.items) {
      if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
        std::printf("  media %s: frames %lld-%lld of the asset at %lld\n",
                    media->mediaId.Text().c_str(), static_cast<long long>(media->mediaVideoIn),
                    static_cast<long long>(media->mediaVideoIn + media->mediaVideoDuration),
                    static_cast<long long>(media->timelineVideoIn));
      }
    }
  }
}

}  // namespace

int main() {
  // The headers and the loaded library must share a major version.
  if (Conversion::LibraryVersion().major != TIMELINE_ENGINE_CONVERSION_VERSION_MAJOR) {
    std::fprintf(stderr, "built against %s but loaded %s\n",
                 TIMELINE_ENGINE_CONVERSION_VERSION_TEXT, Conversion::LibraryVersionText());
    return 1;
  }
  std::printf("TimelineEngineConversion %s\n", Conversion::LibraryVersionText());

  const Data::Sequences::Playlist playlist = TwoCutSequence();
  // The caller owns the map; the library reads it during the call and keeps no reference.
  auto assets = std::make_shared<Assets::MediaAssetMap>();
  for (const Identifier& id : Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist)) {
    if (assets->count(id) == 0) {  // a clip played twice is listed twice
      assets->emplace(id, FetchAsset(id));
    }
  }
  try {
    PrintTimeline(Conversion::TimelineConverter::ToTimeline(
        playlist, Conversion::TimelineConverter::FromTrackItems, assets));
  } catch (const std::exception& error) {
    // The texts are fixed English sentences meant for the operator.
    std::fprintf(stderr, "sequence refused: %s\n", error.what());
    return 2;
  }
  return 0;
}
