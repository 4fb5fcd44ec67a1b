// Places the clips, gaps and transitions of each side on its track. The
// format lays the children of a track end to end and gives transitions no room
// of their own, so each clip is placed by the running end of the track; the
// checks here refuse exactly the timelines in which that would move a clip
// away from its engine place.
#include <algorithm>
#include <cstdint>
#include <numeric>
#include <optional>

#include "analysis/ItemElements.h"
#include "export/OtioDocumentWriter.h"

namespace TimelineConvert {
namespace OtioWriting {

SideTraits TraitsOf(Side side) {
  return side == Side::Picture ? SideTraits{"picture", "Video", Engine::FxVideoTransition}
                               : SideTraits{"sound", "Audio", Engine::FxAudioTransition};
}

Part PartOf(const Engine::MediaSummaryItem& item, Side side) {
  if (side == Side::Picture) {
    return {item.timelineVideoIn, item.timelineVideoDuration, item.mediaVideoIn,
            item.mediaVideoDuration};
  }
  return {item.timelineAudioIn, item.timelineAudioDuration, item.mediaAudioIn,
          item.mediaAudioDuration};
}

void Refuse(const std::string& reason, const std::string& itemId) {
  throw OtioExportRefusal("Cannot export to OpenTimelineIO: " + reason, {}, itemId);
}

std::int64_t Add(std::int64_t a, std::int64_t b, const std::string& itemId) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) {
    Refuse("the frame numbers of item " + itemId + " leave the 64-bit range.", itemId);
  }
  return sum;
}

std::int64_t Multiply(std::int64_t a, std::int64_t b, const std::string& itemId) {
  std::int64_t product = 0;
  if (__builtin_mul_overflow(a, b, &product)) {
    Refuse("the frame numbers of item " + itemId + " leave the 64-bit range.", itemId);
  }
  return product;
}

Fraction Reduced(std::int64_t numerator, std::int64_t denominator) {
  const std::int64_t divisor = std::gcd(numerator, denominator);
  Fraction fraction{numerator / divisor, denominator / divisor};
  if (fraction.denominator < 0) {
    fraction = {-fraction.numerator, -fraction.denominator};
  }
  return fraction;
}

std::int64_t RoundedQuotient(std::int64_t numerator, std::int64_t denominator) {
  std::int64_t whole = numerator / denominator;
  std::int64_t rest = numerator % denominator;
  if (rest < 0) {
    whole -= 1;
    rest += denominator;
  }
  return whole + (2 * rest >= denominator ? 1 : 0);
}

// Where the last clip of a side ends; nothing when the side has no clip.
std::optional<std::int64_t> DocumentWriter::SideEnd(const Engine::Track& track, Side side) {
  std::optional<std::int64_t> end;
  for (const auto& item : track.items) {
    const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get());
    if (media == nullptr || item->GetType() != Engine::MediaSummary) {
      continue;
    }
    const Part part = PartOf(*media, side);
    // A negative part makes the track too, so that the walk refuses it.
    std::int64_t itemEnd = 0;
    if (part.timelineDuration < 0) {
      end = end.value_or(0);
    } else if (part.timelineDuration > 0 &&
               !__builtin_add_overflow(part.timelineIn, part.timelineDuration, &itemEnd)) {
      end = std::max(end.value_or(itemEnd), itemEnd);
    }
  }
  return end;
}

// One engine track's picture or sound, padded to the common length.
void DocumentWriter::SideTrack(const Engine::Track& track, std::size_t index, Side side) {
  const SideTraits traits = TraitsOf(side);
  const std::string trackName = "track " + std::to_string(index + 1);
  BeginItem("Track.1");
  json_.Key(kEngineFields).BeginObject();
  json_.Member("track", track.id.Text())
      .Member("index", static_cast<std::int64_t>(index))
      .Member("side", traits.name)
      .EndObject();
  ItemFields(trackName + " " + traits.name, false, 0, 0);
  json_.Key("effects").BeginArray().EndArray();
  EndItemFields();
  json_.Key("children").BeginArray();
  std::int64_t trackEnd = 0;
  // The transition waiting for the next media item.
  const Engine::FxTransitionItem* pending = nullptr;
  std::optional<std::uint32_t> pendingElement;
  ElementWalk walk(index == kElementTrack, options_.elements.size());
  aux_ = index == kAuxTrack && options_.auxTrack;
  for (const auto& item : track.items) {
    const auto element = walk.Next(item.get());
    if (!item) {
      Refuse("engine " + trackName + " holds an empty item.");
    }
    const std::string& id = item->Id().Text();
    const auto type = item->GetType();
    const auto [transition, media] = KindOf(*item, type);
    if (transition != nullptr && type == traits.transitionType) {
      if (pending != nullptr) {
        Refuse("transition " + id + " follows transition " + pending->Id().Text() +
                   " without a media item between them.",
               id);
      }
      CheckTransition(*transition);
      pending = transition;
      pendingElement = element;
      continue;
    }
    if (transition != nullptr &&
        (type == Engine::FxVideoTransition || type == Engine::FxAudioTransition)) {
      continue;  // the other side's
    }
    if (media == nullptr || type != Engine::MediaSummary) {
      Refuse("item " + id + " of engine " + trackName + " has the unknown type " +
                 std::to_string(static_cast<std::int32_t>(type)) + ".",
             id);
    }
    const Part part = PartOf(*media, side);
    if (part.timelineDuration < 0) {
      Refuse("item " + id + " has a negative " + traits.name + " length (" +
                 std::to_string(part.timelineDuration) + " frames).",
             id);
    }
    if (part.timelineDuration == 0) {
      if (pending != nullptr) {
        Refuse("transition " + pending->Id().Text() + " leads into item " + id + ", which has no " +
                   traits.name + ".",
               id);
      }
      continue;
    }
    const std::int64_t overlap = pending != nullptr ? OtioOverlapOf(*pending) : 0;
    const std::int64_t start = Add(part.timelineIn, overlap, id);
    const std::int64_t end = Add(part.timelineIn, part.timelineDuration, id);
    if (end < start) {
      Refuse("item " + id + " is shorter on the " + traits.name + " side (" +
                 std::to_string(part.timelineDuration) + " frames) than the " +
                 std::to_string(overlap) + " frames its transition " + pending->Id().Text() +
                 " overlaps.",
             id);
    }
    if (start < 0) {
      Refuse("item " + id + " starts its " + traits.name + " before frame 0, at frame " +
                 std::to_string(start) + ".",
             id);
    }
    if (start < trackEnd) {
      Refuse("item " + id + " overlaps the " + traits.name + " before it: it starts at frame " +
                 std::to_string(start) + ", the previous " + traits.name + " ends at frame " +
                 std::to_string(trackEnd) + ".",
             id);
    }
    if (start > trackEnd) {
      Gap(start - trackEnd);
    }
    // A transition of no length is no transition to an importer: its
    // engine fields travel with the clip it leads into.
    const Engine::FxTransitionItem* leftOut = nullptr;
    if (pending != nullptr && pending->FxTransition().duration == 0) {
      leftOut = pending;
      Approximate(pending->Id().Text(), pendingElement,
                  "transition of no length left out; its fields are in "
                  "the metadata of the clip after it");
    } else if (pending != nullptr) {
      Transition(*pending);
    }
    pending = nullptr;
    Clip(*media, element, side, part, overlap, leftOut);
    Drain(kBlockSize);
    trackEnd = end;
  }
  if (pending != nullptr) {
    Refuse("transition " + pending->Id().Text() + " at the end of engine " + trackName +
               " has no media item after it.",
           pending->Id().Text());
  }
  if (trackEnd < length_) {
    Gap(length_ - trackEnd);
  }
  json_.EndArray().Member("kind", traits.trackKind).EndObject();
}

}  // namespace OtioWriting

bool OtioCannotHoldTransition(const Kov::TimelineEngineModel::FxTransitionItem& item) {
  const auto& effect = item.FxTransition();
  std::int64_t afterCut = 0;
  return effect.offset < 0 || __builtin_sub_overflow(effect.duration, effect.offset, &afterCut) ||
         afterCut < 0;
}

std::int64_t OtioOverlapOf(const Kov::TimelineEngineModel::FxTransitionItem& item) {
  return item.FxTransition().kind == OtioWriting::kOverlappingKind ? item.FxTransition().offset : 0;
}

namespace OtioWriting {

void DocumentWriter::CheckTransition(const Engine::FxTransitionItem& item) {
  const auto& effect = item.FxTransition();
  if (OtioCannotHoldTransition(item)) {
    Refuse("transition " + item.Id().Text() +
               " reaches a negative length before or after its cut (offset " +
               std::to_string(effect.offset) + ", duration " + std::to_string(effect.duration) +
               ").",
           item.Id().Text());
  }
}

// The speed the clip plays at: the element's own fraction where its lengths
// differ, else the ratio of the lengths themselves.
Fraction DocumentWriter::SpeedOf(const Part& part, const EdlElement* element) const {
  if (element != nullptr && element->speedNumerator > 0 && element->speedDenominator > 0 &&
      element->speedNumerator != element->speedDenominator) {
    return Reduced(element->speedNumerator, element->speedDenominator);
  }
  return Reduced(part.mediaDuration, part.timelineDuration);
}

// A warped clip consumes duration * speed media frames from its start; a
// reader that follows the time warp must find them in the media.
void DocumentWriter::CheckWarpedMedia(const std::string& id, std::optional<std::uint32_t> element,
                                      const std::string& mediaId, const Fraction& start,
                                      std::int64_t duration, const Fraction& speed) {
  const auto found = mediaInfos_.find(mediaId);
  if (found == mediaInfos_.end() || found->second->duration <= 0) {
    return;
  }
  const double first =
      static_cast<double>(start.numerator) / static_cast<double>(start.denominator);
  const double last = first + static_cast<double>(duration) * static_cast<double>(speed.numerator) /
                                  static_cast<double>(speed.denominator);
  const auto& info = *found->second;
  const double limitEnd = static_cast<double>(info.limitIn) + static_cast<double>(info.duration);
  if (first < static_cast<double>(info.limitIn) || last > limitEnd + 1e-9) {
    Approximate(id, element,
                "the time-warped clip consumes media frames " + std::to_string(first) + " to " +
                    std::to_string(last) + ", outside the available range " +
                    std::to_string(info.limitIn) + " to " +
                    std::to_string(info.limitIn + info.duration));
  }
}

}  // namespace OtioWriting
}  // namespace TimelineConvert
