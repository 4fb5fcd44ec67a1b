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
                       const TimecodeBase& base, bool problemsOnly)
    : timeline_(timeline),
      input_(input),
      side_(side),
      traits_(TraitsOf(side)),
      base_(base),
      problemsOnly_(problemsOnly) {
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

EdlPlace SideWriter::PlaceOf(const Engine::TrackItem& item, const std::string& clip) const {
  EdlPlace place;
  place.itemId = item.Id().Text();
  const auto found = input_.elements.find(place.itemId);
  if (found != input_.elements.end()) {
    place.element = found->second;
  }
  place.aux = !place.itemId.empty() && place.itemId == input_.auxItemId;
  place.clip = clip;
  return place;
}

void SideWriter::Problem(const EdlPlace& place, std::string text) {
  problems_.push_back({place, std::move(text)});
}

void SideWriter::Approximate(const EdlPlace& place, std::string text) {
  if (problemsOnly_) {
    return;
  }
  approximations_.push_back({place, std::move(text)});
}

std::string SideWriter::ClipName(const std::string& assetId) const {
  const auto found = input_.clipNames.find(assetId);
  return found == input_.clipNames.end() ? assetId : found->second;
}

void SideWriter::ReadTrack(const Engine::Track& track) {
  const Engine::FxTransitionItem* pending = nullptr;
  for (const auto& item : track.items) {
    if (!item) {
      Problem({}, "the track holds an empty item.");
      continue;
    }
    const auto type = item->GetType();
    const auto* transition = dynamic_cast<const Engine::FxTransitionItem*>(item.get());
    const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get());
    if (transition != nullptr && type == traits_.transitionType) {
      if (pending != nullptr) {
        Problem(PlaceOf(*item), "follows transition " + pending->Id().Text() +
                                    " without a media item between them.");
      }
      const auto& effect = transition->FxTransition();
      if (effect.offset < 0 || effect.duration < 0 || effect.offset > effect.duration) {
        Problem(PlaceOf(*item), "has a negative length before or after its cut (offset " +
                                    std::to_string(effect.offset) + ", duration " +
                                    std::to_string(effect.duration) + ").");
      }
      pending = transition;
    } else if (transition != nullptr &&
               (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition)) {
      continue;  // the other side's
    } else if (media == nullptr || type != Engine::MediaSummary) {
      Problem(PlaceOf(*item),
              "has the unknown type " + std::to_string(static_cast<std::int32_t>(type)) + ".");
    } else {
      ReadMedia(*media, pending);
      pending = nullptr;
    }
  }
  if (pending != nullptr) {
    Approximate(PlaceOf(*pending), "transition at the end of the track left out.");
  }
}

void SideWriter::ReadMedia(const Engine::MediaSummaryItem& item,
                           const Engine::FxTransitionItem* incoming) {
  const Part part = PartOf(item, traits_.picture);
  const std::string assetId = item.mediaId.Text();
  const EdlPlace place = PlaceOf(item, ClipName(assetId));
  if (part.timelineDuration < 0 || part.mediaDuration < 0) {
    Problem(place, "has a negative " + std::string(traits_.name) + " length (" +
                       Frames(part.timelineDuration) + " on the timeline, " +
                       Frames(part.mediaDuration) + " of media).");
    return;
  }
  if (part.timelineDuration == 0) {
    if (part.mediaDuration > 0) {
      Approximate(place, "plays " + Frames(part.mediaDuration) + " of media in no " + traits_.name +
                             " frames: no event.");
    }
    if (incoming != nullptr) {
      Approximate(PlaceOf(*incoming, place.clip),
                  "transition into an item without " + std::string(traits_.name) + " left out.");
    }
    return;
  }
  EdlEvent event;
  event.place = place;
  event.clip = EdlSafeText(place.clip);
  if (event.clip != place.clip) {
    Approximate(place, "control characters of the clip name written as spaces.");
  }
  event.reel = ReelOf(event.clip, place);
  event.channel = traits_.picture ? "V" : SoundChannel(assetId, place);
  event.mediaIn = part.mediaIn;
  event.mediaDuration = part.mediaDuration;
  event.recordIn = part.timelineIn;
  event.sourceIn = part.mediaIn;
  std::int64_t recordOut = 0;
  std::int64_t sourceOut = 0;
  if (__builtin_add_overflow(part.timelineIn, part.timelineDuration, &recordOut) ||
      __builtin_add_overflow(part.mediaIn, part.mediaDuration, &sourceOut)) {
    Problem(place, "has frame numbers beyond the 64-bit range.");
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
    Problem(event.place, "plays in reverse (speed " + std::to_string(numerator) + "/" +
                             std::to_string(denominator) + "), which this list does not write.");
    return;
  }
  const std::int64_t divisor = std::gcd(numerator, denominator);
  if (numerator == denominator && event.mediaDuration == event.timelineDuration) {
    return;
  }
  event.speedNumerator = std::llabs(numerator / divisor);
  event.speedDenominator = std::llabs(denominator / divisor);
  event.speedText = EdlSpeedText(event.speedNumerator, event.speedDenominator, base_);
  if (!event.speedText.exact) {
    Approximate(event.place, "speed " + std::to_string(event.speedNumerator) + "/" +
                                 std::to_string(event.speedDenominator) + " written as " +
                                 event.speedText.text + " frames a second.");
  }
}

std::string SideWriter::ReelOf(const std::string& clip, const EdlPlace& place) {
  std::string reel = EdlReelName(clip);
  const auto [owner, added] = reelOwners_.emplace(reel, clip);
  if (!added && owner->second != clip && reelClashes_.insert(clip).second) {
    Approximate(place, "reel " + reel + " also names clip " + owner->second +
                           "; the clip name comment tells them apart.");
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
    Approximate(place, std::to_string(tracks) +
                           " sound tracks of the clip merged into the list's two channels AA.");
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

EdlResult TimelineToEdl(const Timeline& timeline, const EdlExportInput& input, EdlSide side,
                        bool problemsOnly) {
  const auto base = TimecodeBaseOf(input.rate);
  if (!base) {
    EdlResult result;
    result.problems.push_back({{},
                               "the rate " + std::to_string(input.rate.numerator) + "/" +
                                   std::to_string(input.rate.denominator) +
                                   " is not a frame rate timecode can count (more than 0 "
                                   "and at most " +
                                   std::to_string(kMostFramesPerSecond) + " frames a second)."});
    return result;
  }
  return SideWriter(timeline, input, side, *base, problemsOnly).Write();
}

}  // namespace TimelineConvert
