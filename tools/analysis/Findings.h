// Findings: every judgement the tool makes about a document and its timeline,
// made once. The library accepts some playlists whose timeline is plainly not
// what anyone meant (a negative speed, a transition kind that gives nothing, a
// 0-frame aux item...), and an export may be unable to hold what the engine
// plays. `check` prints these findings, the picture draws them and the exports
// refuse from them, so all outputs name the same things at the same places.
//
// A long sequence can hold a finding on nearly every element, several times
// over, so a finding is held as positions and values only (56 bytes, no
// heap): its place, message and numbers are put in words from the document
// when an output shows it. A new kind of finding is its row in the table of
// kinds in Findings.cpp (word, severity, the function that words it) and the
// few lines that find it, in the file of its subject (FindingList.h lists
// them).
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "analysis/Outcome.h"
#include "document/DocumentPlace.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// What a finding means for the outputs: whether one can still be made.
enum class Severity : std::uint8_t { Refusal, BlocksOtio, BlocksEdl, Warning, Note };

// "refusal", "blocks-otio", "blocks-edl", "warning", "note".
const char* SeverityWord(Severity severity);

// Every kind of finding, in the order of the table of kinds.
enum class FindingKind : std::uint8_t {
  Refused,
  TransitionTooLongBeforeCut,
  TransitionTooLongAfterCut,
  AbsoluteBoundary,
  UnknownBoundaryKind,
  AssetNotFound,
  AssetUnusable,
  PlaylistRate,
  NegativeSpeed,
  IgnoredSpeed,
  MissingAsset,
  UnusedAsset,
  Overlap,
  OutsideMaterial,
  NoTransition,
  ZeroLengthPart,
  EmptyAuxItem,
  AvDrift,
  SpeedZeroDenominator,
  SpeedOutOfRange,
  PlaysNothing,
  NegativeTransitionDuration,
  TransitionOutsideMaterial,
  ReversedRecordedRange,
  EmptyRecordedRange,
  OverlappingRecordedRanges,
  NegativePlaylistDuration,
  // What the exports cannot hold.
  NegativeDuration,
  TransitionNegativeLength,
  TransitionIntoEmptyPart,
  TransitionOverlapsPastItem,
  NotInPictureEdl,
  NotInSoundEdl,
  NotInAuxEdl,
};

constexpr std::size_t kFindingKindCount = static_cast<std::size_t>(FindingKind::NotInAuxEdl) + 1;

// The stable word of a kind, such as "negative-speed".
const char* KindWord(FindingKind kind);

// What a finding is pinned to. Spelled: a rare finding held in words whole
// (the refusal, the aux item, an item the document does not name).
enum class FindingSubject : std::uint8_t { Element, Asset, AuxTrack, Playlist, Spelled };

// The names of the numbers a finding quotes, ending in nullptr.
using NumberNames = const char* const*;

struct Finding {
  FindingKind kind = FindingKind::Refused;
  Severity severity = Severity::Warning;
  FindingSubject subject = FindingSubject::Playlist;
  // Which of its kind's wordings: a side, a boundary; each kind says.
  std::uint8_t variant = 0;
  // The element index or asset position (Spelled: the position in the spelled findings).
  std::uint32_t index = 0;
  // The pointer below the element or asset ("/speed"); for the playlist the
  // whole pointer. Always a static text.
  const char* field = "";
  NumberNames names = nullptr;
  // The numbers it quotes, in the order of `names`, then what its wording needs.
  std::int64_t values[4] = {};
};

// A finding in words, as every output shows it.
struct FindingWords {
  std::string kind;
  Severity severity = Severity::Warning;
  DocumentPlace place;
  std::string message;
  Numbers numbers;
};

// What an operator accepts: picture and sound up to `maxDrift` frames apart,
// speeds from 1/`speedLimit` to `speedLimit`.
struct FindingOptions {
  std::int64_t maxDrift = 0;
  std::int64_t speedLimit = 64;
};

// What a finding's words are made from.
struct FindingSource {
  const PlaylistDocument& document;
  const Kov::TimelineEngineModel::Timeline& timeline;
};

// The findings of one document and its outcome, in the order they were found,
// with what it takes to put each in words; both must outlive it.
class Findings {
 public:
  Findings() = default;
  Findings(const PlaylistDocument& document, const Outcome& outcome)
      : document_(&document), timeline_(&outcome.timeline) {}

  using const_iterator = std::deque<Finding>::const_iterator;
  const_iterator begin() const { return list_.begin(); }
  const_iterator end() const { return list_.end(); }
  std::size_t size() const { return list_.size(); }
  bool empty() const { return list_.empty(); }

  void Add(const Finding& finding) {
    Count(finding);
    list_.push_back(finding);
  }
  void Add(FindingKind kind, FindingWords words);

  // How many were found, of a kind, of a severity: all of them, also after
  // KeepFirstOfEachKind.
  std::size_t CountAll() const;
  std::size_t CountOf(FindingKind kind) const {
    return kindCounts_[static_cast<std::size_t>(kind)];
  }
  std::size_t CountOf(Severity severity) const {
    return severityCounts_[static_cast<std::size_t>(severity)];
  }

  // Keeps only the first `perKind` findings of each kind, in their order, for
  // an output that shows no more than that of a kind and counts the rest: a
  // long sequence's million findings need not be held while it is written.
  void KeepFirstOfEachKind(std::size_t perKind);

  FindingSource Source() const { return {*document_, *timeline_}; }

  // The place, the message and the numbers of a finding.
  DocumentPlace Place(const Finding& finding) const;
  void AppendMessage(std::string& out, const Finding& finding) const;
  std::string Message(const Finding& finding) const;
  Numbers NumbersOf(const Finding& finding) const;
  FindingWords Words(const Finding& finding) const;

 private:
  void Count(const Finding& finding) {
    ++kindCounts_[static_cast<std::size_t>(finding.kind)];
    ++severityCounts_[static_cast<std::size_t>(finding.severity)];
  }

  const PlaylistDocument* document_ = nullptr;
  const Kov::TimelineEngineModel::Timeline* timeline_ = nullptr;
  std::deque<Finding> list_;
  std::vector<FindingWords> spelled_;
  std::size_t kindCounts_[kFindingKindCount] = {};
  std::size_t severityCounts_[static_cast<std::size_t>(Severity::Note) + 1] = {};
};

// The kind of a word; false for a word the table does not know.
bool KindOfWord(const std::string& word, FindingKind& kind);

// The severity of a kind.
Severity SeverityOf(FindingKind kind);

// The stable words of every kind, in the order of the table.
std::vector<std::string> FindingKinds();

// Every finding of the document and its outcome, in a fixed order: those of
// the document alone (kept when the conversion is refused), then those of the
// timeline (only when it converts), then the refusal itself.
Findings FindFindings(const PlaylistDocument& document, const Outcome& outcome,
                      const FindingOptions& options = {});

// The reason the aux item lasts 0 frames, as the picture shows it ("plays 0
// frames: ..."); empty when the findings hold no such item.
std::string AuxItemReason(const Findings& findings);

}  // namespace TimelineConvert
