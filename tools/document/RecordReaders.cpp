// The record readers. The library's records take the values as they are, so
// each field is checked here against what its record field can hold.
#include "document/RecordReaders.h"

#include <algorithm>
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
  std::int32_t kind = 0;
  if (!BoundaryKindOfName(node.String(), kind)) {
    node.Fail("unknown boundary kind \"" + node.String() +
              "\" (expected absolute, sameLimit, oppositeLimit, otherBoundary or a number)");
  }
  return kind;
}

Data::Channels::Speed ReadSpeed(const Node& node) {
  node.ExpectObject({"numerator", "denominator"});
  return {node["numerator"].Integer<std::int32_t>(), node["denominator"].Integer<std::int32_t>()};
}

}  // namespace

bool BoundaryKindOfName(std::string_view name, std::int32_t& kind) {
  static constexpr std::pair<std::string_view, Conversion::BoundaryReference> kNames[] = {
      {"absolute", Conversion::Absolute},
      {"sameLimit", Conversion::SameLimit},
      {"oppositeLimit", Conversion::OppositeLimit},
      {"otherBoundary", Conversion::OtherBoundary}};
  for (const auto& entry : kNames) {
    if (entry.first == name) {
      kind = entry.second;
      return true;
    }
  }
  return false;
}

namespace {

// The position of a field in kElementFields; a name that is none does not compile.
constexpr std::size_t FieldAt(std::string_view name) {
  for (std::size_t field = 0; field < kElementFields.size(); ++field) {
    if (kElementFields[field].name == name) {
      return field;
    }
  }
  throw std::logic_error("no such element field");
}

}  // namespace

void SetElementInteger(Sequences::AudioVideoElement& element, std::size_t field,
                       std::int64_t value) {
  const auto narrow = static_cast<std::int32_t>(value);
  switch (field) {
    case FieldAt("number"):
      element.number = static_cast<std::uint32_t>(value);
      break;
    case FieldAt("serverId"):
      element.serverId = Data::Servers::ServerId(static_cast<std::uint32_t>(value));
      break;
    case FieldAt("playlistNumber"):
      element.playlistNumber = narrow;
      break;
    case FieldAt("itemNumber"):
      element.itemNumber = narrow;
      break;
    case FieldAt("inBoundaryKind"):
      element.inBoundaryKind = narrow;
      break;
    case FieldAt("outBoundaryKind"):
      element.outBoundaryKind = narrow;
      break;
    case FieldAt("videoInValue"):
      element.videoInValue = value;
      break;
    case FieldAt("videoOutValue"):
      element.videoOutValue = value;
      break;
    case FieldAt("audioInValue"):
      element.audioInValue = value;
      break;
    case FieldAt("audioOutValue"):
      element.audioOutValue = value;
      break;
    case FieldAt("transitionType"):
      element.transitionType = narrow;
      break;
    case FieldAt("videoTransitionDuration"):
      element.videoTransitionDuration = narrow;
      break;
    case FieldAt("audioTransitionType"):
      element.audioTransitionType = narrow;
      break;
    case FieldAt("audioTransitionDuration"):
      element.audioTransitionDuration = narrow;
      break;
    default:
      throw std::logic_error("SetElementInteger: not an integer field");
  }
}

Kov::Replivo::Data::Sequences::AudioVideoElement ReadElement(const Node& node) {
  static const auto names = [] {
    std::array<std::string_view, kElementFields.size()> list{};
    for (std::size_t field = 0; field < list.size(); ++field) {
      list[field] = kElementFields[field].name;
    }
    return list;
  }();
  static const auto requiredCount = static_cast<std::size_t>(
      std::count_if(kElementFields.begin(), kElementFields.end(),
                    [](const ElementField& field) { return field.required; }));
  node.ExpectFields(names.data(), names.size(), requiredCount);
  Sequences::AudioVideoElement element;
  for (std::size_t field = 0; field < kElementFields.size(); ++field) {
    const ElementField& rule = kElementFields[field];
    const char* name = rule.name.data();  // a literal: NUL-terminated
    if (!rule.required && !node.Has(name)) {
      continue;
    }
    const Node value = node[name];
    switch (rule.value) {
      case ElementValue::Unsigned32:
        SetElementInteger(element, field, value.Integer<std::uint32_t>());
        break;
      case ElementValue::Signed32:
        SetElementInteger(element, field, value.Integer<std::int32_t>());
        break;
      case ElementValue::Signed64:
        SetElementInteger(element, field, value.Integer<std::int64_t>());
        break;
      case ElementValue::ClipId:
        element.umId = Data::Clips::UmId(value.UmIdText().c_str());
        break;
      case ElementValue::BoundaryKind:
        SetElementInteger(element, field, BoundaryKind(value));
        break;
      case ElementValue::Speed:
        element.speed = ReadSpeed(value);
        break;
    }
  }
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

void AddAsset(const Node& node, StreamedRecords& records) {
  DocumentAsset name;
  Kov::DataModel::MediaAssets::MediaAsset asset = ReadAsset(node, name);
  const std::string path = "/assets/" + std::to_string(records.assetOrder.size());
  const auto earlier = records.assetPathOfKey.emplace(name.key.Text(), path);
  if (!earlier.second) {
    node.Fail("the asset " + name.key.Text() + " is already given at " + earlier.first->second);
  }
  records.assets->emplace(name.key, std::move(asset));
  records.assetOrder.push_back(std::move(name));
}

}  // namespace TimelineConvert
