// Findings of the track as converted: the items one after the other, with
// the transitions that open them. One pass, so that it stays linear in the
// size of the playlist.
#include <algorithm>
#include <string_view>
#include <unordered_map>

#include "analysis/FindingList.h"

namespace TimelineConvert {

namespace {

namespace Data = Kov::Replivo::Data;
namespace Engine = Kov::TimelineEngineModel;

// One side (picture or sound) of the media items, in track order: where the
// items reach so far, to find an item that starts inside earlier ones.
constexpr const char* kSides[] = {"picture", "sound"};
constexpr const char* kTransitionSides[] = {"video", "audio"};
constexpr const char* kOverlapNumbers[] = {"start", "element", "end", nullptr};

// Variant: the side, 0 picture, 1 sound.
class SideCoverage {
 public:
  explicit SideCoverage(std::uint8_t side) : side_(side) {}

  // An item that opens with a transition on this side may overlap the item
  // just before it; any other overlap has nothing to explain it.
  void Add(std::size_t index, std::int64_t in, std::int64_t duration, bool opensWithTransition,
           FindingList& findings) {
    const Reach& limit = opensWithTransition ? beforePrevious_ : all_;
    if (duration > 0 && limit.valid && in < limit.end) {
      findings.AtElement(index, FindingKind::Overlap, kOverlapNumbers,
                         {in, static_cast<std::int64_t>(limit.element), limit.end}, "", side_);
    }
    beforePrevious_ = all_;
    const std::int64_t end = SaturatingSum(in, std::max<std::int64_t>(duration, 0));
    if (!all_.valid || end > all_.end) {
      all_ = Reach{true, end, index};
    }
  }

 private:
  struct Reach {
    bool valid = false;
    std::int64_t end = 0;
    std::size_t element = 0;
  };
  std::uint8_t side_;
  Reach all_;
  Reach beforePrevious_;
};

}  // namespace

void OverlapMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += std::string("its ") + kSides[finding.variant] + " starts at frame " +
         std::to_string(finding.values[0]) + ", inside element " +
         std::to_string(finding.values[1]) + "'s, which runs to frame " +
         std::to_string(finding.values[2]) + ", with no transition between them";
}

namespace {

// Variant: bit 0 the side (picture, sound), bit 1 the OUT boundary, bit 2
// after the end rather than before the start.
constexpr const char* kMaterialNumbers[] = {"frame", "material", nullptr};
constexpr const char* kFrameNumbers[] = {"frame", nullptr};

void CheckMaterial(std::size_t index, std::uint8_t side, std::int64_t in, std::int64_t duration,
                   std::int64_t assetDuration, FindingList& findings) {
  const std::int64_t boundaries[] = {in, SaturatingSum(in, duration)};
  for (std::uint8_t boundary = 0; boundary < 2; ++boundary) {
    const std::int64_t frame = boundaries[boundary];
    const auto variant = static_cast<std::uint8_t>(side | boundary << 1);
    if (frame < 0) {
      findings.AtElement(index, FindingKind::OutsideMaterial, kFrameNumbers, {frame}, "", variant);
    } else if (assetDuration >= 0 && frame > assetDuration) {
      findings.AtElement(index, FindingKind::OutsideMaterial, kMaterialNumbers,
                         {frame, assetDuration}, "", static_cast<std::uint8_t>(variant | 4));
    }
  }
}

// Variant: 0 video, 1 audio.
constexpr const char* kTypeNumbers[] = {"type", nullptr};

void CheckTransition(std::size_t index, std::uint8_t side, std::int32_t type, bool made,
                     FindingList& findings) {
  if (type == 0 || made) {
    return;
  }
  findings.AtElement(index, FindingKind::NoTransition, kTypeNumbers, {type},
                     side == 0 ? "/transitionType" : "/audioTransitionType", side);
}

// A part that plays media in no timeline frames: the picture marks it, and
// an interchange format drops it. Variant: the side.
constexpr const char* kMediaNumbers[] = {"media", nullptr};

void CheckZeroLength(std::size_t index, std::uint8_t side, std::int64_t timelineLength,
                     std::int64_t mediaLength, FindingList& findings) {
  if (timelineLength == 0 && mediaLength != 0) {
    findings.AtElement(index, FindingKind::ZeroLengthPart, kMediaNumbers, {mediaLength}, "/speed",
                       side);
  } else if (timelineLength == 0) {
    findings.AtElement(index, FindingKind::PlaysNothing, nullptr, {}, "", side);
  }
}

}  // namespace

void OutsideMaterialMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += std::string(kSides[finding.variant & 1]) + ((finding.variant & 2) != 0 ? " OUT" : " IN") +
         " at frame " + std::to_string(finding.values[0]) + " of the asset lies ";
  if ((finding.variant & 4) == 0) {
    out += "before the start of its recorded material";
  } else {
    out +=
        "after the end of its recorded material (" + std::to_string(finding.values[1]) + " frames)";
  }
}

void NoTransitionMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += std::string(kTransitionSides[finding.variant]) + " transition type " +
         std::to_string(finding.values[0]) +
         (finding.index == 0 ? " is ignored: the first element of a track opens with none"
                             : " gives no transition");
}

void ZeroLengthMessage(std::string& out, const Finding& finding, const FindingSource&) {
  out += std::string("its ") + kSides[finding.variant] + " plays ";
  if (finding.kind == FindingKind::ZeroLengthPart) {
    out += std::to_string(finding.values[0]) + " frames of media in 0 frames of the timeline";
  } else {
    out += "0 frames: its IN and OUT meet";
  }
}

namespace {

// The picture and sound of one item, and the speed it plays at, for the
// handles of the transition that opens the next item.
struct PlayedItem {
  std::size_t element = 0;
  std::int64_t videoIn = 0;
  std::int64_t videoDuration = 0;
  std::int64_t audioIn = 0;
  std::int64_t audioDuration = 0;
  std::int64_t assetDuration = -1;
  Data::Channels::Speed speed{1, 1};
};

// Source frames that `frames` of the timeline play at `speed` (a slowed item
// consumes fewer, a sped-up one more); -1 for a speed that plays backwards or
// not at all, whose findings say so already.
std::int64_t SourceFrames(std::int64_t frames, const Data::Channels::Speed& speed) {
  if (speed.numerator <= 0 || speed.denominator <= 0) {
    return -1;
  }
  return SaturatingProduct(frames, speed.numerator) / speed.denominator;
}

// A transition overlaps its cut: the item before it plays on for the part
// after the cut, and the item it opens starts early by the part before the
// cut. Both must find that material inside their recorded ranges.
// Variant: bit 0 audio, bit 1 before the IN rather than after the OUT.
constexpr const char* kHandleAfterNumbers[] = {"handle", "out", "material", "handleElement",
                                               nullptr};
constexpr const char* kHandleBeforeNumbers[] = {"handle", "in", "handleElement", nullptr};

void CheckHandles(const PlayedItem& before, const PlayedItem& opened,
                  const Engine::TransitionEffect& effect, bool audio, FindingList& findings) {
  const char* const field = audio ? "/audioTransitionDuration" : "/videoTransitionDuration";
  const auto side = static_cast<std::uint8_t>(audio ? 1 : 0);
  const std::int64_t afterCut = SourceFrames(effect.duration - effect.offset, before.speed);
  const std::int64_t out = SaturatingSum(audio ? before.audioIn : before.videoIn,
                                         audio ? before.audioDuration : before.videoDuration);
  if (afterCut > 0 && before.assetDuration >= 0 &&
      SaturatingSum(out, afterCut) > before.assetDuration) {
    findings.AtElement(
        opened.element, FindingKind::TransitionOutsideMaterial, kHandleAfterNumbers,
        {afterCut, out, before.assetDuration, static_cast<std::int64_t>(before.element)}, field,
        side);
  }
  const std::int64_t beforeCut = SourceFrames(effect.offset, opened.speed);
  const std::int64_t in = audio ? opened.audioIn : opened.videoIn;
  if (beforeCut > 0 && in - beforeCut < 0) {
    findings.AtElement(opened.element, FindingKind::TransitionOutsideMaterial, kHandleBeforeNumbers,
                       {beforeCut, in, static_cast<std::int64_t>(opened.element)}, field,
                       static_cast<std::uint8_t>(side | 2));
  }
}

}  // namespace

void TransitionOutsideMaterialMessage(std::string& out, const Finding& finding,
                                      const FindingSource&) {
  out += std::string("its ") + kTransitionSides[finding.variant & 1] + " transition needs " +
         std::to_string(finding.values[0]);
  if ((finding.variant & 2) == 0) {
    out += " frames of element " + std::to_string(finding.values[3]) +
           "'s material after its OUT (frame " + std::to_string(finding.values[1]) +
           "), past the end of the recording (" + std::to_string(finding.values[2]) + " frames)";
  } else {
    out += " frames of its material before its IN (frame " + std::to_string(finding.values[1]) +
           "), before the start of the recording";
  }
}

namespace {

// Picture and sound that start apart: each overlapping transition pulls one
// side earlier, and every item after it keeps the offset. Variant: 1 when the
// offset comes from a transition.
constexpr const char* kDriftNumbers[] = {"pictureStart", "soundStart", "offset", "causeElement",
                                         nullptr};

class DriftWatch {
 public:
  explicit DriftWatch(std::int64_t accepted) : accepted_(accepted) {}

  // An item that opens with a transition starts early on that side on
  // purpose: it overlaps the item before it. The items after it keep the offset.
  void Add(std::size_t index, std::int64_t pictureStart, std::int64_t soundStart,
           bool opensWithTransition, FindingList& findings) {
    const std::int64_t offset = SaturatingSum(pictureStart, -soundStart);
    if (offset != offset_) {
      offset_ = offset;
      cause_ = index;
      causeIsTransition_ = opensWithTransition;
      if (opensWithTransition) {
        return;
      }
    }
    if (offset == 0 || (offset >= -accepted_ && offset <= accepted_)) {
      return;
    }
    findings.AtElement(index, FindingKind::AvDrift, kDriftNumbers,
                       {pictureStart, soundStart, offset, static_cast<std::int64_t>(cause_)}, "",
                       causeIsTransition_ ? 1 : 0);
  }

 private:
  std::int64_t accepted_;
  std::int64_t offset_ = 0;
  std::size_t cause_ = 0;
  bool causeIsTransition_ = false;
};

}  // namespace

void AvDriftMessage(std::string& out, const Finding& finding, const FindingSource&) {
  const std::int64_t offset = finding.values[2];
  const std::int64_t apart = offset < 0 ? SaturatingSum(0, -offset) : offset;
  out += "its picture starts at frame " + std::to_string(finding.values[0]) +
         " and its sound at frame " + std::to_string(finding.values[1]) + ": the picture plays " +
         std::to_string(apart) + " frames " + (offset < 0 ? "before" : "after") +
         " the sound, since " + (finding.variant != 0 ? "the transition of " : "") + "element " +
         std::to_string(finding.values[3]);
}

void CheckTrack(FindingList& findings, const Engine::Timeline& timeline,
                const FindingOptions& options) {
  // Keyed by views of the timeline's own identifier texts: nothing copied.
  std::unordered_map<std::string_view, std::int64_t> assetDuration;
  assetDuration.reserve(timeline.mediaInfos.size());
  for (const auto& info : timeline.mediaInfos) {
    assetDuration.emplace(info.id.Text(), info.duration);
  }
  const auto& elements = findings.Document().playlist.audioVideoTrack.elements;
  SideCoverage picture(0);
  SideCoverage sound(1);
  DriftWatch drift(options.maxDrift);
  std::size_t index = 0;
  std::vector<std::pair<Engine::TransitionEffect, bool>> transitions;
  PlayedItem previous;
  Data::Channels::Speed speed{1, 1};
  for (const auto& item : timeline.tracks.at(0).items) {
    if (item->GetType() == Engine::FxVideoTransition ||
        item->GetType() == Engine::FxAudioTransition) {
      const bool audio = item->GetType() == Engine::FxAudioTransition;
      const auto& transition = static_cast<const Engine::FxTransitionItem&>(*item);
      transitions.emplace_back(transition.FxTransition(), audio);
      continue;
    }
    const auto& media = static_cast<const Engine::MediaSummaryItem&>(*item);
    if (index >= elements.size()) {
      break;
    }
    const auto& element = elements[index];
    const auto opens = [&transitions](bool audio) {
      return std::any_of(transitions.begin(), transitions.end(),
                         [audio](const auto& transition) { return transition.second == audio; });
    };
    const bool videoTransition = opens(false);
    const bool audioTransition = opens(true);
    CheckTransition(index, 0, element.transitionType, videoTransition, findings);
    CheckTransition(index, 1, element.audioTransitionType, audioTransition, findings);
    CheckZeroLength(index, 0, media.timelineVideoDuration, media.mediaVideoDuration, findings);
    CheckZeroLength(index, 1, media.timelineAudioDuration, media.mediaAudioDuration, findings);
    const auto found = assetDuration.find(media.mediaId.Text());
    const std::int64_t duration = found == assetDuration.end() ? -1 : found->second;
    CheckMaterial(index, 0, media.mediaVideoIn, media.mediaVideoDuration, duration, findings);
    CheckMaterial(index, 1, media.mediaAudioIn, media.mediaAudioDuration, duration, findings);
    // The speed in force, as the conversion carries it from element to element.
    if (element.speed != Data::Channels::Speed::Empty() && element.speed.numerator != 0) {
      speed = element.speed;
    }
    const PlayedItem played{index,
                            media.mediaVideoIn,
                            media.mediaVideoDuration,
                            media.mediaAudioIn,
                            media.mediaAudioDuration,
                            duration,
                            speed};
    for (const auto& [effect, audio] : transitions) {
      CheckHandles(previous, played, effect, audio, findings);
    }
    picture.Add(index, media.timelineVideoIn, media.timelineVideoDuration, videoTransition,
                findings);
    sound.Add(index, media.timelineAudioIn, media.timelineAudioDuration, audioTransition, findings);
    drift.Add(index, media.timelineVideoIn, media.timelineAudioIn,
              videoTransition || audioTransition, findings);
    transitions.clear();
    previous = played;
    ++index;
  }
}

}  // namespace TimelineConvert
