// GUID construction and text. Layout of the 16 bytes (big-endian words):
//
//   bytes 0-3    family tag (clip, sequence, element, element with category)
//   bytes 4-15   payload: the id text, zero-padded (clip, sequence), or
//                number, server id and category (element; category 0 without)
//
// The payload is injective within a family (an id text has no NUL and at most
// 11 characters), and the tag keeps the families apart.
#include "SequenceIdentifiers.h"

#include <cstring>
#include <stdexcept>

namespace Kov {
namespace Replivo {
namespace Data {

namespace {

constexpr std::uint32_t kClipFamily = 0xc1d00001;
constexpr std::uint32_t kSequenceFamily = 0x5e900002;
constexpr std::uint32_t kElementFamily = 0xe1e00003;
constexpr std::uint32_t kElementCategoryFamily = 0xe1e00004;

constexpr char kHexDigits[] = "0123456789abcdef";

}  // namespace

namespace Clips {

UmId::UmId() : text_{} {}

UmId::UmId(const char* text) : text_{} {
  if (text == nullptr) {
    return;
  }
  const std::size_t length = std::strlen(text);
  if (length > kMaxTextLength) {
    throw std::invalid_argument("UmId: the text has more than 11 characters");
  }
  std::memcpy(text_.data(), text, length);
}

Guid::Guid(const std::string& umIdText) {
  SetFamily(kClipFamily);
  SetText(umIdText);
}

}  // namespace Clips

namespace Sequences {

Guid::Guid(const std::string& umIdText) {
  SetFamily(kSequenceFamily);
  SetText(umIdText);
}

namespace Elements {

Guid::Guid(unsigned number, const Servers::ServerId& serverId) {
  SetFamily(kElementFamily);
  SetWord(1, number);
  SetWord(2, serverId.Value());
}

Guid::Guid(unsigned number, const Servers::ServerId& serverId, Category category) {
  SetFamily(kElementCategoryFamily);
  SetWord(1, number);
  SetWord(2, serverId.Value());
  SetWord(3, category);
}

}  // namespace Elements
}  // namespace Sequences

void Guid::SetFamily(std::uint32_t family) {
  SetWord(0, family);
}

void Guid::SetWord(unsigned wordIndex, std::uint32_t value) {
  for (unsigned i = 0; i < 4; ++i) {
    bytes_[wordIndex * 4 + i] = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
}

void Guid::SetText(const std::string& text) {
  if (text.size() > Clips::UmId::kMaxTextLength || text.find('\0') != std::string::npos) {
    throw std::invalid_argument("Guid: an id text has at most 11 characters and no NUL");
  }
  std::memcpy(bytes_.data() + 4, text.data(), text.size());
}

const char* Guid::ToString(char* buffer, unsigned size) const {
  if (buffer == nullptr || size == 0) {
    return buffer;
  }
  // 8-4-4-4-12 hexadecimal digits: dashes before bytes 4, 6, 8 and 10.
  char text[kTextLength];
  unsigned written = 0;
  for (unsigned i = 0; i < bytes_.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) {
      text[written++] = '-';
    }
    text[written++] = kHexDigits[bytes_[i] >> 4];
    text[written++] = kHexDigits[bytes_[i] & 0x0f];
  }
  const unsigned length = size - 1 < kTextLength ? size - 1 : kTextLength;
  std::memcpy(buffer, text, length);
  buffer[length] = '\0';
  return buffer;
}

}  // namespace Data
}  // namespace Replivo
}  // namespace Kov
