// Every refusal of the converters, each with its exception type and its exact
// text: the converters throw only through these functions, so this is the one
// list to read (or grep) for what a conversion can refuse and how it says so.
// Refusals of the models pass through unchanged; the ones a conversion can
// meet are
//   std::invalid_argument "TimeBoundaryToFields: the rate needs a positive
//     numerator and denominator" (a sequence rate that cannot count fields),
//   std::runtime_error "null pointer" (a reference with a key but no object).
// Internal to the library: it sits beside the converters so that the check of
// the integration guide's message tables reads it, and its .hpp ending keeps
// it out of the installed headers, which are this folder's .h files.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// An asset whose timing is needed has no recorded range.
[[noreturn]] inline void RefuseAssetWithoutRecordedRanges() {
  throw std::invalid_argument("MediaAsset from Sequence has no PhysicalTimebounds");
}

// An asset whose rate is asked for has no operator metadata profile.
[[noreturn]] inline void RefuseAssetWithoutOperatorMetadata() {
  throw std::invalid_argument("MediaAsset from Sequence has no KytOperatorMetadata");
}

// An element's IN boundary kind is absolute (0) or unknown.
[[noreturn]] inline void RefuseAbsoluteIn() {
  throw std::invalid_argument(
      "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine");
}

// An element's OUT boundary kind is absolute (0) or unknown.
[[noreturn]] inline void RefuseAbsoluteOut() {
  throw std::invalid_argument(
      "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine");
}

// The map has no asset for an element's clip.
[[noreturn]] inline void RefuseMissingElementAsset() {
  throw std::runtime_error("MediaAsset for sequence track item not found");
}

// The map has no asset for the playlist's aux clip.
[[noreturn]] inline void RefuseMissingAuxAsset() {
  throw std::runtime_error("MediaAsset for aux-track not found");
}

// A track layout lists a track that is not there.
[[noreturn]] inline void RefuseMissingLayoutTrack() {
  throw std::runtime_error("null pointer");
}

// The picture or the sound side of a track, as the transition refusals name it.
enum class TrackSide { Video, Audio };

// The two transition refusals, with each sentence on one line so that it can be
// found whole (hence no automatic formatting here).
// clang-format off

// The part of a transition before the cut is longer than the previous item;
// <item> is the element that carries the transition.
//   "The playlist PL<playlist> cannot be edited - contains track item (<item>) with a shorter video duration than their transition duration."
//   "The playlist PL<playlist> cannot be edited - contains track item (<item>) with a shorter audio duration than their transition duration."
[[noreturn]] inline void RefuseTransitionLongerThanPreviousItem(TrackSide side,
                                                                std::int32_t playlistNumber,
                                                                std::int32_t itemNumber) {
  const char* const rest = side == TrackSide::Video
                               ? ") with a shorter video duration than their transition duration."
                               : ") with a shorter audio duration than their transition duration.";
  throw std::logic_error("The playlist PL" + std::to_string(playlistNumber) +
                         " cannot be edited - contains track item (" + std::to_string(itemNumber) +
                         rest);
}

// The part of a transition after the cut is longer than the item it opens:
//   "The playlist PL<playlist> cannot be edited - it contains track items with a shorter video duration than their transition duration."
//   "The playlist PL<playlist> cannot be edited - it contains track items with a shorter audio duration than their transition duration."
[[noreturn]] inline void RefuseTransitionLongerThanCurrentItem(TrackSide side,
                                                               std::int32_t playlistNumber) {
  const char* const rest = side == TrackSide::Video
      ? " cannot be edited - it contains track items with a shorter video duration than their transition duration."
      : " cannot be edited - it contains track items with a shorter audio duration than their transition duration.";
  throw std::logic_error("The playlist PL" + std::to_string(playlistNumber) + rest);
}

// clang-format on

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
