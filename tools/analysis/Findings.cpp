// The findings of a document. Everything here reads what the library produced
// (items, media infos, the aux item) or calls its public functions; the only
// rules stated here are what looks wrong to an operator and what the exports
// cannot hold. The checks run in one pass over the elements and one over the
// items, so that they stay linear in the size of the playlist.
#include "analysis/Findings.h"

#include "analysis/ExportFindings.h"
#include "analysis/FindingList.h"

namespace TimelineConvert {

namespace {

struct KindRow {
  const char* kind;
  Severity severity;
};

// Every kind of finding the tool knows, with what it means for the outputs.
constexpr KindRow kKinds[] = {
    {"refused", Severity::Refusal},
    {"transition-too-long-before-cut", Severity::Refusal},
    {"transition-too-long-after-cut", Severity::Refusal},
    {"absolute-boundary", Severity::Refusal},
    {"unknown-boundary-kind", Severity::Refusal},
    {"asset-not-found", Severity::Refusal},
    {"asset-unusable", Severity::Refusal},
    {"playlist-rate", Severity::Refusal},
    {"negative-speed", Severity::Warning},
    {"ignored-speed", Severity::Warning},
    {"missing-asset", Severity::Warning},
    {"unused-asset", Severity::Warning},
    {"overlap", Severity::Warning},
    {"outside-material", Severity::Warning},
    {"no-transition", Severity::Warning},
    {"zero-length-part", Severity::Warning},
    {"empty-aux-item", Severity::Warning},
    {"av-drift", Severity::Warning},
    {"speed-zero-denominator", Severity::Warning},
    {"speed-out-of-range", Severity::Warning},
    {"plays-nothing", Severity::Warning},
    {"negative-transition-duration", Severity::Warning},
    {"transition-outside-material", Severity::Warning},
    {"reversed-recorded-range", Severity::Warning},
    {"empty-recorded-range", Severity::Warning},
    {"overlapping-recorded-ranges", Severity::Warning},
    {"negative-playlist-duration", Severity::Warning},
};

}  // namespace

const char* SeverityWord(Severity severity) {
  switch (severity) {
    case Severity::Refusal:
      return "refusal";
    case Severity::BlocksOtio:
      return "blocks-otio";
    case Severity::BlocksEdl:
      return "blocks-edl";
    case Severity::Warning:
      break;
    case Severity::Note:
      return "note";
  }
  return "warning";
}

std::vector<std::string> FindingKinds() {
  std::vector<std::string> kinds;
  for (const auto& row : kKinds) {
    kinds.emplace_back(row.kind);
  }
  // The exports' kinds are findings like any other: --only and --ignore take them.
  for (auto& kind : ExportFindingKinds()) {
    kinds.push_back(std::move(kind));
  }
  return kinds;
}

Severity SeverityOf(const std::string& kind) {
  for (const auto& row : kKinds) {
    if (kind == row.kind) {
      return row.severity;
    }
  }
  return ExportSeverityOf(kind);
}

std::vector<Finding> FindFindings(const PlaylistDocument& document, const Outcome& outcome,
                                  const FindingOptions& options) {
  FindingList findings(document);
  CheckSpeeds(findings, options);
  CheckTransitionFields(findings);
  CheckPlaylistFields(findings);
  CheckAssetUse(findings);
  CheckRecordedRanges(findings);
  if (!outcome.refusal) {
    CheckTrack(findings, outcome.timeline, options);
    CheckAuxItem(findings, outcome.timeline);
  }
  auto list = findings.Take();
  AddExportFindings(document, outcome, list);
  if (outcome.refusal && outcome.refusal->explanation) {
    const auto& explanation = *outcome.refusal->explanation;
    list.push_back(Finding{explanation.kind, Severity::Refusal, explanation.place,
                           outcome.refusal->message + " " + explanation.text, explanation.numbers});
  } else if (outcome.refusal) {
    list.push_back(Finding{
        "refused", Severity::Refusal, outcome.refusal->place, outcome.refusal->message, {}});
  }
  return list;
}

std::string AuxItemReason(const std::vector<Finding>& findings) {
  for (const auto& finding : findings) {
    if (finding.kind == "empty-aux-item") {
      return "plays 0 frames: " + finding.message.substr(std::string(kAuxItemEmpty).size());
    }
  }
  return "";
}

}  // namespace TimelineConvert
