// The findings of `timeline-convert check`. Everything here reads what the
// library produced (items, media infos, the aux item) or calls its public
// functions; the only rules stated here are what looks wrong to an operator.
#include "Check.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include "Diagnostics.h"

namespace TimelineConvert {

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Data = Kov::Replivo::Data;
namespace Engine = Kov::TimelineEngineModel;
using Conversion::TimelineConverter;

class Findings {
 public:
  explicit Findings(const PlaylistDocument& document) : document_(document) {}

  void AtElement(std::size_t index, const char* kind, std::string message) {
    const auto& element = document_.playlist.audioVideoTrack.elements[index];
    RefusalPlace place;
    place.source = RefusalPlace::Source::Element;
    place.element = index;
    place.itemNumber = element.itemNumber;
    place.clip = element.umId.GetUmId();
    Add(kind, std::move(place), std::move(message));
  }

  void InAsset(const DocumentAsset& asset, const char* kind, std::string message) {
    RefusalPlace place;
    place.source = RefusalPlace::Source::Asset;
    place.asset = asset.key.Text();
    place.clip = asset.umId;
    Add(kind, std::move(place), std::move(message));
  }

  void InAuxTrack(const char* kind, std::string message) {
    RefusalPlace place;
    place.auxTrack = true;
    place.clip = document_.playlist.auxTrackUmId.GetUmId();
    Add(kind, std::move(place), std::move(message));
  }

  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  void Add(const char* kind, RefusalPlace place, std::string message) {
    place.message = std::move(message);
    findings_.push_back(Finding{kind, std::move(place)});
  }

  const PlaylistDocument& document_;
  std::vector<Finding> findings_;
};

// a + b, held at the int64 limits: the document may hold any 64-bit values.
std::int64_t SaturatingSum(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) {
    return b > 0 ? std::numeric_limits<std::int64_t>::max()
                 : std::numeric_limits<std::int64_t>::min();
  }
  return sum;
}

std::string SpeedText(const Data::Channels::Speed& speed) {
  return std::to_string(speed.numerator) + "/" + std::to_string(speed.denominator);
}

void CheckSpeeds(const PlaylistDocument& document, Findings& findings) {
  const auto& elements = document.playlist.audioVideoTrack.elements;
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& speed = elements[index].speed;
    if (speed.numerator != 0 && speed.denominator != 0 &&
        (speed.numerator < 0) != (speed.denominator < 0)) {
      findings.AtElement(index, "negative-speed",
                         "speed " + SpeedText(speed) +
                             " is negative: the item's timeline length comes out negative");
    } else if (speed.numerator == 0 && speed != Data::Channels::Speed::Empty()) {
      findings.AtElement(index, "ignored-speed",
                         "speed " + SpeedText(speed) +
                             " has numerator 0 and is ignored: the speed of the element before "
                             "it goes on");
    }
  }
}

// Assets nobody uses, and used assets the document lacks (each reported once,
// where it is first used).
void CheckAssetUse(const PlaylistDocument& document, Findings& findings) {
  const auto used = TimelineConverter::ListAssetsFromPlaylist(document.playlist);
  std::unordered_set<std::string> usedKeys;
  const bool hasAux = document.playlist.auxTrackUmId != Data::Clips::UmId::Empty();
  for (std::size_t position = 0; position < used.size(); ++position) {
    const std::string& key = used[position].Text();
    if (!usedKeys.insert(key).second || document.assets->count(used[position]) != 0) {
      continue;
    }
    const std::string message = "uses the asset " + key + ", which the document does not give";
    if (hasAux && position == 0) {
      findings.InAuxTrack("missing-asset", message);
    } else {
      findings.AtElement(position - (hasAux ? 1 : 0), "missing-asset", message);
    }
  }
  for (const auto& asset : document.assetOrder) {
    if (usedKeys.count(asset.key.Text()) == 0) {
      findings.InAsset(asset, "unused-asset", "no element and not the aux track uses this asset");
    }
  }
}

// One side (picture or sound) of the media items, in track order: where the
// items reach so far, to find an item that starts inside earlier ones.
class SideCoverage {
 public:
  explicit SideCoverage(const char* side) : side_(side) {}

  // An item that opens with a transition on this side may overlap the item
  // just before it; any other overlap has nothing to explain it.
  void Add(std::size_t index, std::int64_t in, std::int64_t duration, bool opensWithTransition,
           Findings& findings) {
    const Reach& limit = opensWithTransition ? beforePrevious_ : all_;
    if (duration > 0 && limit.valid && in < limit.end) {
      findings.AtElement(index, "overlap",
                         std::string("its ") + side_ + " starts at frame " + std::to_string(in) +
                             ", inside element " + std::to_string(limit.element) +
                             "'s, which runs to frame " + std::to_string(limit.end) +
                             ", with no transition between them");
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
  const char* side_;
  Reach all_;
  Reach beforePrevious_;
};

void CheckMaterial(std::size_t index, const char* side, std::int64_t in, std::int64_t duration,
                   std::int64_t assetDuration, Findings& findings) {
  const std::pair<const char*, std::int64_t> boundaries[] = {{"IN", in},
                                                             {"OUT", SaturatingSum(in, duration)}};
  for (const auto& boundary : boundaries) {
    const std::string where = std::string(side) + " " + boundary.first + " at frame " +
                              std::to_string(boundary.second) + " of the asset lies ";
    if (boundary.second < 0) {
      findings.AtElement(index, "outside-material",
                         where + "before the start of its recorded material");
    } else if (assetDuration >= 0 && boundary.second > assetDuration) {
      findings.AtElement(index, "outside-material",
                         where + "after the end of its recorded material (" +
                             std::to_string(assetDuration) + " frames)");
    }
  }
}

void CheckTransition(std::size_t index, const char* side, std::int32_t type, bool made,
                     Findings& findings) {
  if (type == 0 || made) {
    return;
  }
  findings.AtElement(index, "no-transition",
                     std::string(side) + " transition type " + std::to_string(type) +
                         (index == 0 ? " is ignored: the first element of a track opens with none"
                                     : " gives no transition"));
}

void CheckTrack(const PlaylistDocument& document, const Engine::Timeline& timeline,
                Findings& findings) {
  std::unordered_map<std::string, std::int64_t> assetDuration;
  for (const auto& info : timeline.mediaInfos) {
    assetDuration.emplace(info.id.Text(), info.duration);
  }
  const auto& elements = document.playlist.audioVideoTrack.elements;
  SideCoverage picture("picture");
  SideCoverage sound("sound");
  std::size_t index = 0;
  bool videoTransition = false;
  bool audioTransition = false;
  for (const auto& item : timeline.tracks.at(0).items) {
    if (item->GetType() == Engine::FxVideoTransition) {
      videoTransition = true;
      continue;
    }
    if (item->GetType() == Engine::FxAudioTransition) {
      audioTransition = true;
      continue;
    }
    const auto& media = static_cast<const Engine::MediaSummaryItem&>(*item);
    if (index >= elements.size()) {
      break;
    }
    const auto& element = elements[index];
    CheckTransition(index, "video", element.transitionType, videoTransition, findings);
    CheckTransition(index, "audio", element.audioTransitionType, audioTransition, findings);
    if (media.timelineVideoDuration < 0 || media.timelineAudioDuration < 0) {
      findings.AtElement(index, "negative-duration",
                         "the media item lasts " + std::to_string(media.timelineVideoDuration) +
                             " frames (picture) and " +
                             std::to_string(media.timelineAudioDuration) +
                             " frames (sound) on the timeline");
    }
    const auto found = assetDuration.find(media.mediaId.Text());
    const std::int64_t duration = found == assetDuration.end() ? -1 : found->second;
    CheckMaterial(index, "picture", media.mediaVideoIn, media.mediaVideoDuration, duration,
                  findings);
    CheckMaterial(index, "sound", media.mediaAudioIn, media.mediaAudioDuration, duration, findings);
    picture.Add(index, media.timelineVideoIn, media.timelineVideoDuration, videoTransition,
                findings);
    sound.Add(index, media.timelineAudioIn, media.timelineAudioDuration, audioTransition, findings);
    videoTransition = audioTransition = false;
    ++index;
  }
}

void CheckAuxItem(const PlaylistDocument& document, const Engine::Timeline& timeline,
                  Findings& findings) {
  const auto& aux = document.playlist.auxTrackUmId;
  if (aux == Data::Clips::UmId::Empty() || timeline.tracks.size() < 2 ||
      timeline.tracks.back().items.empty()) {
    return;
  }
  const auto& item =
      static_cast<const Engine::MediaSummaryItem&>(*timeline.tracks.back().items.front());
  if (item.timelineAudioDuration != 0) {
    return;
  }
  const auto& asset = document.assets->at(AssetIdOfClip(aux.GetUmId()));
  const bool wholeMaterial = asset.assetKind == 1;
  const auto marked =
      Conversion::TimeConverter::GetShortInAndDurationFromMediaAsset(asset, document.playlist.rate);
  const std::int64_t start = asset.shortBounds.start.value;
  std::string why;
  if (marked.duration == -1) {
    why = wholeMaterial ? "the asset's material has an open end"
                        : "the asset's marked range (shortBounds) has an open end";
  } else if (!wholeMaterial && start == asset.shortBounds.end.value) {
    why = "the asset has no marked range (shortBounds)";
  } else {
    why = std::string("it plays half of the asset's ") +
          (wholeMaterial ? "material" : "marked range") + ", which is " +
          std::to_string(marked.duration) + " frames long";
  }
  findings.InAuxTrack("empty-aux-item", "the aux item lasts 0 frames: " + why);
}

}  // namespace

CheckResult CheckDocument(const PlaylistDocument& document, TimelineConverter::DurationMode mode) {
  Findings findings(document);
  CheckSpeeds(document, findings);
  CheckAssetUse(document, findings);
  CheckResult result;
  try {
    const auto timeline = TimelineConverter::ToTimeline(document.playlist, mode, document.assets);
    CheckTrack(document, timeline, findings);
    CheckAuxItem(document, timeline, findings);
  } catch (const std::exception& refusal) {
    result.refusal = LocateRefusal(document, mode);
    if (!result.refusal) {
      result.refusal = RefusalPlace();
      result.refusal->message = refusal.what();
    }
  }
  result.findings = findings.Take();
  return result;
}

std::string FindingLine(const std::string& file, const Finding& finding) {
  const std::string where = DescribePlace(finding.place);
  return file + ": " + (where.empty() ? "" : where + ": ") + finding.place.message;
}

std::string FindingJson(const std::string& file, const Finding& finding) {
  return "{\"status\":\"finding\",\"kind\":" + JsonString(finding.kind) +
         ",\"message\":" + JsonString(finding.place.message) + ",\"file\":" + JsonString(file) +
         PlaceJsonMembers(finding.place) + "}";
}

std::string CheckListing(const std::string& file, const CheckResult& result, bool json) {
  std::string listing;
  for (const Finding& finding : result.findings) {
    listing += (json ? FindingJson(file, finding) : FindingLine(file, finding)) + "\n";
  }
  if (!json) {
    const std::size_t count = result.findings.size();
    listing += file + ": " + (result.refusal ? "refused, " : "") +
               (count == 0 ? std::string("no findings")
                           : std::to_string(count) + (count == 1 ? " finding" : " findings")) +
               "\n";
  }
  return listing;
}

int CheckExitStatus(const CheckResult& result) {
  constexpr int kRefused = 2;
  constexpr int kFindingsOnly = 3;
  return result.refusal ? kRefused : result.findings.empty() ? 0 : kFindingsOnly;
}

}  // namespace TimelineConvert
