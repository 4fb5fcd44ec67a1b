// The findings of a document. Everything here reads what the library produced
// (items, media infos, the aux item) or calls its public functions; the only
// rules stated here are what looks wrong to an operator and what the exports
// cannot hold. The checks run in one pass over the elements and one over the
// items, so that they stay linear in the size of the playlist.
#include "analysis/Findings.h"

#if defined(__GLIBC__)
#include <malloc.h>
#endif

#include "analysis/ExportFindings.h"
#include "analysis/FindingList.h"

namespace TimelineConvert {

namespace {

struct KindRow {
  const char* kind;
  Severity severity;
  // Null for the kinds that are always held in words whole.
  MessageWriter message;
};

// Every kind of finding the tool knows, in the order of FindingKind, with what
// it means for the outputs and how it is put in words.
constexpr KindRow kKinds[] = {
    {"refused", Severity::Refusal, nullptr},
    {"transition-too-long-before-cut", Severity::Refusal, nullptr},
    {"transition-too-long-after-cut", Severity::Refusal, nullptr},
    {"absolute-boundary", Severity::Refusal, nullptr},
    {"unknown-boundary-kind", Severity::Refusal, nullptr},
    {"asset-not-found", Severity::Refusal, nullptr},
    {"asset-unusable", Severity::Refusal, nullptr},
    {"playlist-rate", Severity::Refusal, nullptr},
    {"negative-speed", Severity::Warning, SpeedMessage},
    {"ignored-speed", Severity::Warning, SpeedMessage},
    {"missing-asset", Severity::Warning, nullptr},
    {"unused-asset", Severity::Warning, UnusedAssetMessage},
    {"overlap", Severity::Warning, OverlapMessage},
    {"outside-material", Severity::Warning, OutsideMaterialMessage},
    {"no-transition", Severity::Warning, NoTransitionMessage},
    {"zero-length-part", Severity::Warning, ZeroLengthMessage},
    {"empty-aux-item", Severity::Warning, nullptr},
    {"av-drift", Severity::Warning, AvDriftMessage},
    {"speed-zero-denominator", Severity::Warning, SpeedMessage},
    {"speed-out-of-range", Severity::Warning, SpeedMessage},
    {"plays-nothing", Severity::Warning, ZeroLengthMessage},
    {"negative-transition-duration", Severity::Warning, NegativeTransitionDurationMessage},
    {"transition-outside-material", Severity::Warning, TransitionOutsideMaterialMessage},
    {"reversed-recorded-range", Severity::Warning, RecordedRangeMessage},
    {"empty-recorded-range", Severity::Warning, RecordedRangeMessage},
    {"overlapping-recorded-ranges", Severity::Warning, RecordedRangeMessage},
    {"negative-playlist-duration", Severity::Warning, nullptr},
    {"negative-duration", Severity::BlocksOtio, NegativeDurationMessage},
    {"transition-negative-length", Severity::BlocksOtio, TransitionNegativeLengthMessage},
    {"transition-into-empty-part", Severity::BlocksOtio, TransitionIntoEmptyPartMessage},
    {"transition-overlaps-past-item", Severity::BlocksOtio, TransitionOverlapsPastItemMessage},
    {"not-in-picture-edl", Severity::BlocksEdl, EdlBlockMessage},
    {"not-in-sound-edl", Severity::BlocksEdl, EdlBlockMessage},
    {"not-in-aux-edl", Severity::BlocksEdl, EdlBlockMessage},
};
static_assert(sizeof kKinds / sizeof kKinds[0] == kFindingKindCount, "a row for every kind");
static_assert(sizeof(Finding) <= 56, "a finding stays small: a long sequence holds millions");

const KindRow& RowOf(FindingKind kind) {
  return kKinds[static_cast<std::size_t>(kind)];
}

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

const char* KindWord(FindingKind kind) {
  return RowOf(kind).kind;
}

Severity SeverityOf(FindingKind kind) {
  return RowOf(kind).severity;
}

bool KindOfWord(const std::string& word, FindingKind& kind) {
  for (std::size_t index = 0; index < sizeof kKinds / sizeof kKinds[0]; ++index) {
    if (word == kKinds[index].kind) {
      kind = static_cast<FindingKind>(index);
      return true;
    }
  }
  return false;
}

std::vector<std::string> FindingKinds() {
  // The exports' kinds are findings like any other: --only and --ignore take them.
  std::vector<std::string> kinds;
  for (const auto& row : kKinds) {
    kinds.emplace_back(row.kind);
  }
  return kinds;
}

void Findings::Add(FindingKind kind, FindingWords words) {
  Finding finding;
  finding.kind = kind;
  finding.severity = words.severity;
  finding.subject = FindingSubject::Spelled;
  finding.index = static_cast<std::uint32_t>(spelled_.size());
  spelled_.push_back(std::move(words));
  Add(finding);
}

std::size_t Findings::CountAll() const {
  std::size_t count = 0;
  for (const std::size_t ofKind : kindCounts_) {
    count += ofKind;
  }
  return count;
}

void Findings::KeepFirstOfEachKind(std::size_t perKind) {
  {
    std::size_t keptOfKind[kFindingKindCount] = {};
    std::deque<Finding> kept;
    for (const auto& finding : list_) {
      if (++keptOfKind[static_cast<std::size_t>(finding.kind)] <= perKind) {
        kept.push_back(finding);
      }
    }
    // A cleared deque may keep its blocks; the swapped one gives them back here.
    list_.swap(kept);
  }
  // The blocks lie among what is still held, where the allocator would keep
  // them from the system; the text written next is allocated apart and would
  // add to them.
#if defined(__GLIBC__)
  malloc_trim(0);
#endif
}

DocumentPlace Findings::Place(const Finding& finding) const {
  switch (finding.subject) {
    case FindingSubject::Element:
      return DocumentPlace::Element(*document_, finding.index, finding.field);
    case FindingSubject::Asset: {
      auto place = DocumentPlace::Asset(document_->assetOrder[finding.index], finding.index);
      place.pointer += finding.field;
      return place;
    }
    case FindingSubject::AuxTrack:
      return DocumentPlace::AuxTrack(*document_);
    case FindingSubject::Spelled:
      return spelled_[finding.index].place;
    case FindingSubject::Playlist:
      break;
  }
  DocumentPlace place;
  place.pointer = finding.field;
  return place;
}

void Findings::AppendMessage(std::string& out, const Finding& finding) const {
  if (finding.subject == FindingSubject::Spelled) {
    out += spelled_[finding.index].message;
    return;
  }
  RowOf(finding.kind).message(out, finding, Source());
}

std::string Findings::Message(const Finding& finding) const {
  std::string message;
  AppendMessage(message, finding);
  return message;
}

Numbers Findings::NumbersOf(const Finding& finding) const {
  if (finding.subject == FindingSubject::Spelled) {
    return spelled_[finding.index].numbers;
  }
  Numbers numbers;
  for (std::size_t at = 0; finding.names != nullptr && finding.names[at] != nullptr; ++at) {
    numbers.emplace_back(finding.names[at], finding.values[at]);
  }
  return numbers;
}

FindingWords Findings::Words(const Finding& finding) const {
  return FindingWords{KindWord(finding.kind), finding.severity, Place(finding), Message(finding),
                      NumbersOf(finding)};
}

Findings FindFindings(const PlaylistDocument& document, const Outcome& outcome,
                      const FindingOptions& options) {
  Findings found(document, outcome);
  FindingList findings(found, document);
  CheckSpeeds(findings, options);
  CheckTransitionFields(findings);
  CheckPlaylistFields(findings);
  CheckAssetUse(findings);
  CheckRecordedRanges(findings);
  if (!outcome.refusal) {
    CheckTrack(findings, outcome.timeline, options);
    CheckAuxItem(findings, outcome.timeline);
  }
  AddExportFindings(document, outcome, findings);
  if (outcome.refusal && outcome.refusal->explanation) {
    const auto& explanation = *outcome.refusal->explanation;
    FindingKind kind = FindingKind::Refused;
    KindOfWord(explanation.kind, kind);
    found.Add(kind,
              FindingWords{explanation.kind, Severity::Refusal, explanation.place,
                           outcome.refusal->message + " " + explanation.text, explanation.numbers});
  } else if (outcome.refusal) {
    found.Add(
        FindingKind::Refused,
        FindingWords{
            "refused", Severity::Refusal, outcome.refusal->place, outcome.refusal->message, {}});
  }
  return found;
}

std::string AuxItemReason(const Findings& findings) {
  for (const auto& finding : findings) {
    if (finding.kind == FindingKind::EmptyAuxItem) {
      return "plays 0 frames: " +
             findings.Message(finding).substr(std::string(kAuxItemEmpty).size());
    }
  }
  return "";
}

}  // namespace TimelineConvert
