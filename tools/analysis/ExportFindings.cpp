// The export findings. The list checks are the list writer's own (it is run
// without keeping its text), so that what check reports and what the export
// refuses can never drift apart; the OpenTimelineIO checks walk the main
// track once.
#include "analysis/ExportFindings.h"

#include <algorithm>
#include <limits>

#include "analysis/FindingList.h"
#include "analysis/ItemElements.h"
#include "export/EdlExport.h"
#include "export/EdlInput.h"
#include "export/OtioExport.h"

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;

constexpr const char* kTransitionNumbers[] = {"offset", "duration", nullptr};
constexpr const char* kDurationNumbers[] = {"picture", "sound", nullptr};
// Values held but not quoted: the positions of the transition and the item.
constexpr const char* kEmptyPartNumbers[] = {nullptr};
// Then the positions of the transition and the item, not quoted.
constexpr const char* kOverlapNumbers[] = {"length", "overlap", nullptr};

// A reversed marked range: the aux item lasts less than nothing, which no
// interchange format holds, as the main track's items say alike. One item at
// most: held in words.
void FindNegativeAuxItem(FindingList& findings, const Engine::Timeline& timeline) {
  const auto& document = findings.Document();
  if (document.playlist.auxTrackUmId == Kov::Replivo::Data::Clips::UmId::Empty() ||
      timeline.tracks.size() <= kAuxTrack || timeline.tracks[kAuxTrack].items.empty()) {
    return;
  }
  const auto& item =
      static_cast<const Engine::MediaSummaryItem&>(*timeline.tracks[kAuxTrack].items.front());
  if (item.timelineAudioDuration >= 0) {
    return;
  }
  Finding negative;
  negative.values[0] = item.timelineVideoDuration;
  negative.values[1] = item.timelineAudioDuration;
  std::string message;
  NegativeDurationMessage(message, negative, FindingSource{document, timeline});
  findings.Spelled(
      FindingKind::NegativeDuration, DocumentPlace::AuxTrack(document), std::move(message),
      {{"picture", item.timelineVideoDuration}, {"sound", item.timelineAudioDuration}});
}

// A transition must reach forward from its cut and back to it, and a media
// item must not last less than nothing: the engine plays both, no interchange
// format holds them. A transition's finding keeps its position in the track,
// for its identifier; variant 1 for a sound transition.
void FindOtioBlocks(const PlaylistDocument& document, const Engine::Timeline& timeline,
                    FindingList& findings) {
  ElementWalk walk(true, document.playlist.audioVideoTrack.elements.size());
  const auto& items = timeline.tracks.at(kElementTrack).items;
  // The transition waiting for the next media item, per side (picture,
  // sound), and its position.
  const Engine::FxTransitionItem* waiting[2] = {nullptr, nullptr};
  std::int64_t waitingAt[2] = {0, 0};
  for (std::size_t position = 0; position < items.size(); ++position) {
    const auto& item = items[position];
    const auto element = walk.Next(item.get());
    if (!element) {
      break;
    }
    const std::size_t index = *element;
    const auto type = item->GetType();
    if (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition) {
      const auto& transition = static_cast<const Engine::FxTransitionItem&>(*item);
      const bool audio = type == Engine::FxAudioTransition;
      if (OtioCannotHoldTransition(transition)) {
        const auto& effect = transition.FxTransition();
        findings.AtElement(index, FindingKind::TransitionNegativeLength, kTransitionNumbers,
                           {effect.offset, effect.duration, static_cast<std::int64_t>(position)},
                           audio ? "/audioTransitionDuration" : "/videoTransitionDuration",
                           audio ? 1 : 0);
      }
      waiting[audio ? 1 : 0] = &transition;
      waitingAt[audio ? 1 : 0] = static_cast<std::int64_t>(position);
      continue;
    }
    const auto& media = static_cast<const Engine::MediaSummaryItem&>(*item);
    if (media.timelineVideoDuration < 0 || media.timelineAudioDuration < 0) {
      findings.AtElement(index, FindingKind::NegativeDuration, kDurationNumbers,
                         {media.timelineVideoDuration, media.timelineAudioDuration});
    }
    // A transition needs frames of the item it leads into to blend into (a
    // clip of none is no clip to an importer), and an overlapping one at
    // least as many as it overlaps.
    const std::int64_t durations[2] = {media.timelineVideoDuration, media.timelineAudioDuration};
    for (std::uint8_t side = 0; side < 2; ++side) {
      const char* field = side == 1 ? "/audioTransitionDuration" : "/videoTransitionDuration";
      if (waiting[side] != nullptr && durations[side] == 0) {
        findings.AtElement(index, FindingKind::TransitionIntoEmptyPart, kEmptyPartNumbers,
                           {waitingAt[side], static_cast<std::int64_t>(position)}, field, side);
      } else if (waiting[side] != nullptr && durations[side] > 0 &&
                 durations[side] < OtioOverlapOf(*waiting[side])) {
        findings.AtElement(index, FindingKind::TransitionOverlapsPastItem, kOverlapNumbers,
                           {durations[side], OtioOverlapOf(*waiting[side]), waitingAt[side],
                            static_cast<std::int64_t>(position)},
                           field, side);
      }
      waiting[side] = nullptr;
    }
  }
  FindNegativeAuxItem(findings, timeline);
}

EdlSide SideOf(FindingKind kind) {
  return kind == FindingKind::NotInPictureEdl ? EdlSide::Picture
         : kind == FindingKind::NotInSoundEdl ? EdlSide::Sound
                                              : EdlSide::Aux;
}

// A problem at an element or the aux clip is held as its kind (the variant)
// and values, with values[3] 1 when the text says "the item"; one at an item
// the document does not name, or that names another item, is held in words.
// `only`: the sides to check, all that play when null.
void FindEdlBlocks(const PlaylistDocument& document, const Engine::Timeline& timeline,
                   FindingList& findings, const std::vector<EdlSide>* only = nullptr) {
  const EdlExportInput input = EdlInputFromDocument(document);
  const std::size_t elements = document.playlist.audioVideoTrack.elements.size();
  for (const EdlSide side : EdlSidesOf(timeline)) {
    if (only != nullptr && std::find(only->begin(), only->end(), side) == only->end()) {
      continue;
    }
    const FindingKind kind = EdlBlockingKind(side);
    FindEdlProblems(timeline, input, side, [&](const EdlProblem& problem) {
      const auto& place = problem.place;
      const bool hasItem = place.item != nullptr && !place.item->Id().Text().empty();
      const bool known = !hasItem || place.element || place.aux;
      if (known && problem.detail.empty()) {
        const std::int64_t theItem = hasItem ? 1 : 0;
        const auto variant = static_cast<std::uint8_t>(problem.kind);
        if (place.aux) {
          findings.InAuxTrack(
              kind, {problem.values[0], problem.values[1], problem.values[2], theItem}, variant);
        } else if (place.element && place.element->index < elements) {
          findings.AtElement(place.element->index, kind, nullptr,
                             {problem.values[0], problem.values[1], problem.values[2], theItem}, "",
                             variant);
        } else {
          findings.Nowhere(kind, {problem.values[0], problem.values[1], problem.values[2], theItem},
                           variant);
        }
        return;
      }
      DocumentPlace at;
      if (place.aux) {
        at = DocumentPlace::AuxTrack(document);
      } else if (place.element && place.element->index < elements) {
        at = DocumentPlace::Element(document, place.element->index);
      }
      const std::string text = problem.Text();
      const std::string what = !hasItem                     ? text
                               : place.element || place.aux ? "the item " + text
                                                            : "item " + place.ItemId() + " " + text;
      findings.Spelled(kind, std::move(at),
                       "the " + std::string(EdlSideName(side)) + " EDL cannot hold it: " + what,
                       {});
    });
  }
}

}  // namespace

void NegativeDurationMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += "the media item lasts " + std::to_string(finding.values[0]) + " frames (picture) and " +
         std::to_string(finding.values[1]) + " frames (sound) on the timeline";
}

void TransitionNegativeLengthMessage(std::string& out, const Finding& finding,
                                     const FindingSource& source) {
  const auto& item =
      source.timeline.tracks.at(0).items.at(static_cast<std::size_t>(finding.values[2]));
  out += "transition " + item->Id().Text() +
         " reaches a negative length before or after its cut (offset " +
         std::to_string(finding.values[0]) + ", duration " + std::to_string(finding.values[1]) +
         ").";
}

void TransitionIntoEmptyPartMessage(std::string& out, const Finding& finding,
                                    const FindingSource& source) {
  const auto& items = source.timeline.tracks.at(kElementTrack).items;
  out += "transition " + items.at(static_cast<std::size_t>(finding.values[0]))->Id().Text() +
         " leads into item " + items.at(static_cast<std::size_t>(finding.values[1]))->Id().Text() +
         ", which has no " + (finding.variant == 1 ? "sound" : "picture") + ".";
}

void TransitionOverlapsPastItemMessage(std::string& out, const Finding& finding,
                                       const FindingSource& source) {
  const auto& items = source.timeline.tracks.at(kElementTrack).items;
  out += "item " + items.at(static_cast<std::size_t>(finding.values[3]))->Id().Text() +
         " is shorter on the " + (finding.variant == 1 ? "sound" : "picture") + " side (" +
         std::to_string(finding.values[0]) + " frames) than the " +
         std::to_string(finding.values[1]) + " frames its transition " +
         items.at(static_cast<std::size_t>(finding.values[2]))->Id().Text() + " overlaps.";
}

void EdlBlockMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += std::string("the ") + EdlSideName(SideOf(finding.kind)) + " EDL cannot hold it: ";
  if (finding.values[3] != 0) {
    out += "the item ";
  }
  AppendEdlProblemText(out, static_cast<EdlProblemKind>(finding.variant), finding.values);
}

FindingKind EdlBlockingKind(EdlSide side) {
  switch (side) {
    case EdlSide::Picture:
      return FindingKind::NotInPictureEdl;
    case EdlSide::Sound:
      return FindingKind::NotInSoundEdl;
    case EdlSide::Aux:
      break;
  }
  return FindingKind::NotInAuxEdl;
}

void AddExportFindings(const PlaylistDocument& document, const Outcome& outcome,
                       FindingList& findings) {
  if (outcome.refusal || outcome.timeline.tracks.empty()) {
    return;
  }
  FindOtioBlocks(document, outcome.timeline, findings);
  FindEdlBlocks(document, outcome.timeline, findings);
}

Findings OtioBlockingFindings(const PlaylistDocument& document, const Outcome& outcome) {
  Findings found(document, outcome);
  FindingList findings(found, document);
  if (!outcome.refusal && !outcome.timeline.tracks.empty()) {
    FindOtioBlocks(document, outcome.timeline, findings);
  }
  return found;
}

Findings EdlBlockingFindings(const PlaylistDocument& document, const Outcome& outcome,
                             const std::vector<EdlSide>& sides) {
  Findings found(document, outcome);
  FindingList findings(found, document);
  if (!outcome.refusal && !outcome.timeline.tracks.empty()) {
    FindEdlBlocks(document, outcome.timeline, findings, &sides);
  }
  return found;
}

}  // namespace TimelineConvert
