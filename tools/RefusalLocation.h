// RefusalLocation: when the library refuses a playlist, finds the element or
// asset the refusal comes from. The library's messages name no place, and the
// tool must not second-guess its rules, so the place is found by running the
// library's own public functions on parts of the input: each asset of the map
// on its own, then growing prefixes of the audio-video track (a binary search
// over the element count), then the aux clip. This only runs after a refusal.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "PlaylistDocument.h"

namespace TimelineConvert {

struct RefusalPlace {
  // Playlist: not pinned to an element or asset (the aux clip, or a refusal
  // that no part reproduces on its own).
  enum class Source { Element, Asset, Playlist };
  Source source = Source::Playlist;
  // 0-based index in playlist.audioVideoTrack.elements, as in a JSON pointer (Source::Element).
  std::size_t element = 0;
  std::int32_t itemNumber = 0;  // that element's itemNumber
  std::string clip;             // the clip id (UmId text) of the element, asset or aux clip
  std::string asset;            // the asset identifier text (Source::Asset)
  bool auxTrack = false;        // Source::Playlist: the refusal comes from the aux clip
  std::string message;          // the library's message, unchanged
};

// Runs the conversion; std::nullopt when it is not refused.
std::optional<RefusalPlace> LocateRefusal(
    const PlaylistDocument& document,
    Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::DurationMode mode);

// Where the refusal was found, after "timeline-convert: FILE: ":
// "at element N (item I, clip CLIP)", "in asset ID (clip CLIP)" or
// "in the aux track (clip CLIP)"; empty when it is not pinned to anything.
std::string DescribePlace(const RefusalPlace& place);

}  // namespace TimelineConvert
