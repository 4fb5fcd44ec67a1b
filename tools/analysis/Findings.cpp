// The findings of a document. Everything here reads what the library produced
// (items, media infos, the aux item) or calls its public functions; the only
// rules stated here are what looks wrong to an operator and what the exports
// cannot hold. The checks run in one pass over the elements and one over the
// items, so that they stay linear in the size of the playlist.
#include "analysis/Findings.h"

#include <algorithm>
#include <limits>
#include <unordered_map>
#include <unordered_set>

#include "analysis/ExportFindings.h"
#include "document/AssetKeys.h"

namespace TimelineConvert {

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Data = Kov::Replivo::Data;
namespace Engine = Kov::TimelineEngineModel;
using Conversion::TimelineConverter;

struct KindRow {
  const char* kind;
  Severity severity;
};

// Every kind of finding the tool knows, with what it means for the outputs.
constexpr KindRow kKinds[] = {
    {"refused", Severity::Refusal},          {"negative-speed", Severity::Warning},
    {"ignored-speed", Severity::Warning},    {"missing-asset", Severity::Warning},
    {"unused-asset", Severity::Warning},     {"overlap", Severity::Warning},
    {"outside-material", Severity::Warning}, {"no-transition", Severity::Warning},
    {"zero-length-part", Severity::Warning}, {"empty-aux-item", Severity::Warning},
};

constexpr const char* kAuxItemEmpty = "the aux item lasts 0 frames: ";

class Findings {
 public:
  explicit Findings(const PlaylistDocument& document) : document_(document) {}

  void AtElement(std::size_t index, const char* kind, std::string message, Numbers numbers = {},
                 const std::string& field = "") {
    Add(kind, DocumentPlace::Element(document_, index, field), std::move(message),
        std::move(numbers));
  }

  void InAsset(std::size_t position, const char* kind, std::string message) {
    Add(kind, DocumentPlace::Asset(document_.assetOrder[position], position), std::move(message),
        {});
  }

  void InAuxTrack(const char* kind, std::string message, Numbers numbers) {
    Add(kind, DocumentPlace::AuxTrack(document_), std::move(message), std::move(numbers));
  }

  std::vector<Finding> Take() { return std::move(findings_); }

 private:
  void Add(const char* kind, DocumentPlace place, std::string message, Numbers numbers) {
    findings_.push_back(
        Finding{kind, SeverityOf(kind), std::move(place), std::move(message), std::move(numbers)});
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

Numbers SpeedNumbers(const Data::Channels::Speed& speed) {
  return {{"numerator", speed.numerator}, {"denominator", speed.denominator}};
}

void CheckSpeeds(const PlaylistDocument& document, Findings& findings) {
  const auto& elements = document.playlist.audioVideoTrack.elements;
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& speed = elements[index].speed;
    if (speed.numerator != 0 && speed.denominator != 0 &&
        (speed.numerator < 0) != (speed.denominator < 0)) {
      findings.AtElement(index, "negative-speed",
                         "speed " + SpeedText(speed) +
                             " is negative: the item's timeline length comes out negative",
                         SpeedNumbers(speed), "/speed");
    } else if (speed.numerator == 0 && speed != Data::Channels::Speed::Empty()) {
      findings.AtElement(index, "ignored-speed",
                         "speed " + SpeedText(speed) +
                             " has numerator 0 and is ignored: the speed of the element before "
                             "it goes on",
                         SpeedNumbers(speed), "/speed");
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
      findings.InAuxTrack("missing-asset", message, {});
    } else {
      findings.AtElement(position - (hasAux ? 1 : 0), "missing-asset", message);
    }
  }
  for (std::size_t position = 0; position < document.assetOrder.size(); ++position) {
    if (usedKeys.count(document.assetOrder[position].key.Text()) == 0) {
      findings.InAsset(position, "unused-asset",
                       "no element and not the aux track uses this asset");
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
                             ", with no transition between them",
                         {{"start", in},
                          {"element", static_cast<std::int64_t>(limit.element)},
                          {"end", limit.end}});
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
                         where + "before the start of its recorded material",
                         {{"frame", boundary.second}});
    } else if (assetDuration >= 0 && boundary.second > assetDuration) {
      findings.AtElement(index, "outside-material",
                         where + "after the end of its recorded material (" +
                             std::to_string(assetDuration) + " frames)",
                         {{"frame", boundary.second}, {"material", assetDuration}});
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
                                     : " gives no transition"),
                     {{"type", type}},
                     std::string(side) == "video" ? "/transitionType" : "/audioTransitionType");
}

// A part that plays media in no timeline frames: the picture marks it, and
// an interchange format drops it.
void CheckZeroLength(std::size_t index, const char* side, std::int64_t timelineLength,
                     std::int64_t mediaLength, Findings& findings) {
  if (timelineLength == 0 && mediaLength != 0) {
    findings.AtElement(index, "zero-length-part",
                       std::string("its ") + side + " plays " + std::to_string(mediaLength) +
                           " frames of media in 0 frames of the timeline",
                       {{"media", mediaLength}}, "/speed");
  }
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
    if (item->GetType() == Engine::FxVideoTransition ||
        item->GetType() == Engine::FxAudioTransition) {
      const bool audio = item->GetType() == Engine::FxAudioTransition;
      (audio ? audioTransition : videoTransition) = true;
      continue;
    }
    const auto& media = static_cast<const Engine::MediaSummaryItem&>(*item);
    if (index >= elements.size()) {
      break;
    }
    const auto& element = elements[index];
    CheckTransition(index, "video", element.transitionType, videoTransition, findings);
    CheckTransition(index, "audio", element.audioTransitionType, audioTransition, findings);
    CheckZeroLength(index, "picture", media.timelineVideoDuration, media.mediaVideoDuration,
                    findings);
    CheckZeroLength(index, "sound", media.timelineAudioDuration, media.mediaAudioDuration,
                    findings);
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
  const auto& asset = document.assets->at(AssetKeyOfClip(aux.GetUmId()));
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
  findings.InAuxTrack("empty-aux-item", kAuxItemEmpty + why, {{"marked", marked.duration}});
}

}  // namespace

const char* SeverityWord(Severity severity) {
  switch (severity) {
    case Severity::Refusal:
      return "refusal";
    case Severity::BlocksOtio:
      return "blocks-otio";
    case Severity::BlocksEdl:
      return "blocks-edl";
    case Severity::Warning:
      break;
    case Severity::Note:
      return "note";
  }
  return "warning";
}

Severity SeverityOf(const std::string& kind) {
  for (const auto& row : kKinds) {
    if (kind == row.kind) {
      return row.severity;
    }
  }
  return ExportSeverityOf(kind);
}

std::vector<Finding> FindFindings(const PlaylistDocument& document, const Outcome& outcome) {
  Findings findings(document);
  CheckSpeeds(document, findings);
  CheckAssetUse(document, findings);
  if (!outcome.refusal) {
    CheckTrack(document, outcome.timeline, findings);
    CheckAuxItem(document, outcome.timeline, findings);
  }
  auto list = findings.Take();
  AddExportFindings(document, outcome, list);
  if (outcome.refusal) {
    list.push_back(Finding{
        "refused", Severity::Refusal, outcome.refusal->place, outcome.refusal->message, {}});
  }
  return list;
}

std::string AuxItemReason(const std::vector<Finding>& findings) {
  for (const auto& finding : findings) {
    if (finding.kind == "empty-aux-item") {
      return "plays 0 frames: " + finding.message.substr(std::string(kAuxItemEmpty).size());
    }
  }
  return "";
}

}  // namespace TimelineConvert
