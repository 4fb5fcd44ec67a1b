// Locating a refusal. The conversion runs its parts in a fixed order: every
// asset of the map, then the audio-video track element by element, then the
// aux clip. Each part is re-run here on its own with the library's public
// functions, and the first one that fails with the same message is the place.
// A track prefix that fails stays failing when it grows, so the first failing
// element is found by a binary search over the prefix length.
#include "RefusalLocation.h"

#include <exception>
#include <utility>

namespace TimelineConvert {

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Sequences = Kov::Replivo::Data::Sequences;
using Conversion::TimelineConverter;

// The library's message for a conversion of the playlist, or nothing.
template <typename Run>
std::optional<std::string> RefusalOf(Run&& run) {
  try {
    run();
  } catch (const std::exception& refusal) {
    return std::string(refusal.what());
  }
  return std::nullopt;
}

// The playlist with only the first `count` elements and without aux clip.
std::optional<std::string> RefusalOfTrackPrefix(const PlaylistDocument& document,
                                                TimelineConverter::DurationMode mode,
                                                std::size_t count) {
  Sequences::Playlist prefix;
  const auto& playlist = document.playlist;
  prefix.serverId = playlist.serverId;
  prefix.number = playlist.number;
  prefix.umId = playlist.umId;
  prefix.durationInFields = playlist.durationInFields;
  prefix.rate = playlist.rate;
  const auto& elements = playlist.audioVideoTrack.elements;
  prefix.audioVideoTrack.elements.assign(elements.begin(),
                                         elements.begin() + static_cast<std::ptrdiff_t>(count));
  return RefusalOf([&] { TimelineConverter::ToTimeline(prefix, mode, document.assets); });
}

std::optional<RefusalPlace> FailingAsset(const PlaylistDocument& document,
                                         const std::string& message) {
  // The map's own order, which is the order the conversion goes through it.
  for (const auto& entry : *document.assets) {
    const auto refusal = RefusalOf(
        [&] { Conversion::MediaInfoConverter::ToMediaInfo(entry.second, document.playlist.rate); });
    if (refusal) {
      if (*refusal != message) {
        return std::nullopt;
      }
      RefusalPlace place;
      place.source = RefusalPlace::Source::Asset;
      place.asset = entry.first.Text();
      for (const auto& named : document.assetOrder) {
        if (named.key == entry.first) {
          place.clip = named.umId;
        }
      }
      return place;
    }
  }
  return std::nullopt;
}

// Called once the whole track is known to fail with the message.
RefusalPlace FailingElement(const PlaylistDocument& document,
                            TimelineConverter::DurationMode mode) {
  const auto& elements = document.playlist.audioVideoTrack.elements;
  // The shortest failing prefix lies in (passing, failing].
  std::size_t passing = 0;
  std::size_t failing = elements.size();
  while (failing - passing > 1) {
    const std::size_t middle = passing + (failing - passing) / 2;
    (RefusalOfTrackPrefix(document, mode, middle) ? failing : passing) = middle;
  }
  RefusalPlace place;
  place.source = RefusalPlace::Source::Element;
  place.element = failing - 1;
  place.itemNumber = elements[place.element].itemNumber;
  place.clip = elements[place.element].umId.GetUmId();
  return place;
}

}  // namespace

std::optional<RefusalPlace> LocateRefusal(const PlaylistDocument& document,
                                          TimelineConverter::DurationMode mode) {
  auto message =
      RefusalOf([&] { TimelineConverter::ToTimeline(document.playlist, mode, document.assets); });
  if (!message) {
    return std::nullopt;
  }
  std::optional<RefusalPlace> place = FailingAsset(document, *message);
  if (!place) {
    const auto track =
        RefusalOfTrackPrefix(document, mode, document.playlist.audioVideoTrack.elements.size());
    if (track == message) {
      place = FailingElement(document, mode);
    } else {
      place = RefusalPlace();
      const auto& aux = document.playlist.auxTrackUmId;
      // The parts before it pass, so what is left is the aux clip.
      if (!track && aux != Kov::Replivo::Data::Clips::UmId::Empty()) {
        place->auxTrack = true;
        place->clip = aux.GetUmId();
      }
    }
  }
  place->message = std::move(*message);
  return place;
}

std::string DescribePlace(const RefusalPlace& place) {
  switch (place.source) {
    case RefusalPlace::Source::Element:
      return "at element " + std::to_string(place.element) + " (item " +
             std::to_string(place.itemNumber) + ", clip " + place.clip + ")";
    case RefusalPlace::Source::Asset:
      return "in asset " + place.asset +
             (place.clip.empty() ? std::string() : " (clip " + place.clip + ")");
    case RefusalPlace::Source::Playlist:
      break;
  }
  return place.auxTrack ? "in the aux track (clip " + place.clip + ")" : std::string();
}

}  // namespace TimelineConvert
