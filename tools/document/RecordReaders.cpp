// The record readers. The library's records take the values as they are, so
// each field is checked here against what its record field can hold.
#include "document/RecordReaders.h"

#include <map>
#include <memory>
#include <stdexcept>
#include <string>

#include "document/AssetKeys.h"

namespace TimelineConvert {

namespace {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;

// Runs one of the model's sorted inserts, which refuse a second equal item.
template <typename Container, typename Item>
void InsertOnce(Container& container, const Item& item, const Node& place, const char* what) {
  try {
    container.Insert(item);
  } catch (const std::runtime_error&) {
    place.Fail(std::string(what) + " is listed twice");
  }
}

std::int32_t BoundaryKind(const Node& node) {
  if (!node.IsString()) {
    return node.Integer<std::int32_t>();
  }
  static const std::map<std::string, Conversion::BoundaryReference> names = {
      {"absolute", Conversion::Absolute},
      {"sameLimit", Conversion::SameLimit},
      {"oppositeLimit", Conversion::OppositeLimit},
      {"otherBoundary", Conversion::OtherBoundary}};
  const auto found = names.find(node.String());
  if (found == names.end()) {
    node.Fail("unknown boundary kind \"" + node.String() +
              "\" (expected absolute, sameLimit, oppositeLimit, otherBoundary or a number)");
  }
  return found->second;
}

Data::Channels::Speed ReadSpeed(const Node& node) {
  node.ExpectObject({"numerator", "denominator"});
  return {node["numerator"].Integer<std::int32_t>(), node["denominator"].Integer<std::int32_t>()};
}

}  // namespace

Kov::Replivo::Data::Sequences::AudioVideoElement ReadElement(const Node& node) {
  node.ExpectObject(
      {"number", "serverId", "playlistNumber", "itemNumber", "umId", "inBoundaryKind",
       "outBoundaryKind", "videoInValue", "videoOutValue", "audioInValue", "audioOutValue"},
      {"speed", "transitionType", "videoTransitionDuration", "audioTransitionType",
       "audioTransitionDuration"});
  Sequences::AudioVideoElement element;
  element.number = node["number"].Integer<std::uint32_t>();
  element.serverId = Data::Servers::ServerId(node["serverId"].Integer<std::uint32_t>());
  element.playlistNumber = node["playlistNumber"].Integer<std::int32_t>();
  element.itemNumber = node["itemNumber"].Integer<std::int32_t>();
  element.umId = Data::Clips::UmId(node["umId"].UmIdText().c_str());
  element.inBoundaryKind = BoundaryKind(node["inBoundaryKind"]);
  element.outBoundaryKind = BoundaryKind(node["outBoundaryKind"]);
  element.videoInValue = node["videoInValue"].Integer<std::int64_t>();
  element.videoOutValue = node["videoOutValue"].Integer<std::int64_t>();
  element.audioInValue = node["audioInValue"].Integer<std::int64_t>();
  element.audioOutValue = node["audioOutValue"].Integer<std::int64_t>();
  if (node.Has("speed")) {
    element.speed = ReadSpeed(node["speed"]);
  }
  node.ReadOptional("transitionType", element.transitionType);
  node.ReadOptional("videoTransitionDuration", element.videoTransitionDuration);
  node.ReadOptional("audioTransitionType", element.audioTransitionType);
  node.ReadOptional("audioTransitionDuration", element.audioTransitionDuration);
  return element;
}

namespace {

// Ticks of 100 ns, or "open" for material still being recorded.
std::int64_t BoundaryValue(const Node& node) {
  if (node.IsString()) {
    if (node.String() != "open") {
      node.Fail("expected a number of ticks or \"open\", found \"" + node.String() + "\"");
    }
    return Kov::TimePoints::TimePoint::MaxValue().value;
  }
  return node.Integer<std::int64_t>();
}

Kov::TimePoints::TimeBoundary ReadBoundary(const Node& node) {
  if (!node.IsObject()) {
    return {BoundaryValue(node), 0};
  }
  node.ExpectObject({"value"}, {"boundaryFlag"});
  Kov::TimePoints::TimeBoundary boundary{BoundaryValue(node["value"]), 0};
  node.ReadOptional("boundaryFlag", boundary.boundaryFlag);
  return boundary;
}

Kov::TimePoints::TimeBounds ReadRange(const Node& node) {
  node.ExpectObject({"start", "end"});
  return {ReadBoundary(node["start"]), ReadBoundary(node["end"])};
}

std::shared_ptr<Assets::MediaResource> ReadResource(const Node& node) {
  node.ExpectObject({"id"}, {"tracks", "trackLayouts"});
  auto resource = std::make_shared<Assets::MediaResource>();
  // The resource owns its tracks; layouts list them by id, without owning them.
  std::map<std::string, const Assets::Track*> tracksById;
  if (node.Has("tracks")) {
    for (const Node& trackNode : node["tracks"].Elements()) {
      trackNode.ExpectObject({"id", "kind"});
      auto track = std::make_shared<Assets::Track>();
      track->id = trackNode["id"].String();
      track->kind = trackNode["kind"].Integer<std::int32_t>();
      if (!tracksById.emplace(track->id.Text(), track.get()).second) {
        trackNode.Fail("track \"" + track->id.Text() + "\" is listed twice");
      }
      InsertOnce(resource->tracks, track, trackNode, "the track");
    }
  }
  if (node.Has("trackLayouts")) {
    for (const Node& layoutNode : node["trackLayouts"].Elements()) {
      layoutNode.ExpectObject({"id", "tracks"});
      auto layout = std::make_shared<Assets::TrackLayout>();
      layout->id = layoutNode["id"].String();
      for (const Node& reference : layoutNode["tracks"].Elements()) {
        const auto found = tracksById.find(reference.String());
        if (found == tracksById.end()) {
          reference.Fail("no track \"" + reference.String() + "\" in this resource's \"tracks\"");
        }
        layout->tracks.push_back(found->second);
      }
      InsertOnce(resource->trackLayouts, SharedReference<Assets::TrackLayout>(layout, layout->id),
                 layoutNode, "the layout id");
    }
  }
  return resource;
}

}  // namespace

Kov::DataModel::MediaAssets::MediaAsset ReadAsset(const Node& node, DocumentAsset& name) {
  node.ExpectObject({"timeBounds"},
                    {"umId", "id", "assetKind", "shortBounds", "operatorVideoRate", "resources"});
  if (node.Has("umId") == node.Has("id")) {
    node.Fail("give the asset either \"umId\" (its clip) or \"id\" (its identifier), not " +
              std::string(node.Has("id") ? "both" : "neither"));
  }
  if (node.Has("umId")) {
    name.umId = node["umId"].UmIdText();
    name.key = AssetKeyOfClip(name.umId);
  } else {
    name.key = node["id"].String();
  }
  Assets::MediaAsset asset;
  asset.id = name.key;
  node.ReadOptional("assetKind", asset.assetKind);
  for (const Node& range : node["timeBounds"].Elements()) {
    InsertOnce(asset.timeBounds, ReadRange(range), range, "the same range");
  }
  if (node.Has("shortBounds")) {
    asset.shortBounds = ReadRange(node["shortBounds"]);
  }
  if (node.Has("operatorVideoRate")) {
    auto profile = std::make_shared<Assets::KytOperatorMetadataProfile>();
    profile->videoRate = node["operatorVideoRate"].Integer<std::int64_t>();
    asset.metadataProfiles[Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName()] =
        profile;
  }
  if (node.Has("resources")) {
    for (const Node& resourceNode : node["resources"].Elements()) {
      const auto resource = ReadResource(resourceNode);
      InsertOnce(asset.resources,
                 SharedReference<Assets::MediaResource>(resource, resourceNode["id"].String()),
                 resourceNode, "the resource id");
    }
  }
  return asset;
}

}  // namespace TimelineConvert
