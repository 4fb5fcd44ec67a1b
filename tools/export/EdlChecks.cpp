// The checks of one side's list events against their places: every label
// within the 24 hours timecode counts, no event before frame 0, and items that
// overlap only where an overlapping transition makes them a dissolve, the
// event before it then shortened to where the dissolve starts.
#include <algorithm>
#include <numeric>

#include "export/EdlSideWriter.h"
#include "export/Timecode.h"

namespace TimelineConvert {
namespace EdlWriting {

// Every frame an event names needs a label between 00:00:00:00 and the end
// of the 24th hour.
void SideWriter::CheckTimecodes() {
  for (const auto& event : events_) {
    CheckTimecode(event);
  }
}

void SideWriter::CheckTimecode(const EdlEvent& event) {
  const std::int64_t end = FramesIn24Hours(base_);
  if (event.sourceIn < 0) {
    Problem(event.place, EdlProblemKind::MediaBeforeMaterial, {event.sourceIn});
  } else if (event.recordIn >= 0 && std::max(event.recordOut, event.sourceOut) >= end) {
    Problem(event.place, EdlProblemKind::BeyondTimecode,
            {std::max(event.recordOut, event.sourceOut), end});
  }
}

// Checks the event against the one before it and turns an overlapping
// transition into a dissolve that starts at the event's record IN.
void SideWriter::Place(EdlEvent& event, const Engine::FxTransitionItem* incoming) {
  EdlEvent* previous = events_.empty() ? nullptr : &events_.back();
  if (event.recordIn < 0) {
    Problem(event.place, EdlProblemKind::BeforeFrameZero, {event.recordIn});
  }
  std::int64_t overlap = 0;
  if (previous != nullptr &&
      __builtin_sub_overflow(previous->recordOut, event.recordIn, &overlap)) {
    Problem(event.place, EdlProblemKind::BeyondRange);
    return;
  }
  bool dissolve = false;
  if (incoming != nullptr) {
    const auto& effect = incoming->FxTransition();
    // The transition belongs to the element of the item it leads into.
    EdlPlace fxPlace = event.place;
    fxPlace.item = incoming;
    if (effect.duration == 0) {
      Approximate(fxPlace, [&] { return "transition of no length left out."; });
    } else if (effect.kind != kOverlappingKind) {
      Approximate(fxPlace, [&] {
        return "transition of kind " + std::to_string(effect.kind) + " (" +
               Frames(effect.duration) + ", " + std::to_string(effect.offset) +
               " of them before the cut) written as a cut: a list's dissolve "
               "needs the items to overlap.";
      });
    } else if (overlap <= 0) {
      event.dissolveLength = std::min(effect.duration, event.timelineDuration);
      event.fromBlack = true;
      dissolve = true;
      Approximate(fxPlace, [&] {
        return "no item before it on this side: written as a dissolve from black of " +
               Frames(event.dissolveLength) + ".";
      });
    } else {
      event.dissolveLength = overlap;
      dissolve = true;
      if (overlap > 999) {
        Approximate(fxPlace, [&] {
          return "dissolve of " + Frames(overlap) +
                 " written with more than the format's three digits.";
        });
      }
      if (overlap != effect.duration) {
        Approximate(fxPlace, [&] {
          return "transition of " + Frames(effect.duration) + " written as a dissolve of the " +
                 Frames(overlap) + " the items overlap.";
        });
      }
    }
  }
  if (previous == nullptr || overlap <= 0) {
    return;
  }
  if (!dissolve) {
    Problem(event.place, EdlProblemKind::OverlapWithoutDissolve, {overlap});
    return;
  }
  // The previous event keeps at least one frame, and all of its own dissolve.
  const std::int64_t previousStart = previous->recordIn + previous->dissolveLength;
  if (event.recordIn <= previous->recordIn || event.recordIn < previousStart ||
      event.recordOut < previous->recordOut) {
    Problem(event.place, EdlProblemKind::MoreThanOneItem, {overlap});
    return;
  }
  ShortenBeforeDissolve(*previous, event.recordIn);
  event.from = events_.size() - 1;
}

// The previous event ends where the dissolve starts; its source OUT is the
// media frame playing there, rounded to the nearest frame.
void SideWriter::ShortenBeforeDissolve(EdlEvent& previous, std::int64_t recordOut) {
  std::int64_t played = 0;
  std::int64_t product = 0;
  if (__builtin_sub_overflow(recordOut, previous.recordIn, &played) ||
      __builtin_mul_overflow(previous.mediaDuration, played, &product)) {
    Problem(previous.place, EdlProblemKind::BeyondRange);
    return;
  }
  const std::int64_t length = previous.timelineDuration;
  const std::int64_t whole = product / length;
  const std::int64_t rest = product % length;
  const std::int64_t rounded = whole + (2 * rest >= length ? 1 : 0);
  if (rest != 0) {
    const std::int64_t divisor = std::gcd(rest, length);
    Approximate(previous.place, [&] {
      return "source OUT at the dissolve " + std::to_string(whole) + " " +
             std::to_string(rest / divisor) + "/" + std::to_string(length / divisor) +
             " media frames after its IN, written as " + std::to_string(rounded) + ".";
    });
  }
  previous.recordOut = recordOut;
  previous.sourceOut = previous.sourceIn + rounded;
}

}  // namespace EdlWriting
}  // namespace TimelineConvert
