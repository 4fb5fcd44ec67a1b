// The writer of one side's list events, shared by the two halves of its work:
// EdlExport.cpp builds the events from the engine items, EdlChecks.cpp checks
// each against its place and the one before it. Only those two include it.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "export/EdlExport.h"
#include "export/EdlText.h"

namespace TimelineConvert {
namespace EdlWriting {

namespace Engine = Kov::TimelineEngineModel;

constexpr std::int32_t kOverlappingKind = 2;

// The clip of a place whose clip is named later, or not at all.
inline const std::string kNoClip;

struct SideTraits {
  std::size_t track;
  bool picture;
  Engine::TrackItemType transitionType;
  const char* name;
};

SideTraits TraitsOf(EdlSide side);

struct Part {
  std::int64_t timelineIn, timelineDuration, mediaIn, mediaDuration;
};

Part PartOf(const Engine::MediaSummaryItem& item, bool picture);

// "1 frame", "3 frames".
std::string Frames(std::int64_t count);

class SideWriter {
 public:
  SideWriter(const Engine::Timeline& timeline, const EdlExportInput& input, EdlSide side,
             const TimecodeBase& base, bool problemsOnly,
             const std::function<void(const EdlProblem&)>* onProblem = nullptr);
  EdlResult Write();

 private:
  // `element`: the item's element by its place in the track.
  EdlPlace PlaceOf(const Engine::TrackItem& item, std::optional<std::uint32_t> element,
                   const std::string& clip = "") const;
  void Problem(const EdlPlace& place, EdlProblemKind kind,
               std::initializer_list<std::int64_t> values = {}, std::string detail = "");
  // Notes what `text()` says; a check writes no notes, so it never builds their text.
  template <typename Text>
  void Approximate(const EdlPlace& place, const Text& text) {
    if (!problemsOnly_) {
      approximations_.push_back({place, text()});
    }
  }
  void CheckTimecodes();
  void CheckTimecode(const EdlEvent& event);
  const std::string& ClipName(const std::string& assetId) const;
  void ReadTrack(const Engine::Track& track);
  void ReadMedia(const Engine::MediaSummaryItem& item, std::optional<std::uint32_t> element,
                 const Engine::FxTransitionItem* incoming);
  void ReadSpeed(EdlEvent& event);
  void Place(EdlEvent& event, const Engine::FxTransitionItem* incoming);
  void ShortenBeforeDissolve(EdlEvent& previous, std::int64_t recordOut);
  std::string ReelOf(const std::string& clip, const EdlPlace& place);
  std::string SoundChannel(const std::string& assetId, const EdlPlace& place);

  const Engine::Timeline& timeline_;
  const EdlExportInput& input_;
  EdlSide side_;
  SideTraits traits_;
  TimecodeBase base_;
  bool problemsOnly_;
  // Keyed by views of the timeline's own identifier texts: nothing copied.
  std::unordered_map<std::string_view, const Engine::MediaInfo*> mediaInfos_;
  std::vector<EdlEvent> events_;
  const std::function<void(const EdlProblem&)>* onProblem_;
  std::vector<EdlProblem> problems_;
  std::vector<EdlNote> approximations_;
  std::map<std::string, std::string> reelOwners_;
  std::set<std::string> reelClashes_;
  std::set<std::string> mergedSound_;
};

}  // namespace EdlWriting
}  // namespace TimelineConvert
