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

// The base of every element. A bare Element has no handled kind: GetType()
// returns -1, which the time conversions treat as unsupported.
class TIMELINE_ENGINE_CONVERSION_API Element {
 public:
  enum Type : std::int32_t { Video = 0, Audio = 1, AudioVideo = 2 };

  virtual Type GetType() const;
  virtual ~Element();

  Element() = default;
  Element(const Element&) = default;
  Element& operator=(const Element&) = default;

  std::uint32_t number = 0;
  Servers::ServerId serverId;
  std::int32_t playlistNumber = 0;
  std::int32_t itemNumber = 0;
  Clips::UmId umId;
  std::int32_t inBoundaryKind = 0;
  std::int32_t outBoundaryKind = 0;
  std::uint8_t opaqueAfterBoundaryKinds[24] = {};
  Channels::Speed speed;
  std::uint8_t opaqueAfterSpeed[8] = {};
  // Kind of the transition that opens the element: 0 none, 1 to 20 video
  // (for an audio element, the audio kind 1 to 8).
  std::int32_t transitionType = 0;
};

class TIMELINE_ENGINE_CONVERSION_API VideoElement : public Element {
 public:
  Type GetType() const override;
  ~VideoElement() override;

  VideoElement() = default;
  VideoElement(const VideoElement&) = default;
  VideoElement& operator=(const VideoElement&) = default;

  std::int32_t transitionDuration = 0;
  std::int64_t inValue = 0;
  std::int64_t outValue = 0;
};

class TIMELINE_ENGINE_CONVERSION_API AudioElement : public Element {
 public:
  Type GetType() const override;
  ~AudioElement() override;

  AudioElement() = default;
  AudioElement(const AudioElement&) = default;
  AudioElement& operator=(const AudioElement&) = default;

  std::int32_t transitionDuration = 0;
  std::int64_t inValue = 0;
  std::int64_t outValue = 0;
};

class TIMELINE_ENGINE_CONVERSION_API AudioVideoElement : public Element {
 public:
  Type GetType() const override;
  ~AudioVideoElement() override;

  AudioVideoElement() = default;
  AudioVideoElement(const AudioVideoElement&) = default;
  AudioVideoElement& operator=(const AudioVideoElement&) = default;

  // `transitionType` holds the video transition kind.
  std::int32_t audioTransitionType = 0;
  std::int32_t videoTransitionDuration = 0;
  std::int32_t audioTransitionDuration = 0;
  std::int64_t videoInValue = 0;
  std::int64_t videoOutValue = 0;
  std::int64_t audioInValue = 0;
  std::int64_t audioOutValue = 0;
};

// A track of elements held by value, in play order.
template <typename E>
struct Track {
  std::uint8_t opaqueHeader[4] = {};
  std::vector<E> elements;
};

using AudioTrack = Track<AudioElement>;

struct Playlist {
  std::uint8_t opaqueHeader[4] = {};
  Servers::ServerId serverId;
  std::uint32_t number = 0;
  Clips::UmId umId;
  std::uint8_t opaqueAfterUmId[104] = {};
  std::int64_t durationInFields = 0;
  std::uint8_t opaqueAfterDuration[8] = {};
  TimePoints::Rate rate;
  std::uint8_t opaqueAfterRate[8] = {};
  Track<AudioVideoElement> audioVideoTrack;
  // The aux track's clip, or Clips::UmId::Empty() when there is none.
  Clips::UmId auxTrackUmId;
};

}  // namespace Sequences
}  // namespace Data
}  // namespace Replivo
}  // namespace Kov
