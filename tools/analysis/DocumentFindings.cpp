// Findings of the document alone: what its elements and assets say before
// anything is converted, so they are reported for a refused playlist too.
#include <cstdlib>
#include <unordered_set>

#include "analysis/FindingList.h"

namespace TimelineConvert {

namespace {

namespace Data = Kov::Replivo::Data;
using Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter;

constexpr const char* kSpeedNumbers[] = {"numerator", "denominator", nullptr};

// Whether a speed (denominator not 0) is faster than `limit` or slower than 1/`limit`.
bool OutsideLimit(const Data::Channels::Speed& speed, std::int64_t limit) {
  const std::int64_t numerator = std::llabs(speed.numerator);
  const std::int64_t denominator = std::llabs(speed.denominator);
  return SaturatingProduct(denominator, limit) < numerator ||
         SaturatingProduct(numerator, limit) < denominator;
}

}  // namespace

// values: the speed's numerator and denominator, then the accepted limit.
void CheckSpeeds(FindingList& findings, const FindingOptions& options) {
  const auto& document = findings.Document();
  const auto& elements = document.playlist.audioVideoTrack.elements;
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& speed = elements[index].speed;
    FindingKind kind = FindingKind::NegativeSpeed;
    if (speed.numerator != 0 && speed.denominator != 0 &&
        (speed.numerator < 0) != (speed.denominator < 0)) {
      kind = FindingKind::NegativeSpeed;
    } else if (speed.numerator == 0 && speed != Data::Channels::Speed::Empty()) {
      kind = FindingKind::IgnoredSpeed;
    } else if (speed.denominator == 0 && speed.numerator != 0) {
      kind = FindingKind::SpeedZeroDenominator;
    } else if (speed.numerator != 0 && OutsideLimit(speed, options.speedLimit)) {
      kind = FindingKind::SpeedOutOfRange;
    } else {
      continue;
    }
    findings.AtElement(index, kind, kSpeedNumbers,
                       {speed.numerator, speed.denominator, options.speedLimit}, "/speed");
  }
}

void SpeedMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += "speed " + std::to_string(finding.values[0]) + "/" + std::to_string(finding.values[1]);
  switch (finding.kind) {
    case FindingKind::NegativeSpeed:
      out += " is negative: the item's timeline length comes out negative";
      break;
    case FindingKind::IgnoredSpeed:
      out += " has numerator 0 and is ignored: the speed of the element before it goes on";
      break;
    case FindingKind::SpeedZeroDenominator:
      out += " has denominator 0: the item plays its media in 0 frames";
      break;
    default:
      out += " lies outside 1/" + std::to_string(finding.values[2]) + " to " +
             std::to_string(finding.values[2]);
      break;
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
    // Each asset once at most: few enough to be held in words.
    const std::string message = "uses the asset " + key + ", which the document does not give";
    if (hasAux && position == 0) {
      findings.Spelled(FindingKind::MissingAsset, DocumentPlace::AuxTrack(document), message, {});
    } else {
      findings.Spelled(FindingKind::MissingAsset,
                       DocumentPlace::Element(document, position - (hasAux ? 1 : 0)), message, {});
    }
  }
  for (std::size_t position = 0; position < document.assetOrder.size(); ++position) {
    if (usedKeys.count(document.assetOrder[position].key.Text()) == 0) {
      findings.InAsset(position, FindingKind::UnusedAsset, nullptr, {});
    }
  }
}

void UnusedAssetMessage(std::string& out, const Finding&, const FindingSource&) {
  out += "no element and not the aux track uses this asset";
}

// A transition whose duration field is negative: the engine takes it and
// lays the items out backwards around the cut. Variant: 0 video, 1 audio.
constexpr const char* kTransitionSides[] = {"video", "audio"};
constexpr const char* kDurationNumbers[] = {"durationFields", nullptr};

void CheckTransitionFields(FindingList& findings) {
  const auto& elements = findings.Document().playlist.audioVideoTrack.elements;
  for (std::size_t index = 1; index < elements.size(); ++index) {
    const auto& element = elements[index];
    const std::int32_t sides[][2] = {
        {element.transitionType, element.videoTransitionDuration},
        {element.audioTransitionType, element.audioTransitionDuration}};
    for (std::uint8_t side = 0; side < 2; ++side) {
      if (sides[side][0] != 0 && sides[side][1] < 0) {
        findings.AtElement(
            index, FindingKind::NegativeTransitionDuration, kDurationNumbers, {sides[side][1]},
            side == 0 ? "/videoTransitionDuration" : "/audioTransitionDuration", side);
      }
    }
  }
}

void NegativeTransitionDurationMessage(std::string& out, const Finding& finding,
                                       const FindingSource&) {
  out += std::string(kTransitionSides[finding.variant]) + " transition duration " +
         std::to_string(finding.values[0]) + " fields is negative";
}

// A playlist duration below 0: --duration-mode playlist gives a timeline
// that ends before it starts.
void CheckPlaylistFields(FindingList& findings) {
  const std::int64_t fields = findings.Document().playlist.durationInFields;
  if (fields < 0) {
    DocumentPlace place;
    place.pointer = "/playlist/durationInFields";
    findings.Spelled(FindingKind::NegativePlaylistDuration, std::move(place),
                     "the playlist's duration of " + std::to_string(fields) +
                         " fields is negative: with --duration-mode playlist the timeline "
                         "ends before it starts",
                     {{"durationInFields", fields}});
  }
}

}  // namespace TimelineConvert
