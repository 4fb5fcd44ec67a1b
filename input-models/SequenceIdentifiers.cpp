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

// The two lower-case hexadecimal digits of every byte value.
struct HexPairs {
  char digits[256][2];
};
constexpr HexPairs MakeHexPairs() {
  HexPairs pairs{};
  for (unsigned value = 0; value < 256; ++value) {
    pairs.digits[value][0] = kHexDigits[value >> 4];
    pairs.digits[value][1] = kHexDigits[value & 0x0f];
  }
  return pairs;
}
constexpr HexPairs kHexPairs = MakeHexPairs();

// Where the two digits of each byte go in the 8-4-4-4-12 text, and its dashes.
constexpr unsigned char kDigitPositions[16] = {0,  2,  4,  6,  9,  11, 14, 16,
                                               19, 21, 24, 26, 28, 30, 32, 34};
constexpr unsigned char kDashPositions[4] = {8, 13, 18, 23};

}  // namespace

namespace Clips {

UmId::UmId() : text_{} {}

const UmId& UmId::Empty() {
  static const UmId empty;
  return empty;
}

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
  // Every character has a fixed place, so the loop has no branch and unrolls;
  // a buffer of full size gets the text in one fixed-size copy.
  char text[kTextLength];
  for (const unsigned char dash : kDashPositions) {
    text[dash] = '-';
  }
  for (unsigned i = 0; i < bytes_.size(); ++i) {
    std::memcpy(text + kDigitPositions[i], kHexPairs.digits[bytes_[i]], 2);
  }
  if (size > kTextLength) {
    std::memcpy(buffer, text, kTextLength);
    buffer[kTextLength] = '\0';
    return buffer;
  }
  std::memcpy(buffer, text, size - 1);
  buffer[size - 1] = '\0';
  return buffer;
}

}  // namespace Data
}  // namespace Replivo
}  // namespace Kov
