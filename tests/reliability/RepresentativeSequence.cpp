// The text form of the representative sequence.
#include "RepresentativeSequence.h"

#include "ModelText.h"

namespace reliability {

std::string Describe(const RepresentativeSequence& sequence) {
  std::string text = ModelText::Describe(sequence.playlist) + ModelText::Describe(*sequence.assets);
  ModelText::Number(text, "mapOwners", sequence.assets.use_count());
  return text;
}

}  // namespace reliability
