// The representative sequence of the reliability tests: four audio-video
// elements over two recorded clips with an overlapping video dissolve and an
// audio crossfade, a slow-motion part, a centred wipe and a commentary aux
// clip, against three assets whose first resource lists picture and sound
// tracks in a track layout. Every public step of a conversion runs on it.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <memory>
#include <string>

namespace reliability {

struct RepresentativeSequence {
  Kov::Replivo::Data::Sequences::Playlist playlist;
  std::shared_ptr<Kov::DataModel::MediaAssets::MediaAssetMap> assets;
};

// A new sequence with assets of its own; every call gives equal values.
RepresentativeSequence MakeRepresentativeSequence();

// Its text form: equal texts mean unchanged bytes, shared objects and owners.
std::string Describe(const RepresentativeSequence& sequence);

}  // namespace reliability
