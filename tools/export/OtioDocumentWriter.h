// The writer of the OpenTimelineIO document, shared by the three parts of its
// work: OtioExport.cpp writes the timeline and its metadata and holds the entry
// points, OtioPlacement.cpp places clips, gaps and transitions on the tracks
// (refusing what would move them), OtioObjects.cpp writes each object of the
// format as JSON. Only those three include it.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "export/JsonText.h"
#include "export/OtioExport.h"

namespace TimelineConvert {
namespace OtioWriting {

namespace Engine = Kov::TimelineEngineModel;

constexpr const char* kEngineFields = "timeline_engine";
constexpr const char* kMediaKey = "DEFAULT_MEDIA";
constexpr std::int32_t kOverlappingKind = 2;
// The text handed on at a time: large enough that writing costs little.
constexpr std::size_t kBlockSize = 1 << 20;

enum class Side { Picture, Sound };

struct SideTraits {
  const char* name;
  const char* trackKind;
  Engine::TrackItemType transitionType;
};

SideTraits TraitsOf(Side side);

// The four numbers of one side of a media item.
struct Part {
  std::int64_t timelineIn;
  std::int64_t timelineDuration;
  std::int64_t mediaIn;
  std::int64_t mediaDuration;
};

Part PartOf(const Engine::MediaSummaryItem& item, Side side);

// `itemId`: the engine item the reason names, so that a caller can place it.
[[noreturn]] void Refuse(const std::string& reason, const std::string& itemId = "");

// Engine values are whatever a caller put there; sums and products that leave
// the 64-bit range are refused rather than wrapped.
std::int64_t Add(std::int64_t a, std::int64_t b, const std::string& itemId);
std::int64_t Multiply(std::int64_t a, std::int64_t b, const std::string& itemId);

// A speed as a fraction in lowest terms, denominator positive.
struct Fraction {
  std::int64_t numerator = 1;
  std::int64_t denominator = 1;
  std::string Text() const { return std::to_string(numerator) + "/" + std::to_string(denominator); }
};

Fraction Reduced(std::int64_t numerator, std::int64_t denominator);

// numerator/denominator to the nearest whole number, halves up.
std::int64_t RoundedQuotient(std::int64_t numerator, std::int64_t denominator);

struct SideTrackPlan {
  std::size_t index;
  Side side;
  std::int64_t end;  // where its last clip ends
};

class DocumentWriter {
 public:
  DocumentWriter(const Engine::Timeline& timeline, const OtioExportOptions& options,
                 std::vector<OtioNote>* approximations, std::ostream* sink);
  void Document();

 private:
  void Drain(std::size_t atLeast);
  void Time(std::int64_t frames);
  void Range(std::int64_t start, std::int64_t duration);
  void BeginItem(const char* schema);
  void ItemFields(const std::string& name, bool hasRange, std::int64_t start,
                  std::int64_t duration);
  void EndItemFields();
  void Gap(std::int64_t duration);
  // `element`: the item's element by its place in the track.
  void Approximate(const std::string& itemId, std::optional<std::uint32_t> element,
                   std::string text);
  static std::optional<std::int64_t> SideEnd(const Engine::Track& track, Side side);
  void SideTrack(const Engine::Track& track, std::size_t index, Side side);
  static void CheckTransition(const Engine::FxTransitionItem& item);
  void TransitionFields(const Engine::FxTransitionItem& item);
  void Transition(const Engine::FxTransitionItem& item);
  Fraction SpeedOf(const Part& part, const EdlElement* element) const;
  void Clip(const Engine::MediaSummaryItem& item, std::optional<std::uint32_t> element, Side side,
            const Part& part, std::int64_t overlap, const Engine::FxTransitionItem* leftOut);
  static std::string ExactText(const Fraction& value);
  void CheckWarpedMedia(const std::string& id, std::optional<std::uint32_t> element,
                        const std::string& mediaId, const Fraction& start, std::int64_t duration,
                        const Fraction& speed);
  void Reference(const Kov::BusinessEntityModel::BaseTypes::Identifier& mediaId,
                 const std::string& clipName);

  const Engine::Timeline& timeline_;
  const OtioExportOptions& options_;
  std::vector<OtioNote>* approximations_;
  std::ostream* sink_;
  std::string buffer_;
  JsonText json_;
  double rate_;
  std::int64_t length_ = 0;
  // Whether the track being written holds the aux clip's item.
  bool aux_ = false;
  // Keyed by views of the timeline's own identifier texts: nothing copied.
  std::unordered_map<std::string_view, const Engine::MediaInfo*> mediaInfos_;
};

}  // namespace OtioWriting
}  // namespace TimelineConvert
