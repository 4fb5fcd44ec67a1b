// Findings of the document alone: what its elements and assets say before
// anything is converted, so they are reported for a refused playlist too.
#include <cstdlib>
#include <unordered_set>

#include "analysis/FindingList.h"

namespace TimelineConvert {

namespace {

namespace Data = Kov::Replivo::Data;
using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

std::string SpeedText(const Data::Channels::Speed& speed) {
  return std::to_string(speed.numerator) + "/" + std::to_string(speed.denominator);
}

Numbers SpeedNumbers(const Data::Channels::Speed& speed) {
  return {{"numerator", speed.numerator}, {"denominator", speed.denominator}};
}

// Whether a speed (denominator not 0) is faster than `limit` or slower than 1/`limit`.
bool OutsideLimit(const Data::Channels::Speed& speed, std::int64_t limit) {
  const std::int64_t numerator = std::llabs(speed.numerator);
  const std::int64_t denominator = std::llabs(speed.denominator);
  return SaturatingProduct(denominator, limit) < numerator ||
         SaturatingProduct(numerator, limit) < denominator;
}

}  // namespace

void CheckSpeeds(FindingList& findings, const FindingOptions& options) {
  const auto& document = findings.Document();
  const auto& elements = document.playlist.audioVideoTrack.elements;
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& speed = elements[index].speed;
    if (speed.numerator != 0 && speed.denominator != 0 &&
        (speed.numerator < 0) != (speed.denominator < 0)) {
      findings.AtElement(index, "negative-speed",
                         "speed " + SpeedText(speed) +
                             " is negative: the item's timeline length comes out negative",
                         SpeedNumbers(speed), "/speed");
    } else if (speed.numerator == 0 && speed != Data::Channels::Speed::Empty()) {
      findings.AtElement(index, "ignored-speed",
                         "speed " + SpeedText(speed) +
                             " has numerator 0 and is ignored: the speed of the element before "
                             "it goes on",
                         SpeedNumbers(speed), "/speed");
    } else if (speed.denominator == 0 && speed.numerator != 0) {
      findings.AtElement(
          index, "speed-zero-denominator",
          "speed " + SpeedText(speed) + " has denominator 0: the item plays its media in 0 frames",
          SpeedNumbers(speed), "/speed");
    } else if (speed.numerator != 0 && OutsideLimit(speed, options.speedLimit)) {
      findings.AtElement(index, "speed-out-of-range",
                         "speed " + SpeedText(speed) + " lies outside 1/" +
                             std::to_string(options.speedLimit) + " to " +
                             std::to_string(options.speedLimit),
                         SpeedNumbers(speed), "/speed");
    }
  }
}

// Assets nobody uses, and used assets the document lacks (each reported once,
// where it is first used).
void CheckAssetUse(FindingList& findings) {
  const auto& document = findings.Document();
  const auto used = TimelineConverter::ListAssetsFromPlaylist(document.playlist);
  std::unordered_set<std::string> usedKeys;
  const bool hasAux = document.playlist.auxTrackUmId != Data::Clips::UmId::Empty();
  for (std::size_t position = 0; position < used.size(); ++position) {
    const std::string& key = used[position].Text();
    if (!usedKeys.insert(key).second || document.assets->count(used[position]) != 0) {
      continue;
    }
    const std::string message = "uses the asset " + key + ", which the document does not give";
    if (hasAux && position == 0) {
      findings.InAuxTrack("missing-asset", message, {});
    } else {
      findings.AtElement(position - (hasAux ? 1 : 0), "missing-asset", message);
    }
  }
  for (std::size_t position = 0; position < document.assetOrder.size(); ++position) {
    if (usedKeys.count(document.assetOrder[position].key.Text()) == 0) {
      findings.InAsset(position, "unused-asset",
                       "no element and not the aux track uses this asset");
    }
  }
}

// A transition whose duration field is negative: the engine takes it and
// lays the items out backwards around the cut.
void CheckTransitionFields(FindingList& findings) {
  const auto& elements = findings.Document().playlist.audioVideoTrack.elements;
  for (std::size_t index = 1; index < elements.size(); ++index) {
    const auto& element = elements[index];
    const std::pair<const char*, std::pair<std::int32_t, std::int32_t>> sides[] = {
        {"video", {element.transitionType, element.videoTransitionDuration}},
        {"audio", {element.audioTransitionType, element.audioTransitionDuration}}};
    for (const auto& [side, field] : sides) {
      if (field.first != 0 && field.second < 0) {
        findings.AtElement(index, "negative-transition-duration",
                           std::string(side) + " transition duration " +
                               std::to_string(field.second) + " fields is negative",
                           {{"durationFields", field.second}},
                           std::string("/") + side + "TransitionDuration");
      }
    }
  }
}

// A playlist duration below 0: --duration-mode playlist gives a timeline
// that ends before it starts.
void CheckPlaylistFields(FindingList& findings) {
  const std::int64_t fields = findings.Document().playlist.durationInFields;
  if (fields < 0) {
    findings.AtPlaylist("negative-playlist-duration",
                        "the playlist's duration of " + std::to_string(fields) +
                            " fields is negative: with --duration-mode playlist the timeline "
                            "ends before it starts",
                        {{"durationInFields", fields}}, "/playlist/durationInFields");
  }
}

}  // namespace TimelineConvert
