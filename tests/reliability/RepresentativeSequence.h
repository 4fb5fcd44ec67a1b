// The representative sequence of the reliability tests: the highlight of the
// unit tests (overlapping transitions, a centred one, a speed change, an aux
// clip, an asset whose layout lists its tracks), and its text form.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ModelText.h"
#include "support/PlaylistBuilders.h"

namespace reliability {

// Every new one holds equal values and assets of its own.
struct RepresentativeSequence {
  Kov::Replivo::Data::Sequences::Playlist playlist = testing_support::HighlightPlaylist();
  std::shared_ptr<Kov::DataModel::MediaAssets::MediaAssetMap> assets =
      testing_support::HighlightAssets();
};

// Its text form: equal texts mean unchanged bytes, shared objects and owners.
inline std::string Describe(const RepresentativeSequence& sequence) {
  std::string text = ModelText::Describe(sequence.playlist) + ModelText::Describe(*sequence.assets);
  ModelText::Number(text, "mapOwners", sequence.assets.use_count());
  return text;
}

// The text of an asset listing.
inline std::string Describe(
    const std::vector<Kov::BusinessEntityModel::BaseTypes::Identifier>& ids) {
  std::string text;
  for (const auto& id : ids) {
    text += id.Text() + " ";
  }
  return text;
}

}  // namespace reliability
