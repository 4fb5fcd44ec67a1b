// FindingList: what the files that find findings share. `FindingList` adds a
// finding at its place (an element, an asset, the aux track or the playlist),
// taking its severity from the table of kinds in Findings.cpp; each Check...
// function below looks at one subject and lives in the file of that subject:
// DocumentFindings.cpp (what the document says on its own), TrackFindings.cpp
// (the timeline's track, item by item) and AssetFindings.cpp (the assets and
// the aux item). Next to each finder is the function that puts its kind in
// words, which the table of kinds names.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "analysis/Findings.h"

namespace TimelineConvert {

class FindingList {
 public:
  FindingList(Findings& findings, const PlaylistDocument& document)
      : findings_(findings), document_(document) {}

  const PlaylistDocument& Document() const { return document_; }

  // `field` is a pointer below the element ("/speed"), or empty.
  void AtElement(std::size_t index, FindingKind kind, NumberNames names,
                 std::initializer_list<std::int64_t> values, const char* field = "",
                 std::uint8_t variant = 0) {
    Add(kind, FindingSubject::Element, index, names, values, field, variant);
  }

  // `field` is a pointer below the asset ("/timeBounds"), or empty.
  void InAsset(std::size_t position, FindingKind kind, NumberNames names,
               std::initializer_list<std::int64_t> values, const char* field = "") {
    Add(kind, FindingSubject::Asset, position, names, values, field, 0);
  }

  void InAuxTrack(FindingKind kind, std::initializer_list<std::int64_t> values,
                  std::uint8_t variant = 0) {
    Add(kind, FindingSubject::AuxTrack, 0, nullptr, values, "", variant);
  }

  // Pinned to nothing the document names.
  void Nowhere(FindingKind kind, std::initializer_list<std::int64_t> values,
               std::uint8_t variant = 0) {
    Add(kind, FindingSubject::Playlist, 0, nullptr, values, "", variant);
  }

  // A finding held in words whole: one of a kind per document at most.
  void Spelled(FindingKind kind, DocumentPlace place, std::string message, Numbers numbers) {
    findings_.Add(kind, FindingWords{KindWord(kind), SeverityOf(kind), std::move(place),
                                     std::move(message), std::move(numbers)});
  }

 private:
  void Add(FindingKind kind, FindingSubject subject, std::size_t index, NumberNames names,
           std::initializer_list<std::int64_t> values, const char* field, std::uint8_t variant) {
    Finding finding;
    finding.kind = kind;
    finding.severity = SeverityOf(kind);
    finding.subject = subject;
    finding.variant = variant;
    // A document of 2^32 elements does not fit in memory to begin with.
    finding.index = static_cast<std::uint32_t>(index);
    finding.field = field;
    finding.names = names;
    std::size_t at = 0;
    for (const std::int64_t value : values) {
      finding.values[at++] = value;
    }
    findings_.Add(finding);
  }

  Findings& findings_;
  const PlaylistDocument& document_;
};

// a + b, held at the int64 limits: the document may hold any 64-bit values.
inline std::int64_t SaturatingSum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) {
    return b > 0 ? std::numeric_limits<std::int64_t>::max()
                 : std::numeric_limits<std::int64_t>::min();
  }
  return sum;
}

// a × b, held at the int64 limits.
inline std::int64_t SaturatingProduct(std::int64_t a, std::int64_t b) {
  std::int64_t product = 0;
  if (__builtin_mul_overflow(a, b, &product)) {
    return (a < 0) != (b < 0) ? std::numeric_limits<std::int64_t>::min()
                              : std::numeric_limits<std::int64_t>::max();
  }
  return product;
}

// The start of the empty aux item's message; the picture shows the rest.
constexpr const char* kAuxItemEmpty = "the aux item lasts 0 frames: ";

// Writes the message of one finding of its kind.
using MessageWriter = void (*)(std::string& out, const Finding& finding,
                               const FindingSource& source);

void CheckSpeeds(FindingList& findings, const FindingOptions& options);
void CheckAssetUse(FindingList& findings);
void CheckTransitionFields(FindingList& findings);
void CheckPlaylistFields(FindingList& findings);
void CheckRecordedRanges(FindingList& findings);
void CheckTrack(FindingList& findings, const Kov::TimelineEngineModel::Timeline& timeline,
                const FindingOptions& options);
void CheckAuxItem(FindingList& findings, const Kov::TimelineEngineModel::Timeline& timeline);

// The wording of each kind, next to the finder of that kind.
void SpeedMessage(std::string& out, const Finding& finding, const FindingSource& source);
void UnusedAssetMessage(std::string& out, const Finding& finding, const FindingSource& source);
void NegativeTransitionDurationMessage(std::string& out, const Finding& finding,
                                       const FindingSource& source);
void OverlapMessage(std::string& out, const Finding& finding, const FindingSource& source);
void OutsideMaterialMessage(std::string& out, const Finding& finding, const FindingSource& source);
void NoTransitionMessage(std::string& out, const Finding& finding, const FindingSource& source);
void ZeroLengthMessage(std::string& out, const Finding& finding, const FindingSource& source);
void TransitionOutsideMaterialMessage(std::string& out, const Finding& finding,
                                      const FindingSource& source);
void AvDriftMessage(std::string& out, const Finding& finding, const FindingSource& source);
void RecordedRangeMessage(std::string& out, const Finding& finding, const FindingSource& source);
void NegativeDurationMessage(std::string& out, const Finding& finding, const FindingSource& source);
void TransitionIntoEmptyPartMessage(std::string& out, const Finding& finding,
                                    const FindingSource& source);
void TransitionOverlapsPastItemMessage(std::string& out, const Finding& finding,
                                       const FindingSource& source);
void TransitionNegativeLengthMessage(std::string& out, const Finding& finding,
                                     const FindingSource& source);
void EdlBlockMessage(std::string& out, const Finding& finding, const FindingSource& source);

}  // namespace TimelineConvert
