// Turns the media items of one track side into list events. An event's record
// IN is where the engine starts the item; its record OUT is where the engine
// ends it, or where the next item starts to dissolve over it, because a list
// states a dissolve as the next event starting while the previous source
// keeps running. Everything that would move an item away from its engine
// place is a problem; everything the list can only round is noted.
// The checks against an event's place live in EdlChecks.cpp.
#include "export/EdlExport.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

#include "analysis/ItemElements.h"
#include "export/EdlSideWriter.h"
#include "export/EdlText.h"

namespace TimelineConvert {
namespace EdlWriting {

SideTraits TraitsOf(EdlSide side) {
  switch (side) {
    case EdlSide::Picture:
      return {0, true, Engine::FxVideoTransition, "picture"};
    case EdlSide::Sound:
      return {0, false, Engine::FxAudioTransition, "sound"};
    case EdlSide::Aux:
      break;
  }
  return {1, false, Engine::FxAudioTransition, "sound"};
}

Part PartOf(const Engine::MediaSummaryItem& item, bool picture) {
  if (picture) {
    return {item.timelineVideoIn, item.timelineVideoDuration, item.mediaVideoIn,
            item.mediaVideoDuration};
  }
  return {item.timelineAudioIn, item.timelineAudioDuration, item.mediaAudioIn,
          item.mediaAudioDuration};
}

std::string Frames(std::int64_t count) {
  return std::to_string(count) + (count == 1 || count == -1 ? " frame" : " frames");
}

SideWriter::SideWriter(const Engine::Timeline& timeline, const EdlExportInput& input, EdlSide side,
                       const TimecodeBase& base, bool problemsOnly,
                       const std::function<void(const EdlProblem&)>* onProblem)
    : timeline_(timeline),
      input_(input),
      side_(side),
      traits_(TraitsOf(side)),
      base_(base),
      problemsOnly_(problemsOnly || onProblem != nullptr),
      onProblem_(onProblem) {
  for (const auto& info : timeline.mediaInfos) {
    mediaInfos_.emplace(info.id.Text(), &info);  // the first of equal ids wins
  }
}

EdlResult SideWriter::Write() {
  if (traits_.track < timeline_.tracks.size()) {
    ReadTrack(timeline_.tracks[traits_.track]);
  }
  CheckTimecodes();
  EdlResult result;
  result.problems = std::move(problems_);
  result.approximations = std::move(approximations_);
  if (result.problems.empty() && !problemsOnly_) {
    result.text = EdlListText(input_.title, side_, base_, events_, result.approximations);
  }
  return result;
}

EdlPlace SideWriter::PlaceOf(const Engine::TrackItem& item, std::optional<std::uint32_t> element,
                             const std::string& clip) const {
  EdlPlace place;
  place.item = &item;
  if (element && *element < input_.elements.size()) {
    place.element = input_.elements[*element];
  }
  place.aux = traits_.track == kAuxTrack && input_.auxTrack;
  place.clip = clip;
  return place;
}

void SideWriter::Problem(const EdlPlace& place, EdlProblemKind kind,
                         std::initializer_list<std::int64_t> values, std::string detail) {
  EdlProblem problem{place, kind, {}, std::move(detail)};
  std::size_t at = 0;
  for (const std::int64_t value : values) {
    problem.values[at++] = value;
  }
  if (onProblem_ != nullptr) {
    (*onProblem_)(problem);
    return;
  }
  // A check leaves the clip of a media item's place unnamed until now.
  const auto* media =
      problemsOnly_ && place.item != nullptr && place.item->GetType() == Engine::MediaSummary
          ? dynamic_cast<const Engine::MediaSummaryItem*>(place.item)
          : nullptr;
  if (media != nullptr) {
    problem.place.clip = ClipName(media->mediaId.Text());
  }
  problems_.push_back(std::move(problem));
}

const std::string& SideWriter::ClipName(const std::string& assetId) const {
  const auto found = input_.clipNames.find(assetId);
  return found == input_.clipNames.end() ? assetId : found->second;
}

void SideWriter::ReadTrack(const Engine::Track& track) {
  const Engine::FxTransitionItem* pending = nullptr;
  std::optional<std::uint32_t> pendingElement;
  ElementWalk walk(traits_.track == kElementTrack, input_.elements.size());
  for (const auto& item : track.items) {
    const auto element = walk.Next(item.get());
    if (!item) {
      Problem({}, EdlProblemKind::EmptyItem);
      continue;
    }
    const auto type = item->GetType();
    const auto [transition, media] = KindOf(*item, type);
    if (transition != nullptr && type == traits_.transitionType) {
      if (pending != nullptr) {
        Problem(PlaceOf(*item, element), EdlProblemKind::TransitionAfterTransition, {},
                pending->Id().Text());
      }
      const auto& effect = transition->FxTransition();
      if (effect.offset < 0 || effect.duration < 0 || effect.offset > effect.duration) {
        Problem(PlaceOf(*item, element), EdlProblemKind::NegativeTransition,
                {effect.offset, effect.duration});
      }
      pending = transition;
      pendingElement = element;
    } else if (transition != nullptr &&
               (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition)) {
      continue;  // the other side's
    } else if (media == nullptr || type != Engine::MediaSummary) {
      Problem(PlaceOf(*item, element), EdlProblemKind::UnknownType,
              {static_cast<std::int32_t>(type)});
    } else {
      ReadMedia(*media, element, pending);
      pending = nullptr;
    }
  }
  if (pending != nullptr) {
    Approximate(PlaceOf(*pending, pendingElement),
                [&] { return "transition at the end of the track left out."; });
  }
}

void SideWriter::ReadMedia(const Engine::MediaSummaryItem& item,
                           std::optional<std::uint32_t> element,
                           const Engine::FxTransitionItem* incoming) {
  const Part part = PartOf(item, traits_.picture);
  const std::string& assetId = item.mediaId.Text();
  // A check names the clip only in a problem it reports (see Problem).
  const EdlPlace place = PlaceOf(item, element, problemsOnly_ ? kNoClip : ClipName(assetId));
  if (part.timelineDuration < 0 || part.mediaDuration < 0) {
    Problem(place, EdlProblemKind::NegativeLength,
            {part.timelineDuration, part.mediaDuration, traits_.picture ? 1 : 0});
    return;
  }
  if (part.timelineDuration == 0) {
    if (part.mediaDuration > 0) {
      Approximate(place, [&] {
        return "plays " + Frames(part.mediaDuration) + " of media in no " + traits_.name +
               " frames: no event.";
      });
    }
    if (incoming != nullptr) {
      Approximate(PlaceOf(*incoming, element, place.clip), [&] {
        return "transition into an item without " + std::string(traits_.name) + " left out.";
      });
    }
    return;
  }
  EdlEvent event;
  event.place = place;
  if (!problemsOnly_) {
    event.clip = EdlSafeText(place.clip);
    if (event.clip != place.clip) {
      Approximate(place, [] { return "control characters of the clip name written as spaces."; });
    }
    event.reel = ReelOf(event.clip, place);
    event.channel = traits_.picture ? "V" : SoundChannel(assetId, place);
  }
  event.mediaIn = part.mediaIn;
  event.mediaDuration = part.mediaDuration;
  event.recordIn = part.timelineIn;
  event.sourceIn = part.mediaIn;
  std::int64_t recordOut = 0;
  std::int64_t sourceOut = 0;
  if (__builtin_add_overflow(part.timelineIn, part.timelineDuration, &recordOut) ||
      __builtin_add_overflow(part.mediaIn, part.mediaDuration, &sourceOut)) {
    Problem(place, EdlProblemKind::BeyondRange);
    return;
  }
  event.recordOut = recordOut;
  event.sourceOut = sourceOut;
  event.timelineDuration = part.timelineDuration;
  ReadSpeed(event);
  Place(event, incoming);
  events_.push_back(std::move(event));
  // Only the event before the next one matters to it; a check that writes
  // no text keeps no more, so that it costs the same at any length.
  if (problemsOnly_ && events_.size() > 2) {
    CheckTimecode(events_.front());
    events_.erase(events_.begin());
  }
}

// The speed is the element's, or the ratio of media and timeline lengths
// where the element is not known or plays at 1/1 while the lengths differ.
void SideWriter::ReadSpeed(EdlEvent& event) {
  std::int64_t numerator = event.mediaDuration;
  std::int64_t denominator = event.timelineDuration;
  if (event.place.element) {
    const EdlElement& element = *event.place.element;
    const bool unitSpeed = element.speedNumerator == element.speedDenominator;
    if (element.speedDenominator != 0 && element.speedNumerator != 0 &&
        !(unitSpeed && numerator != denominator)) {
      numerator = element.speedNumerator;
      denominator = element.speedDenominator;
    }
  }
  if ((numerator < 0) != (denominator < 0)) {
    Problem(event.place, EdlProblemKind::Reverse, {numerator, denominator});
    return;
  }
  if (problemsOnly_) {
    return;  // the rest is the list's text
  }
  const std::int64_t divisor = std::gcd(numerator, denominator);
  if (numerator == denominator && event.mediaDuration == event.timelineDuration) {
    return;
  }
  event.speedNumerator = std::llabs(numerator / divisor);
  event.speedDenominator = std::llabs(denominator / divisor);
  event.speedText = EdlSpeedText(event.speedNumerator, event.speedDenominator, base_);
  if (!event.speedText.exact) {
    Approximate(event.place, [&] {
      return "speed " + std::to_string(event.speedNumerator) + "/" +
             std::to_string(event.speedDenominator) + " written as " + event.speedText.text +
             " frames a second.";
    });
  }
}

std::string SideWriter::ReelOf(const std::string& clip, const EdlPlace& place) {
  std::string reel = EdlReelName(clip);
  const auto [owner, added] = reelOwners_.emplace(reel, clip);
  if (!added && owner->second != clip && reelClashes_.insert(clip).second) {
    Approximate(place, [&] {
      return "reel " + reel + " also names clip " + owner->second +
             "; the clip name comment tells them apart.";
    });
  }
  return reel;
}

std::string SideWriter::SoundChannel(const std::string& assetId, const EdlPlace& place) {
  const auto found = mediaInfos_.find(assetId);
  const int tracks =
      found == mediaInfos_.end() ? 1 : EdlSoundTracks(found->second->tracksDescription);
  if (tracks <= 1) {
    return "A";
  }
  if (tracks > 2 && mergedSound_.insert(assetId).second) {
    Approximate(place, [&] {
      return std::to_string(tracks) +
             " sound tracks of the clip merged into the list's two channels AA.";
    });
  }
  return "AA";
}

}  // namespace EdlWriting

using EdlWriting::PartOf;
using EdlWriting::SideTraits;
using EdlWriting::SideWriter;
using EdlWriting::TraitsOf;
using EdlWriting::Engine::MediaSummaryItem;
using EdlWriting::Engine::Timeline;

std::vector<EdlSide> EdlSidesOf(const Timeline& timeline) {
  std::vector<EdlSide> sides;
  for (const EdlSide side : {EdlSide::Picture, EdlSide::Sound, EdlSide::Aux}) {
    const SideTraits traits = TraitsOf(side);
    if (traits.track >= timeline.tracks.size()) {
      continue;
    }
    for (const auto& item : timeline.tracks[traits.track].items) {
      const auto* media = dynamic_cast<const MediaSummaryItem*>(item.get());
      if (media != nullptr && PartOf(*media, traits.picture).timelineDuration != 0) {
        sides.push_back(side);
        break;
      }
    }
  }
  return sides;
}

namespace {

EdlProblem RateProblem(const EdlExportInput& input) {
  return EdlProblem{{},
                    EdlProblemKind::Rate,
                    {input.rate.numerator, input.rate.denominator, kMostFramesPerSecond},
                    ""};
}

}  // namespace

EdlResult TimelineToEdl(const Timeline& timeline, const EdlExportInput& input, EdlSide side,
                        bool problemsOnly) {
  const auto base = TimecodeBaseOf(input.rate);
  if (!base) {
    EdlResult result;
    result.problems.push_back(RateProblem(input));
    return result;
  }
  return SideWriter(timeline, input, side, *base, problemsOnly).Write();
}

void FindEdlProblems(const Timeline& timeline, const EdlExportInput& input, EdlSide side,
                     const std::function<void(const EdlProblem&)>& found) {
  const auto base = TimecodeBaseOf(input.rate);
  if (!base) {
    found(RateProblem(input));
    return;
  }
  SideWriter(timeline, input, side, *base, true, &found).Write();
}

void AppendEdlProblemText(std::string& out, EdlProblemKind kind, const std::int64_t* values,
                          const std::string& detail) {
  using EdlWriting::Frames;
  const auto number = [values](std::size_t at) { return std::to_string(values[at]); };
  switch (kind) {
    case EdlProblemKind::EmptyItem:
      out += "the track holds an empty item.";
      return;
    case EdlProblemKind::TransitionAfterTransition:
      out += "follows transition " + detail + " without a media item between them.";
      return;
    case EdlProblemKind::NegativeTransition:
      out += "has a negative length before or after its cut (offset " + number(0) + ", duration " +
             number(1) + ").";
      return;
    case EdlProblemKind::UnknownType:
      out += "has the unknown type " + number(0) + ".";
      return;
    case EdlProblemKind::NegativeLength:
      out += std::string("has a negative ") + (values[2] != 0 ? "picture" : "sound") + " length (" +
             Frames(values[0]) + " on the timeline, " + Frames(values[1]) + " of media).";
      return;
    case EdlProblemKind::BeyondRange:
      out += "has frame numbers beyond the 64-bit range.";
      return;
    case EdlProblemKind::Reverse:
      out += "plays in reverse (speed " + number(0) + "/" + number(1) +
             "), which this list does not write.";
      return;
    case EdlProblemKind::MediaBeforeMaterial:
      out += "starts its media at frame " + number(0) + ", before its recorded material.";
      return;
    case EdlProblemKind::BeyondTimecode:
      out += "reaches frame " + number(0) + ", beyond the " + Frames(values[1]) +
             " of 24 hours that timecode labels.";
      return;
    case EdlProblemKind::BeforeFrameZero:
      out += "starts before frame 0, at frame " + number(0) + ".";
      return;
    case EdlProblemKind::OverlapWithoutDissolve:
      out += "overlaps the item before it by " + Frames(values[0]) + " without a dissolve.";
      return;
    case EdlProblemKind::MoreThanOneItem:
      out +=
          "overlaps the item before it by " + Frames(values[0]) + ", more than one item at a time.";
      return;
    case EdlProblemKind::Rate:
      break;
  }
  out += "the rate " + number(0) + "/" + number(1) +
         " is not a frame rate timecode can count (more than 0 and at most " + number(2) +
         " frames a second).";
}

std::string EdlProblem::Text() const {
  std::string text;
  AppendEdlProblemText(text, kind, values, detail);
  return text;
}

}  // namespace TimelineConvert
