// DocumentPlace: where in the input document something comes from, for a
// refusal or a finding: an element of the audio-video track, an asset, the aux
// track or the playlist as a whole, with the JSON pointer of the value a user
// would change. Every message of the tool that names a place goes through
// here, so the text form and the JSON form always say the same place.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace TimelineConvert {

struct PlaylistDocument;
struct DocumentAsset;

struct DocumentPlace {
  // Playlist: not pinned to an element or asset (the aux clip, or a refusal
  // that no part reproduces on its own).
  enum class Source { Element, Asset, Playlist };
  Source source = Source::Playlist;
  // 0-based index in playlist.audioVideoTrack.elements, as in a JSON pointer (Source::Element).
  std::size_t element = 0;
  std::int32_t itemNumber = 0;  // that element's itemNumber
  std::string clip;             // the clip id (UmId text) of the element, asset or aux clip
  std::string asset;            // the asset identifier text (Source::Asset)
  bool auxTrack = false;        // Source::Playlist: the place is the aux clip
  std::string pointer;          // JSON pointer of the value to change; empty when unknown

  // `field` is a pointer below the element ("/speed"), or empty for the element itself.
  static DocumentPlace Element(const PlaylistDocument& document, std::size_t index,
                               const std::string& field = "");
  static DocumentPlace Asset(const DocumentAsset& asset, std::size_t position);
  static DocumentPlace AuxTrack(const PlaylistDocument& document);
};

// A text that comes from the document (a clip id, a name, a value) as it may
// be shown on one line: control characters, backslashes and invalid UTF-8 as
// escapes (\n, \u0000, \xff), and NUL never ends it.
std::string EscapedText(const std::string& text);

// Where, after "timeline-convert: FILE: ": "at element N (item I, clip CLIP)",
// "in asset ID (clip CLIP)", "in the aux track (clip CLIP)" or, for the
// playlist itself, "at POINTER"; empty when it is not pinned to anything.
std::string DescribePlace(const DocumentPlace& place);

}  // namespace TimelineConvert
