// The export findings. The list checks are the list writer's own (it is run
// without keeping its text), so that what check reports and what the export
// refuses can never drift apart; the OpenTimelineIO checks walk the main
// track once.
#include "analysis/ExportFindings.h"

#include <limits>

#include "export/EdlExport.h"
#include "export/EdlInput.h"

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;

struct KindRow {
  const char* kind;
  Severity severity;
};

constexpr KindRow kExportKinds[] = {
    {"negative-duration", Severity::BlocksOtio},
    {"transition-negative-length", Severity::BlocksOtio},
    {"not-in-picture-edl", Severity::BlocksEdl},
    {"not-in-sound-edl", Severity::BlocksEdl},
    {"not-in-aux-edl", Severity::BlocksEdl},
};

Finding AtElement(const PlaylistDocument& document, std::size_t index, const char* kind,
                  std::string message, Numbers numbers, const std::string& field = "") {
  return Finding{kind, ExportSeverityOf(kind), DocumentPlace::Element(document, index, field),
                 std::move(message), std::move(numbers)};
}

// Whether the effect reaches back before its cut or forward by less than nothing.
bool NegativeAfterCut(const Engine::FxTransitionItem& item) {
  const auto& effect = item.FxTransition();
  std::int64_t afterCut = 0;
  return effect.offset < 0 || __builtin_sub_overflow(effect.duration, effect.offset, &afterCut) ||
         afterCut < 0;
}

// A transition must reach forward from its cut and back to it, and a media
// item must not last less than nothing: the engine plays both, no interchange
// format holds them.
void FindOtioBlocks(const PlaylistDocument& document, const Engine::Timeline& timeline,
                    std::vector<Finding>& findings) {
  const std::size_t elements = document.playlist.audioVideoTrack.elements.size();
  std::size_t index = 0;
  for (const auto& item : timeline.tracks.at(0).items) {
    if (index >= elements) {
      break;
    }
    const auto type = item->GetType();
    if (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition) {
      const auto& transition = static_cast<const Engine::FxTransitionItem&>(*item);
      if (NegativeAfterCut(transition)) {
        const auto& effect = transition.FxTransition();
        findings.push_back(
            AtElement(document, index, "transition-negative-length",
                      "transition " + item->Id().Text() +
                          " reaches a negative length before or after its cut (offset " +
                          std::to_string(effect.offset) + ", duration " +
                          std::to_string(effect.duration) + ").",
                      {{"offset", effect.offset}, {"duration", effect.duration}},
                      type == Engine::FxAudioTransition ? "/audioTransitionDuration"
                                                        : "/videoTransitionDuration"));
      }
      continue;
    }
    const auto& media = static_cast<const Engine::MediaSummaryItem&>(*item);
    if (media.timelineVideoDuration < 0 || media.timelineAudioDuration < 0) {
      findings.push_back(AtElement(
          document, index, "negative-duration",
          "the media item lasts " + std::to_string(media.timelineVideoDuration) +
              " frames (picture) and " + std::to_string(media.timelineAudioDuration) +
              " frames (sound) on the timeline",
          {{"picture", media.timelineVideoDuration}, {"sound", media.timelineAudioDuration}}));
    }
    ++index;
  }
}

DocumentPlace PlaceOf(const PlaylistDocument& document, const EdlPlace& place) {
  if (place.aux) {
    return DocumentPlace::AuxTrack(document);
  }
  if (place.element && place.element->index < document.playlist.audioVideoTrack.elements.size()) {
    return DocumentPlace::Element(document, place.element->index);
  }
  return DocumentPlace{};
}

void FindEdlBlocks(const PlaylistDocument& document, const Engine::Timeline& timeline,
                   std::vector<Finding>& findings) {
  const EdlExportInput input = EdlInputFromDocument(document);
  for (const EdlSide side : EdlSidesOf(timeline)) {
    const EdlResult result = TimelineToEdl(timeline, input, side, true);
    for (const auto& problem : result.problems) {
      // The place names the element; an item it does not know is named here.
      const std::string what = problem.place.itemId.empty() ? problem.text
                               : problem.place.element || problem.place.aux
                                   ? "the item " + problem.text
                                   : "item " + problem.place.itemId + " " + problem.text;
      const char* kind = EdlBlockingKind(side);
      findings.push_back(
          Finding{kind,
                  ExportSeverityOf(kind),
                  PlaceOf(document, problem.place),
                  "the " + std::string(EdlSideName(side)) + " EDL cannot hold it: " + what,
                  {}});
    }
  }
}

}  // namespace

Severity ExportSeverityOf(const std::string& kind) {
  for (const auto& row : kExportKinds) {
    if (kind == row.kind) {
      return row.severity;
    }
  }
  return Severity::Warning;
}

std::vector<std::string> ExportFindingKinds() {
  std::vector<std::string> kinds;
  for (const auto& row : kExportKinds) {
    kinds.emplace_back(row.kind);
  }
  return kinds;
}

const char* EdlBlockingKind(EdlSide side) {
  switch (side) {
    case EdlSide::Picture:
      return "not-in-picture-edl";
    case EdlSide::Sound:
      return "not-in-sound-edl";
    case EdlSide::Aux:
      break;
  }
  return "not-in-aux-edl";
}

void AddExportFindings(const PlaylistDocument& document, const Outcome& outcome,
                       std::vector<Finding>& findings) {
  if (outcome.refusal || outcome.timeline.tracks.empty()) {
    return;
  }
  FindOtioBlocks(document, outcome.timeline, findings);
  FindEdlBlocks(document, outcome.timeline, findings);
}

}  // namespace TimelineConvert
