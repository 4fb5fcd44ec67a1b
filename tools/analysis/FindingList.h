// FindingList: what the files that find findings share. `FindingList` adds a
// finding at its place (an element, an asset, the aux track or the playlist),
// taking its severity from the table of kinds in Findings.cpp; each Check...
// function below looks at one subject and lives in the file of that subject:
// DocumentFindings.cpp (what the document says on its own), TrackFindings.cpp
// (the timeline's track, item by item) and AssetFindings.cpp (the assets and
// the aux item).
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "analysis/Findings.h"

namespace TimelineConvert {

class FindingList {
 public:
  explicit FindingList(const PlaylistDocument& document) : document_(document) {}

  const PlaylistDocument& Document() const { return document_; }

  // `field` is a pointer below the element ("/speed"), or empty.
  void AtElement(std::size_t index, const char* kind, std::string message, Numbers numbers = {},
                 const std::string& field = "") {
    Add(kind, DocumentPlace::Element(document_, index, field), std::move(message),
        std::move(numbers));
  }

  // `field` is a pointer below the asset ("/timeBounds"), or empty.
  void InAsset(std::size_t position, const char* kind, std::string message, Numbers numbers = {},
               const std::string& field = "") {
    auto place = DocumentPlace::Asset(document_.assetOrder[position], position);
    place.pointer += field;
    Add(kind, std::move(place), std::move(message), std::move(numbers));
  }

  // A value of the playlist itself, such as "/playlist/durationInFields".
  void AtPlaylist(const char* kind, std::string message, Numbers numbers,
                  const std::string& pointer) {
    DocumentPlace place;
    place.pointer = pointer;
    Add(kind, std::move(place), std::move(message), std::move(numbers));
  }

  void InAuxTrack(const char* kind, std::string message, Numbers numbers) {
    Add(kind, DocumentPlace::AuxTrack(document_), std::move(message), std::move(numbers));
  }

  void Add(const char* kind, DocumentPlace place, std::string message, Numbers numbers) {
    findings_.push_back(
        Finding{kind, SeverityOf(kind), std::move(place), std::move(message), std::move(numbers)});
  }

  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  const PlaylistDocument& document_;
  std::vector<Finding> findings_;
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

void CheckSpeeds(FindingList& findings, const FindingOptions& options);
void CheckAssetUse(FindingList& findings);
void CheckTransitionFields(FindingList& findings);
void CheckPlaylistFields(FindingList& findings);
void CheckRecordedRanges(FindingList& findings);
void CheckTrack(FindingList& findings, const Kov::TimelineEngineModel::Timeline& timeline,
                const FindingOptions& options);
void CheckAuxItem(FindingList& findings, const Kov::TimelineEngineModel::Timeline& timeline);

}  // namespace TimelineConvert
