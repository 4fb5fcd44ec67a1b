// Lists the assets of a one-element playlist, fills the map and converts it,
// through the installed package only.
#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <iostream>
#include <memory>

int main() {
  namespace Data = Kov::Replivo::Data;
  namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
  namespace Assets = Kov::DataModel::MediaAssets;

  Data::Sequences::Playlist playlist;
  playlist.umId = Data::Clips::UmId("SEQUENCE01");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  Data::Sequences::AudioVideoElement element;
  element.umId = Data::Clips::UmId("CLIP0001");
  element.inBoundaryKind = Conversion::SameLimit;
  element.outBoundaryKind = Conversion::OppositeLimit;
  element.videoOutValue = element.audioOutValue = 100;
  playlist.audioVideoTrack.elements.push_back(element);

  auto assets = std::make_shared<Assets::MediaAssetMap>();
  for (const auto& id : Conversion::TimelineConverter::ListAssetsFromPlaylist(playlist)) {
    Assets::MediaAsset asset;
    asset.id = id;
    asset.timeBounds.Insert({{0, 0}, {50 * 100000, 0}});
    (*assets)[id] = asset;
  }
  const auto timeline = Conversion::TimelineConverter::ToTimeline(
      playlist, Conversion::TimelineConverter::FromTrackItems, assets);
  std::cout << "timeline " << timeline.id.Text() << " duration " << timeline.duration << "\n";
  return timeline.duration == 50 ? 0 : 1;
}
