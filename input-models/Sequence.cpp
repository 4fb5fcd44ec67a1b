// Element kinds: the first virtual operation of every element.
#include "Sequence.h"

namespace Kov {
namespace Replivo {
namespace Data {
namespace Sequences {

namespace {
// Returned by a bare element: no kind that the conversions handle.
constexpr Element::Type kUnhandledType = static_cast<Element::Type>(-1);
}  // namespace

Element::Type Element::GetType() const {
  return kUnhandledType;
}
Element::~Element() = default;

Element::Type VideoElement::GetType() const {
  return Video;
}
VideoElement::~VideoElement() = default;

Element::Type AudioElement::GetType() const {
  return Audio;
}
AudioElement::~AudioElement() = default;

Element::Type AudioVideoElement::GetType() const {
  return AudioVideo;
}
AudioVideoElement::~AudioVideoElement() = default;

}  // namespace Sequences
}  // namespace Data
}  // namespace Replivo
}  // namespace Kov
