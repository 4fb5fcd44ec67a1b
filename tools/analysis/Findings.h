// Findings: every judgement the tool makes about a document and its timeline,
// made once. The library accepts some playlists whose timeline is plainly not
// what anyone meant (a negative speed, a transition kind that gives nothing, a
// 0-frame aux item...), and an export may be unable to hold what the engine
// plays. `check` prints these findings, the picture draws them and the exports
// refuse from them, so all outputs name the same things at the same places.
//
// A new kind of finding is its row in the table of kinds in Findings.cpp (word
// and severity) and the few lines that find it, in the file of its subject
// (FindingList.h lists them).
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "analysis/Outcome.h"
#include "document/DocumentPlace.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// What a finding means for the outputs: whether one can still be made.
enum class Severity { Refusal, BlocksOtio, BlocksEdl, Warning, Note };

// "refusal", "blocks-otio", "blocks-edl", "warning", "note".
const char* SeverityWord(Severity severity);

struct Finding {
  std::string kind;  // a stable word, such as "negative-speed"
  Severity severity = Severity::Warning;
  DocumentPlace place;
  std::string message;
  Numbers numbers;
};

// The severity of a kind (Warning for a word the table does not know).
Severity SeverityOf(const std::string& kind);

// What an operator accepts: picture and sound up to `maxDrift` frames apart,
// speeds from 1/`speedLimit` to `speedLimit`.
struct FindingOptions {
  std::int64_t maxDrift = 0;
  std::int64_t speedLimit = 64;
};

// The stable words of every kind, in the order of the table.
std::vector<std::string> FindingKinds();

// Every finding of the document and its outcome, in a fixed order: those of
// the document alone (kept when the conversion is refused), then those of the
// timeline (only when it converts), then the refusal itself.
std::vector<Finding> FindFindings(const PlaylistDocument& document, const Outcome& outcome,
                                  const FindingOptions& options = {});

// The reason the aux item lasts 0 frames, as the picture shows it ("plays 0
// frames: ..."); empty when the findings hold no such item.
std::string AuxItemReason(const std::vector<Finding>& findings);

}  // namespace TimelineConvert
