// The representative sequence of the reliability tests: the highlight of the
// unit tests (overlapping transitions, a centred one, a speed change, an aux
// clip, an asset whose layout lists its tracks), and its text form.
#pragma once

#include <memory>
#include <string>

#include "support/PlaylistBuilders.h"

namespace reliability {

struct RepresentativeSequence {
  Kov::Replivo::Data::Sequences::Playlist playlist = testing_support::HighlightPlaylist();
  std::shared_ptr<Kov::DataModel::MediaAssets::MediaAssetMap> assets =
      testing_support::HighlightAssets();
};

// A new sequence with assets of its own; every call gives equal values.
inline RepresentativeSequence MakeRepresentativeSequence() {
  return {};
}

// Its text form: equal texts mean unchanged bytes, shared objects and owners.
std::string Describe(const RepresentativeSequence& sequence);

}  // namespace reliability
