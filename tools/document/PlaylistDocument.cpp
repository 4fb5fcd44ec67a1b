// Reads the tool's input document into the library's records, checking every
// field's presence, type and range so that the library only ever sees values
// its record fields can hold.
#include "document/PlaylistDocument.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <utility>

#include <nlohmann/json.hpp>

#include "document/AssetKeys.h"

namespace TimelineConvert {

namespace {

using Json = nlohmann::json;
namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;

// One step of a JSON pointer: '~' and '/' in a key are written ~0 and ~1.
std::string PointerStep(const std::string& key) {
  std::string step = "/";
  for (const char c : key) {
    if (c == '~') {
      step += "~0";
    } else if (c == '/') {
      step += "~1";
    } else {
      step += c;
    }
  }
  return step;
}

template <typename T>
const char* RangeName() {
  if (std::is_same<T, std::int32_t>::value) return "a signed 32-bit number";
  if (std::is_same<T, std::uint32_t>::value) return "an unsigned 32-bit number";
  if (std::is_same<T, std::uint8_t>::value) return "an 8-bit number";
  return "a signed 64-bit number";
}

// A value of the document together with its JSON pointer.
class Node {
 public:
  Node(const Json& value, std::string path) : value_(value), path_(std::move(path)) {}

  [[noreturn]] void Fail(const std::string& problem) const {
    throw DocumentError(path_.empty() ? "/" : path_, problem);
  }

  // An object holding every required field, and no field beyond the two lists.
  void ExpectObject(std::initializer_list<const char*> required,
                    std::initializer_list<const char*> optional = {}) const {
    if (!value_.is_object()) {
      Fail(std::string("expected an object, found ") + Describe());
    }
    for (const char* name : required) {
      if (!value_.contains(name)) {
        Fail(std::string("missing field \"") + name + "\"");
      }
    }
    for (const auto& field : value_.items()) {
      const auto known = [&](const char* name) { return field.key() == name; };
      if (std::none_of(required.begin(), required.end(), known) &&
          std::none_of(optional.begin(), optional.end(), known)) {
        std::string expected;
        for (const auto* list : {&required, &optional}) {
          for (const char* name : *list) {
            expected += (expected.empty() ? "" : ", ") + std::string(name);
          }
        }
        Node(field.value(), path_ + PointerStep(field.key()))
            .Fail("unknown field (expected one of: " + expected + ")");
      }
    }
  }

  bool Has(const char* name) const { return value_.contains(name); }
  Node operator[](const char* name) const {
    return Node(value_.at(name), path_ + PointerStep(name));
  }

  std::vector<Node> Elements() const {
    if (!value_.is_array()) {
      Fail(std::string("expected an array, found ") + Describe());
    }
    std::vector<Node> elements;
    for (std::size_t index = 0; index < value_.size(); ++index) {
      elements.emplace_back(value_[index], path_ + "/" + std::to_string(index));
    }
    return elements;
  }

  bool IsString() const { return value_.is_string(); }
  bool IsObject() const { return value_.is_object(); }

  std::string String() const {
    if (!value_.is_string()) {
      Fail(std::string("expected a string, found ") + Describe());
    }
    return value_.get<std::string>();
  }

  // A clip id as the 12-byte record holds it: at most 11 bytes, no NUL.
  std::string UmIdText() const {
    std::string text = String();
    if (text.size() > Data::Clips::UmId::kMaxTextLength) {
      Fail("a clip id holds at most 11 characters, \"" + text + "\" has " +
           std::to_string(text.size()));
    }
    if (text.find('\0') != std::string::npos) {
      Fail("a clip id cannot hold a NUL character");
    }
    return text;
  }

  template <typename T>
  T Integer() const {
    if (FitsIn<T>()) {
      return value_.is_number_unsigned() ? static_cast<T>(value_.get<std::uint64_t>())
                                         : static_cast<T>(value_.get<std::int64_t>());
    }
    const bool wholeNumber = value_.is_number_integer() ||
                             (value_.is_number_float() && std::isfinite(value_.get<double>()) &&
                              std::trunc(value_.get<double>()) == value_.get<double>());
    if (!wholeNumber) {
      Fail(std::string("expected an integer, found ") + Describe());
    }
    // 3.0 or 1e3: a whole value, but written as a fraction, which the reader
    // does not round into an integer (large ones would not be exact).
    const double whole = value_.get<double>();
    if (whole >= static_cast<double>(std::numeric_limits<T>::min()) &&
        whole < static_cast<double>(std::numeric_limits<T>::max()) + 1.0) {
      Fail(value_.dump() + " is not an integer: write it without a fraction part or exponent");
    }
    Fail(value_.dump() + " is out of range for " + RangeName<T>() + " (" +
         std::to_string(std::numeric_limits<T>::min() + 0) + " to " +
         std::to_string(std::numeric_limits<T>::max() + 0) + ")");
  }

  template <typename T>
  void ReadOptional(const char* name, T& target) const {
    if (Has(name)) {
      target = (*this)[name].Integer<T>();
    }
  }

 private:
  template <typename T>
  bool FitsIn() const {
    const auto highest = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    if (value_.is_number_unsigned()) {
      return value_.get<std::uint64_t>() <= highest;
    }
    if (!value_.is_number_integer()) {
      return false;
    }
    const auto value = value_.get<std::int64_t>();
    return value < 0 ? value >= static_cast<std::int64_t>(std::numeric_limits<T>::min())
                     : static_cast<std::uint64_t>(value) <= highest;
  }

  std::string Describe() const {
    if (value_.is_number()) {
      return "the number " + value_.dump();
    }
    if (value_.is_null()) {
      return "null";
    }
    const std::string type = value_.type_name();  // string, boolean, object, array
    return (type[0] == 'a' || type[0] == 'o' ? "an " : "a ") + type;
  }

  const Json& value_;
  std::string path_;
};

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

Sequences::AudioVideoElement ReadElement(const Node& node) {
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

Assets::MediaAsset ReadAsset(const Node& node, DocumentAsset& name) {
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

// Reads the document while the parser runs. The elements of the playlist's
// track and the assets are turned into records as soon as each one is parsed,
// and their JSON is dropped, so that memory grows with the records and never
// with a tree of the whole document. The first fault of each list is kept and
// raised at the point where a reading of the whole tree would have met it, so
// the document's faults are reported in the same order either way.
// The stream also refuses a key given twice in one object (the parser would
// keep the last one without a word), naming the place by its own path.
class DocumentStream {
 public:
  bool operator()(int /*depth*/, Json::parse_event_t event, Json& parsed) {
    switch (event) {
      case Json::parse_event_t::object_start:
      case Json::parse_event_t::array_start:
        frames_.push_back(Frame{event == Json::parse_event_t::object_start, {}, {}, 0});
        return true;
      case Json::parse_event_t::key: {
        const auto& key = parsed.get_ref<const std::string&>();
        if (!frames_.back().keys.insert(key).second) {
          throw DocumentError(ParentPath() + PointerStep(key), "the field is given twice");
        }
        frames_.back().currentKey = key;
        return true;
      }
      case Json::parse_event_t::object_end:
      case Json::parse_event_t::array_end:
        frames_.pop_back();
        return Completed(parsed);
      case Json::parse_event_t::value:
        return Completed(parsed);
    }
    return true;
  }

  std::string PlaceOfValue() const { return frames_.empty() ? "/" : CurrentPath(); }

  std::vector<Sequences::AudioVideoElement> elements;
  std::optional<DocumentError> elementFault;
  std::shared_ptr<Assets::MediaAssetMap> assets = std::make_shared<Assets::MediaAssetMap>();
  std::vector<DocumentAsset> assetOrder;
  std::optional<DocumentError> assetFault;

 private:
  struct Frame {
    bool isObject;
    std::set<std::string> keys;
    std::string currentKey;
    std::size_t index;
  };

  // A value is complete; false drops it from the tree once it has been read.
  bool Completed(const Json& value) {
    bool keep = true;
    if (IsInArrayAt({"playlist", "audioVideoTrack", "elements"})) {
      keep = false;
      if (!elementFault) {
        try {
          elements.push_back(ReadElement(Node(value, CurrentPath())));
        } catch (const DocumentError& fault) {
          elementFault = fault;
        }
      }
    } else if (IsInArrayAt({"assets"})) {
      keep = false;
      if (!assetFault) {
        try {
          AddAsset(Node(value, CurrentPath()));
        } catch (const DocumentError& fault) {
          assetFault = fault;
        }
      }
    }
    if (!frames_.empty() && !frames_.back().isObject) {
      ++frames_.back().index;
    }
    return keep;
  }

  void AddAsset(const Node& node) {
    DocumentAsset name;
    Assets::MediaAsset asset = ReadAsset(node, name);
    const std::string path = "/assets/" + std::to_string(assetOrder.size());
    const auto earlier = pathOfKey_.emplace(name.key.Text(), path);
    if (!earlier.second) {
      node.Fail("the asset " + name.key.Text() + " is already given at " + earlier.first->second);
    }
    assets->emplace(name.key, std::move(asset));
    assetOrder.push_back(std::move(name));
  }

  // True when the value just completed is an element of the array found by
  // following these keys from the document's root object.
  bool IsInArrayAt(std::initializer_list<const char*> keys) const {
    if (frames_.size() != keys.size() + 1 || frames_.back().isObject) {
      return false;
    }
    std::size_t level = 0;
    for (const char* key : keys) {
      if (!frames_[level].isObject || frames_[level].currentKey != key) {
        return false;
      }
      ++level;
    }
    return true;
  }

  std::string Step(const Frame& frame) const {
    return frame.isObject ? PointerStep(frame.currentKey) : "/" + std::to_string(frame.index);
  }

  std::string ParentPath() const {
    std::string path;
    for (std::size_t i = 0; i + 1 < frames_.size(); ++i) {
      path += Step(frames_[i]);
    }
    return path;
  }

  // The place of the value being parsed: also that of a number too large to hold.
  std::string CurrentPath() const {
    std::string path;
    for (const Frame& frame : frames_) {
      path += Step(frame);
    }
    return path;
  }

  std::vector<Frame> frames_;
  std::map<std::string, std::string> pathOfKey_;
};

Sequences::Playlist ReadPlaylist(const Node& node, DocumentStream& stream) {
  node.ExpectObject({"serverId", "number", "umId", "durationInFields", "rate", "audioVideoTrack"},
                    {"auxTrackUmId"});
  Sequences::Playlist playlist;
  playlist.serverId = Data::Servers::ServerId(node["serverId"].Integer<std::uint32_t>());
  playlist.number = node["number"].Integer<std::uint32_t>();
  playlist.umId = Data::Clips::UmId(node["umId"].UmIdText().c_str());
  playlist.durationInFields = node["durationInFields"].Integer<std::int64_t>();
  const Node rate = node["rate"];
  rate.ExpectObject({"numerator", "denominator"});
  playlist.rate = {rate["numerator"].Integer<std::int64_t>(),
                   rate["denominator"].Integer<std::int64_t>()};
  const Node track = node["audioVideoTrack"];
  track.ExpectObject({"elements"});
  track["elements"].Elements();  // an array, its elements already read by the stream
  if (stream.elementFault) {
    throw *stream.elementFault;
  }
  playlist.audioVideoTrack.elements = std::move(stream.elements);
  if (node.Has("auxTrackUmId")) {
    playlist.auxTrackUmId = Data::Clips::UmId(node["auxTrackUmId"].UmIdText().c_str());
  }
  return playlist;
}

Json ParseJson(const std::string& jsonText, DocumentStream& stream) {
  try {
    return Json::parse(jsonText, [&stream](int depth, Json::parse_event_t event, Json& parsed) {
      return stream(depth, event, parsed);
    });
  } catch (const Json::out_of_range& error) {
    // "[json.exception.out_of_range.406] number overflow parsing '1e999'"
    const std::string text = error.what();
    const auto end = text.find("] ");
    throw DocumentError(stream.PlaceOfValue(),
                        end == std::string::npos ? text : text.substr(end + 2));
  } catch (const Json::parse_error& error) {
    // "[json.exception.parse_error.101] parse error at line 2, column 5: <problem>"
    const std::string text = error.what();
    const auto at = text.find(" at line ");
    const auto colon = text.find(": ", at == std::string::npos ? 0 : at);
    if (at == std::string::npos || colon == std::string::npos) {
      throw DocumentError("byte " + std::to_string(error.byte), text);
    }
    throw DocumentError(text.substr(at + 4, colon - at - 4), text.substr(colon + 2));
  }
}

}  // namespace

DocumentError::DocumentError(const std::string& where, const std::string& problem)
    : std::runtime_error(where + ": " + problem), where_(where) {}

PlaylistDocument ReadPlaylistDocument(const std::string& jsonText) {
  DocumentStream stream;
  const Json json = ParseJson(jsonText, stream);
  const Node root(json, "");
  root.ExpectObject({"playlist", "assets"}, {"description", "$schema"});
  if (root.Has("description")) {
    root["description"].String();  // free text for the reader, but text all the same
  }
  if (root.Has("$schema")) {
    root["$schema"].String();  // names the schema for editors; the reader needs none
  }
  PlaylistDocument document;
  document.playlist = ReadPlaylist(root["playlist"], stream);
  root["assets"].Elements();  // an array, its assets already read by the stream
  if (stream.assetFault) {
    throw *stream.assetFault;
  }
  document.assets = std::move(stream.assets);
  document.assetOrder = std::move(stream.assetOrder);
  return document;
}

}  // namespace TimelineConvert
