// Builds the representative sequence from the public API only, as a caller would.
#include "RepresentativeSequence.h"

#include "ModelText.h"
#include "support/PlaylistBuilders.h"

namespace reliability {

namespace {

using namespace testing_support;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;

Sequences::AudioVideoElement Element(unsigned number, const char* clip, std::int64_t inField,
                                     std::int64_t outField) {
  auto element =
      AvElement(clip, Conversion::SameLimit, Conversion::OppositeLimit, inField, outField);
  element.number = number;
  element.serverId = Data::Servers::ServerId(7);
  element.playlistNumber = 12;
  element.itemNumber = static_cast<std::int32_t>(number);
  return element;
}

// An asset with its ranges, the operator profile at 50 Hz and one resource
// whose layout lists the given track kinds (2 picture, 0 sound).
Assets::MediaAsset Asset(const char* clip,
                         std::initializer_list<Kov::TimePoints::TimeBounds> ranges,
                         std::initializer_list<std::int32_t> trackKinds) {
  Assets::MediaAsset asset = AssetWithRanges(clip, ranges);
  asset.shortBounds = FieldRange(100, 900);
  auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
  profile->videoRate = 50;
  asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] = profile;

  auto resource = std::make_shared<Assets::MediaResource>();
  auto layout = std::make_shared<Assets::TrackLayout>();
  layout->id = "layout-1";
  std::string trackId = "t0";
  for (const std::int32_t kind : trackKinds) {
    ++trackId[1];
    auto track = std::make_shared<Assets::Track>(Assets::Track{trackId, "", kind});
    resource->tracks.Insert(track);
    layout->tracks.push_back(track.get());
    layout->entries.push_back({trackId, "", track});
  }
  resource->trackLayouts.Insert(SharedReference<Assets::TrackLayout>(layout, layout->id));
  asset.resources.Insert(SharedReference<Assets::MediaResource>(resource, "resource-1"));
  return asset;
}

}  // namespace

RepresentativeSequence MakeRepresentativeSequence() {
  RepresentativeSequence sequence;
  Sequences::Playlist& playlist = sequence.playlist;
  playlist.serverId = Data::Servers::ServerId(7);
  playlist.number = 12;
  playlist.umId = Data::Clips::UmId("HL-0012");
  playlist.rate = Kov::TimePoints::VideoRates::Rate50();
  playlist.durationInFields = 1200;

  auto& elements = playlist.audioVideoTrack.elements;
  elements.push_back(Element(1, "CAM-A-0031", 100, 400));
  auto dissolve = Element(2, "CAM-B-0032", 40, 240);
  dissolve.transitionType = VideoTransition::kOverlapping;
  dissolve.videoTransitionDuration = 20;
  dissolve.audioTransitionType = AudioTransition::kEndingAtCut;
  dissolve.audioTransitionDuration = 16;
  elements.push_back(dissolve);
  auto slowMotion = Element(3, "CAM-A-0031", 0, 200);
  slowMotion.speed = {1, 2};
  elements.push_back(slowMotion);
  auto wipe = Element(4, "CAM-B-0032", 500, 700);
  wipe.speed = {1, 1};
  wipe.transitionType = VideoTransition::kCentredOnCut;
  wipe.videoTransitionDuration = 24;
  elements.push_back(wipe);
  playlist.auxTrackUmId = Data::Clips::UmId("COMMENT-01");

  sequence.assets = std::make_shared<Assets::MediaAssetMap>();
  for (Assets::MediaAsset asset :
       {Asset("CAM-A-0031", {FieldRange(0, 2000), FieldRange(5000, 5600)}, {0, 2, 0}),
        Asset("CAM-B-0032", {FieldRange(0, 1000)}, {2, 0}),
        Asset("COMMENT-01", {FieldRange(0, 3000)}, {0, 0})}) {
    const Identifier key = asset.id;
    sequence.assets->emplace(key, std::move(asset));
  }
  return sequence;
}

std::string Describe(const RepresentativeSequence& sequence) {
  std::string text = ModelText::Describe(sequence.playlist) + ModelText::Describe(*sequence.assets);
  ModelText::Number(text, "mapOwners", sequence.assets.use_count());
  return text;
}

}  // namespace reliability
