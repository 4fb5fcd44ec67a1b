// Locating a refusal. The library's messages name no place, and the tool must
// not second-guess its rules, so the conversion's parts are re-run on their
// own in the order the conversion goes through them: every asset of the map,
// then the audio-video track element by element, then the aux clip; the first
// that fails with the same message is the place. A track prefix that fails
// stays failing when it grows, so the first failing element is found by a
// binary search over the prefix length. This only runs after a refusal.
#include "analysis/Outcome.h"

#include <exception>
#include <new>
#include <utility>

namespace TimelineConvert {

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Sequences = Kov::Replivo::Data::Sequences;
using Conversion::TimelineConverter;

// The library's message for a run, or nothing. Memory running out is no refusal.
template <typename Run>
std::optional<std::string> RefusalOf(Run&& run) {
  try {
    run();
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& refusal) {
    return std::string(refusal.what());
  }
  return std::nullopt;
}

// The playlist with only the first `count` elements and without aux clip.
Sequences::Playlist TrackPrefix(const Sequences::Playlist& playlist, std::size_t count) {
  Sequences::Playlist prefix;
  prefix.serverId = playlist.serverId;
  prefix.number = playlist.number;
  prefix.umId = playlist.umId;
  prefix.durationInFields = playlist.durationInFields;
  prefix.rate = playlist.rate;
  const auto& elements = playlist.audioVideoTrack.elements;
  prefix.audioVideoTrack.elements.assign(elements.begin(),
                                         elements.begin() + static_cast<std::ptrdiff_t>(count));
  return prefix;
}

std::optional<std::string> RefusalOfTrackPrefix(const PlaylistDocument& document, DurationMode mode,
                                                std::size_t count) {
  const auto prefix = TrackPrefix(document.playlist, count);
  return RefusalOf([&] { TimelineConverter::ToTimeline(prefix, mode, document.assets); });
}

std::optional<DocumentPlace> FailingAsset(const PlaylistDocument& document,
                                          const std::string& message) {
  // The map's own order, which is the order the conversion goes through it.
  for (const auto& entry : *document.assets) {
    const auto refusal = RefusalOf(
        [&] { Conversion::MediaInfoConverter::ToMediaInfo(entry.second, document.playlist.rate); });
    if (refusal) {
      if (*refusal != message) {
        return std::nullopt;
      }
      DocumentPlace place;
      place.source = DocumentPlace::Source::Asset;
      place.asset = entry.first.Text();
      for (std::size_t position = 0; position < document.assetOrder.size(); ++position) {
        if (document.assetOrder[position].key == entry.first) {
          place = DocumentPlace::Asset(document.assetOrder[position], position);
        }
      }
      return place;
    }
  }
  return std::nullopt;
}

// Called once the whole track is known to fail with the message.
DocumentPlace FailingElement(const PlaylistDocument& document, DurationMode mode) {
  // The shortest failing prefix lies in (passing, failing].
  std::size_t passing = 0;
  std::size_t failing = document.playlist.audioVideoTrack.elements.size();
  while (failing - passing > 1) {
    const std::size_t middle = passing + (failing - passing) / 2;
    (RefusalOfTrackPrefix(document, mode, middle) ? failing : passing) = middle;
  }
  return DocumentPlace::Element(document, failing - 1);
}

DocumentPlace LocateRefusal(const PlaylistDocument& document, DurationMode mode,
                            const std::string& message) {
  if (auto asset = FailingAsset(document, message)) {
    return *asset;
  }
  const auto track =
      RefusalOfTrackPrefix(document, mode, document.playlist.audioVideoTrack.elements.size());
  if (track == message) {
    return FailingElement(document, mode);
  }
  // The parts before it pass, so what is left is the aux clip.
  if (!track && document.playlist.auxTrackUmId != Kov::Replivo::Data::Clips::UmId::Empty()) {
    return DocumentPlace::AuxTrack(document);
  }
  return DocumentPlace();
}

// What converts before the refused element, then without the aux clip.
Kov::TimelineEngineModel::Timeline TimelineBefore(const PlaylistDocument& document,
                                                  DurationMode mode, const DocumentPlace& place) {
  auto partial = document.playlist;
  if (place.source == DocumentPlace::Source::Element) {
    partial.audioVideoTrack.elements.resize(place.element);
  }
  for (int attempt = 0; attempt < 2; ++attempt) {
    try {
      return TimelineConverter::ToTimeline(partial, mode, document.assets);
    } catch (const std::bad_alloc&) {
      throw;
    } catch (const std::exception&) {
      partial.auxTrackUmId = Kov::Replivo::Data::Clips::UmId::Empty();
    }
  }
  return Kov::TimelineEngineModel::Timeline{};
}

}  // namespace

Outcome ConvertDocument(const PlaylistDocument& document, DurationMode mode) {
  Outcome outcome;
  outcome.mode = mode;
  try {
    outcome.timeline = TimelineConverter::ToTimeline(document.playlist, mode, document.assets);
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    Refusal refusal{error.what(), LocateRefusal(document, mode, error.what())};
    refusal.explanation = ExplainRefusal(document, mode, refusal);
    outcome.timeline = TimelineBefore(document, mode, refusal.place);
    outcome.refusal = std::move(refusal);
  }
  return outcome;
}

}  // namespace TimelineConvert
