// Reads the tool's input document into the library's records, checking every
// field's presence, type and range so that the library only ever sees values
// its record fields can hold.
#include "document/PlaylistDocument.h"

#include "document/DocumentPlace.h"
#include "document/DocumentStream.h"
#include "document/JsonNode.h"

namespace TimelineConvert {

namespace {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;

Sequences::Playlist ReadPlaylist(const Node& node, StreamedRecords& stream) {
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

}  // namespace

DocumentError::DocumentError(const std::string& where, const std::string& problem)
    : std::runtime_error(EscapedText(where) + ": " + EscapedText(problem)), where_(where) {}

PlaylistDocument ReadPlaylistDocument(std::string_view jsonText) {
  StreamedRecords stream;
  Json json;
  // Each reader hands a text it is unsure of to the next, more careful one;
  // nothing of an abandoned attempt is used.
  if (!ReadDirectly(jsonText, stream, json)) {
    stream = StreamedRecords();
    json = Json();
    if (!ParseQuickly(jsonText, stream, json)) {
      stream = StreamedRecords();
      json = ParseStreaming(jsonText, stream);
    }
  }
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
