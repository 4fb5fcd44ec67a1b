// SPDX-License-Identifier: Apache-2.0
// The sequence records of the replay server: elements, tracks and the playlist.
// Their layout is shared with the server's own data library in a 32-bit
// process, so every record keeps its fields in declaration order and keeps the
// spans that this library never reads as opaque bytes of their width.
#pragma once

#include <cstdint>
#include <vector>

#include "Export.h"
#include "SequenceIdentifiers.h"
#include "TimePoints.h"

namespace Kov {
namespace Replivo {
namespace Data {
namespace Sequences {

/// The base of every element. A bare Element has no handled kind: GetType()
/// returns -1, which the time conversions treat as unsupported.
class TIMELINE_ENGINE_CONVERSION_API Element {
 public:
  /// The element's class: 0 VideoElement, 1 AudioElement, 2 AudioVideoElement.
  enum Type : std::int32_t { Video = 0, Audio = 1, AudioVideo = 2 };

  virtual Type GetType() const;
  virtual ~Element();

  Element() = default;
  Element(const Element&) = default;
  Element& operator=(const Element&) = default;

  /// The element's number on its server; with serverId it names the element's items.
  std::uint32_t number = 0;
  /// The server that holds the element.
  Servers::ServerId serverId;
  /// The playlist's number, quoted in refusal messages after "PL".
  std::int32_t playlistNumber = 0;
  /// The number the operator knows the element by, quoted in refusal messages.
  std::int32_t itemNumber = 0;
  /// The clip the element plays; its asset key is made from it.
  Clips::UmId umId;
  /// How the IN value is counted, a BoundaryReference: 0 absolute (refused),
  /// 1 from the clip's start, 2 back from the clip's end, 3 back from the OUT
  /// point. Other values are refused as absolute.
  std::int32_t inBoundaryKind = 0;
  /// How the OUT value is counted, a BoundaryReference: 0 absolute (refused),
  /// 1 back from the clip's end, 2 from the clip's start, 3 as a length after
  /// the IN point. Other values are refused as absolute.
  std::int32_t outBoundaryKind = 0;
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueAfterBoundaryKinds[24] = {};
  /// The play speed; {0, 1} (the default) keeps the previous element's speed.
  Channels::Speed speed;
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueAfterSpeed[8] = {};
  /// Kind of the transition that opens the element: 0 none, 1 to 20 video
  /// (for an audio element, the audio kind 1 to 8).
  std::int32_t transitionType = 0;
};

class TIMELINE_ENGINE_CONVERSION_API VideoElement : public Element {
 public:
  Type GetType() const override;
  ~VideoElement() override;

  VideoElement() = default;
  VideoElement(const VideoElement&) = default;
  VideoElement& operator=(const VideoElement&) = default;

  /// Length of the opening transition, in video fields (two to a frame).
  std::int32_t transitionDuration = 0;
  /// The IN point in video fields, counted as inBoundaryKind says.
  std::int64_t inValue = 0;
  /// The OUT point in video fields, counted as outBoundaryKind says.
  std::int64_t outValue = 0;
};

class TIMELINE_ENGINE_CONVERSION_API AudioElement : public Element {
 public:
  Type GetType() const override;
  ~AudioElement() override;

  AudioElement() = default;
  AudioElement(const AudioElement&) = default;
  AudioElement& operator=(const AudioElement&) = default;

  /// Length of the opening transition, in video fields (two to a frame).
  std::int32_t transitionDuration = 0;
  /// The IN point in video fields, counted as inBoundaryKind says.
  std::int64_t inValue = 0;
  /// The OUT point in video fields, counted as outBoundaryKind says.
  std::int64_t outValue = 0;
};

class TIMELINE_ENGINE_CONVERSION_API AudioVideoElement : public Element {
 public:
  Type GetType() const override;
  ~AudioVideoElement() override;

  AudioVideoElement() = default;
  AudioVideoElement(const AudioVideoElement&) = default;
  AudioVideoElement& operator=(const AudioVideoElement&) = default;

  /// Kind of the audio transition: 0 none, 1 to 8 (`transitionType` holds the
  /// video kind).
  std::int32_t audioTransitionType = 0;
  /// Length of the video transition, in video fields (two to a frame).
  std::int32_t videoTransitionDuration = 0;
  /// Length of the audio transition, in video fields (two to a frame).
  std::int32_t audioTransitionDuration = 0;
  /// The picture's IN point in video fields, counted as inBoundaryKind says.
  std::int64_t videoInValue = 0;
  /// The picture's OUT point in video fields, counted as outBoundaryKind says.
  std::int64_t videoOutValue = 0;
  /// The sound's IN point in video fields, counted as inBoundaryKind says.
  std::int64_t audioInValue = 0;
  /// The sound's OUT point in video fields, counted as outBoundaryKind says.
  std::int64_t audioOutValue = 0;
};

/// A track of elements held by value, in play order.
template <typename E>
struct Track {
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueHeader[4] = {};
  /// The elements in play order.
  std::vector<E> elements;
};

using AudioTrack = Track<AudioElement>;

struct Playlist {
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueHeader[4] = {};
  /// The server that holds the playlist.
  Servers::ServerId serverId;
  /// The playlist's number; with serverId it names the aux track's item.
  std::uint32_t number = 0;
  /// The playlist's own clip id; the timeline's identifier is made from it.
  Clips::UmId umId;
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueAfterUmId[104] = {};
  /// The playlist's length in video fields (two to a frame); the timeline's
  /// duration under TimelineConverter::FromPlaylist.
  std::int64_t durationInFields = 0;
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueAfterDuration[8] = {};
  /// The sequence's rate in frames a second, as a fraction (50/1, 60000/1001).
  TimePoints::Rate rate;
  /// Bytes the conversion does not read, kept for the record's layout.
  std::uint8_t opaqueAfterRate[8] = {};
  /// The elements that make the timeline's first track.
  Track<AudioVideoElement> audioVideoTrack;
  /// The aux track's clip, or Clips::UmId::Empty() when there is none.
  Clips::UmId auxTrackUmId;
};

}  // namespace Sequences
}  // namespace Data
}  // namespace Replivo
}  // namespace Kov
