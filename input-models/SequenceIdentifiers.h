// SPDX-License-Identifier: Apache-2.0
// Identifier and value types of the sequence records: server ids, clip ids
// (UmId), play speeds and the GUID families whose canonical text names assets,
// timelines and track items.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "Export.h"

namespace Kov {
namespace Replivo {
namespace Data {

namespace Servers {

class TIMELINE_ENGINE_CONVERSION_API ServerId {
 public:
  ServerId() = default;
  explicit ServerId(std::uint32_t value) : value_(value) {}
  ServerId(const ServerId&) = default;
  ServerId& operator=(const ServerId&) = default;

  std::uint32_t Value() const { return value_; }

  friend bool operator==(const ServerId& a, const ServerId& b) { return a.value_ == b.value_; }
  friend bool operator!=(const ServerId& a, const ServerId& b) { return !(a == b); }

 private:
  std::uint32_t value_ = 0;
};

}  // namespace Servers

namespace Clips {

/// A clip's id. Its text lives inside the 12-byte record, so it holds at most
/// 11 characters; the unused bytes are always zero.
class TIMELINE_ENGINE_CONVERSION_API UmId {
 public:
  static constexpr std::size_t kMaxTextLength = 11;

  UmId();
  /// Throws std::invalid_argument for a text longer than kMaxTextLength; a null
  /// pointer makes the empty id.
  explicit UmId(const char* text);
  UmId(const UmId&) = default;
  UmId& operator=(const UmId&) = default;

  /// The id's text, NUL-terminated.
  const char* GetUmId() const { return text_.data(); }

  bool operator==(const UmId& other) const { return text_ == other.text_; }
  bool operator!=(const UmId& other) const { return !(*this == other); }

  /// The shared empty id: there is no clip. Defined in the library, so that
  /// every caller shares the one object.
  static const UmId& Empty();

 private:
  std::array<char, kMaxTextLength + 1> text_;
};

}  // namespace Clips

namespace Channels {

/// A play speed: a media length L lasts L * denominator / numerator on the timeline.
struct Speed {
  /// Speed numerator: the media advances numerator/denominator times as fast
  /// as real time; 0 means no speed of the element's own.
  std::int32_t numerator = 0;
  /// Speed denominator.
  std::int32_t denominator = 1;

  friend bool operator==(const Speed& a, const Speed& b) {
    return a.numerator == b.numerator && a.denominator == b.denominator;
  }
  friend bool operator!=(const Speed& a, const Speed& b) { return !(a == b); }

  /// {0, 1}: no speed of its own.
  static const Speed& Empty() {
    static const Speed empty{0, 1};
    return empty;
  }
};

}  // namespace Channels

/// The base of the GUID families: 16 bytes written as the canonical 36-character
/// lower-case text. Every family marks its GUIDs with a tag of its own, so GUIDs
/// of different families never have the same text.
class TIMELINE_ENGINE_CONVERSION_API Guid {
 public:
  static constexpr unsigned kTextLength = 36;

  /// Writes the text (cut to size - 1 characters) and a NUL into buffer, which
  /// holds `size` bytes, and returns buffer. Writes nothing when size is 0.
  const char* ToString(char* buffer, unsigned size) const;

  friend bool operator==(const Guid& a, const Guid& b) { return a.bytes_ == b.bytes_; }
  friend bool operator!=(const Guid& a, const Guid& b) { return !(a == b); }

 protected:
  Guid() = default;
  /// Inline: every identifier of a conversion is built through them.
  void SetFamily(std::uint32_t family) { SetWord(0, family); }
  void SetWord(unsigned wordIndex, std::uint32_t value) {
    for (unsigned i = 0; i < 4; ++i) {
      bytes_[wordIndex * 4 + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
    }
  }
  TIMELINE_ENGINE_CONVERSION_LOCAL void SetText(const std::string& text);

 private:
  std::array<std::uint8_t, 16> bytes_{};
};

namespace Clips {

/// The GUID of a clip, made from its UmId text (at most 11 characters, no NUL;
/// anything else throws std::invalid_argument).
class TIMELINE_ENGINE_CONVERSION_API Guid : public Data::Guid {
 public:
  explicit Guid(const std::string& umIdText);
};

}  // namespace Clips

namespace Sequences {

/// The GUID of a sequence, made from the text of its UmId (same rules as a clip's).
class TIMELINE_ENGINE_CONVERSION_API Guid : public Data::Guid {
 public:
  explicit Guid(const std::string& umIdText);
};

namespace Elements {

/// The GUID of an element's media item (no category), or of an object derived
/// from an element or playlist (with a category).
class TIMELINE_ENGINE_CONVERSION_API Guid : public Data::Guid {
 public:
  /// What the GUID names besides the element's media item: 1 the aux track's
  /// item, 2 the element's audio transition item, 3 its video transition item.
  enum Category : std::uint32_t { AuxTrack = 1, AudioTransition = 2, VideoTransition = 3 };

  Guid(unsigned number, const Servers::ServerId& serverId);
  Guid(unsigned number, const Servers::ServerId& serverId, Category category);
};

}  // namespace Elements
}  // namespace Sequences

}  // namespace Data
}  // namespace Replivo
}  // namespace Kov
