// Works out the marks of the picture in one pass over the timeline, so that
// drawing stays linear in the number of items whatever the drawing does.
#include "picture/TimelineView.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <cstdlib>

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;
namespace Data = Kov::Replivo::Data;

}  // namespace

const std::string& ViewItem::Id() const {
  // The refused element is no timeline item and has no identifier.
  static const std::string none;
  return source != nullptr ? source->Id().Text() : none;
}

const Engine::MediaSummaryItem& ViewItem::Media() const {
  static const Engine::MediaSummaryItem none;
  return source != nullptr && !transition ? static_cast<const Engine::MediaSummaryItem&>(*source)
                                          : none;
}

const Engine::TransitionEffect& ViewItem::Effect() const {
  static const Engine::TransitionEffect none;
  return source != nullptr && transition
             ? static_cast<const Engine::FxTransitionItem&>(*source).FxTransition()
             : none;
}

void AppendItemNumber(std::string& out, const ViewItem& item, const PictureLabels& labels) {
  if (item.aux) {
    out += "aux";
    return;
  }
  if (item.element) {
    char digits[16] = {'#'};
    out.append(digits, std::to_chars(digits + 1, digits + sizeof digits,
                                     labels.elements[*item.element].element->itemNumber)
                           .ptr);
    if (item.transition) {
      out += ' ';
    }
  } else if (!item.transition) {
    out += "#?";
  }
  if (item.transition) {
    out += item.audio ? "audio fx" : "video fx";
  }
}

std::string ItemNumber(const ViewItem& item, const PictureLabels& labels) {
  std::string number;
  AppendItemNumber(number, item, labels);
  return number;
}

PictureLabels LabelsFromDocument(const PlaylistDocument& document, bool playlistDuration) {
  PictureLabels labels;
  const auto& playlist = document.playlist;
  labels.title = "Timeline " + std::string(playlist.umId.GetUmId());
  for (const auto& asset : document.assetOrder) {
    labels.assets.emplace_back(asset.key.Text(),
                               asset.umId.empty() ? asset.key.Text() : asset.umId);
  }
  // The speed runs on from element to element, as the conversion carries it.
  Data::Channels::Speed speed{1, 1};
  const auto& elements = playlist.audioVideoTrack.elements;
  labels.elements.reserve(elements.size());
  for (std::size_t index = 0; index < elements.size(); ++index) {
    const auto& element = elements[index];
    SourceElement source;
    source.element = &element;
    source.ownSpeed =
        element.speed != Data::Channels::Speed::Empty() && element.speed.numerator != 0;
    if (source.ownSpeed) {
      speed = element.speed;
    }
    source.speedNumerator = speed.numerator;
    source.speedDenominator = speed.denominator;
    labels.elements.push_back(std::move(source));
  }
  // The elements' items are the first track; the aux clip's, when there is
  // one, the second.
  if (playlist.auxTrackUmId != Data::Clips::UmId::Empty()) {
    labels.auxTrack = kAuxTrack;
  }
  labels.durationMode = playlistDuration ? "playlist (the playlist's own duration)"
                                         : "items (the timeline ends with its last media item)";
  return labels;
}

PictureLabels LabelsFromOutcome(const PlaylistDocument& document, const Outcome& outcome,
                                Findings findings) {
  auto labels = LabelsFromDocument(
      document,
      outcome.mode ==
          Kov::Replivo::Tollan::TimelineEngineConversion::TimelineConverter::FromPlaylist);
  labels.auxReason = AuxItemReason(findings);
  if (outcome.refusal) {
    const auto& place = outcome.refusal->place;
    // The explanation names the value to change; the bare place only where
    // there is none, as the tool's own refusal line does.
    const auto& explanation = outcome.refusal->explanation;
    labels.refusal = PictureRefusal{outcome.refusal->message, std::nullopt,
                                    explanation ? explanation->text : DescribePlace(place)};
    if (place.source == DocumentPlace::Source::Element) {
      labels.refusal->element = place.element;
    }
  }
  labels.findings = std::move(findings);
  return labels;
}

namespace {

// The problem flags of every part the picture draws, read once from the
// findings: check judges, the picture only shows what it reports, at the same
// element and side. Two bytes per element, so that a long sequence's million
// findings are walked once and never searched.
class ProblemFlags {
 public:
  ProblemFlags(const Findings& findings, std::size_t elementCount)
      : elementSides_(2 * elementCount, 0) {
    for (const auto& finding : findings) {
      refused_ = refused_ || finding.severity == Severity::Refusal;
      if (finding.kind == FindingKind::EmptyAuxItem) {
        auxSides_[1] |= kAuxZero;
      } else if (finding.kind == FindingKind::NegativeDuration &&
                 finding.subject == FindingSubject::Spelled) {
        // Held in words only for the aux item, which is sound only.
        auxSides_[1] |= kNegative;
      } else if (finding.subject == FindingSubject::Element && finding.index < elementCount) {
        AddAtElement(finding, &elementSides_[2 * std::size_t{finding.index}]);
      }
    }
  }

  // Side 0 picture, 1 sound; the aux item when there is no element.
  std::uint8_t Of(std::optional<std::uint32_t> element, bool aux, int side) const {
    if (aux) {
      return auxSides_[side];
    }
    return element ? elementSides_[2 * std::size_t{*element} + static_cast<std::size_t>(side)] : 0;
  }
  bool Refused() const { return refused_; }

 private:
  // Overlap and zero-length-part name their side; negative-duration quotes
  // both lengths.
  static void AddAtElement(const Finding& finding, std::uint8_t* sides) {
    switch (finding.kind) {
      case FindingKind::Overlap:
        sides[finding.variant & 1] |= kOverlap;
        break;
      case FindingKind::ZeroLengthPart:
        sides[finding.variant & 1] |= kZero;
        break;
      case FindingKind::NegativeDuration:
        for (int side = 0; side < 2; ++side) {
          if (finding.values[side] < 0) {
            sides[side] |= kNegative;
          }
        }
        break;
      default:
        break;
    }
  }

  std::vector<std::uint8_t> elementSides_;
  std::uint8_t auxSides_[2] = {0, 0};
  bool refused_ = false;
};

struct ViewBuilder {
  const PictureLabels& labels;
  ProblemFlags problems;
  TimelineView view;
  std::unordered_map<std::string, int> assetIndex;
  std::vector<double> mediaLengths;

  // Where each row's last part ends (for a part not drawn, where it is
  // placed): the refused element is drawn after the last one.
  void AddPart(ViewRow& row, double& end, std::int64_t start, std::int64_t length,
               std::uint8_t flags, std::uint32_t item) {
    const Mark mark{static_cast<double>(start), static_cast<double>(length),
                    row.sound ? MarkKind::Sound : MarkKind::Picture, flags, item};
    end = std::max(mark.start, mark.start + mark.length);
    if (length > 0) {
      mediaLengths.push_back(mark.length);
    }
    view.items[item].flags |= mark.flags;
    row.marks.push_back(mark);
  }

  void AddMedia(std::uint32_t track, const Engine::MediaSummaryItem& media,
                std::optional<std::uint32_t> element, bool aux, double* ends) {
    ViewItem item;
    item.source = &media;
    item.element = element;
    item.aux = aux;
    item.track = track;
    const auto asset = assetIndex.find(media.mediaId.Text());
    item.asset = asset != assetIndex.end() ? asset->second : -1;
    // Not a judgement: the speed is shown as the element plays it.
    std::uint8_t speed = 0;
    if (item.element) {
      const auto& source = labels.elements[*item.element];
      if (source.speedNumerator != source.speedDenominator) {
        speed = kSpeedChanged;
      }
    }
    const auto index = static_cast<std::uint32_t>(view.items.size());
    view.items.push_back(item);
    auto& rows = view.rows;
    const auto flags = [&](int side) {
      return static_cast<std::uint8_t>(speed | problems.Of(element, aux, side));
    };
    // A part the element does not have is 0 on both sides and is not drawn;
    // the aux item that plays nothing is drawn all the same, as a marker.
    if (media.timelineVideoDuration != 0 || media.mediaVideoDuration != 0) {
      AddPart(rows[2 * track], ends[0], media.timelineVideoIn, media.timelineVideoDuration,
              flags(0), index);
    } else {
      ends[0] = static_cast<double>(media.timelineVideoIn);
    }
    if (media.timelineAudioDuration != 0 || media.mediaAudioDuration != 0 || aux) {
      AddPart(rows[2 * track + 1], ends[1], media.timelineAudioIn, media.timelineAudioDuration,
              flags(1), index);
    } else {
      ends[1] = static_cast<double>(media.timelineAudioIn);
    }
  }

  // A transition lies `offset` frames before the cut, which is where the
  // previous media item's part ends, and lasts `duration` frames.
  void AddTransition(std::uint32_t track, const Engine::FxTransitionItem& fx,
                     std::optional<std::uint32_t> element,
                     const Engine::MediaSummaryItem* previous) {
    const bool sound = fx.GetType() == Engine::FxAudioTransition;
    ViewItem item;
    item.source = &fx;
    item.element = element;
    item.track = track;
    item.transition = true;
    item.audio = sound;
    const auto& effect = fx.FxTransition();
    const auto index = static_cast<std::uint32_t>(view.items.size());
    view.items.push_back(item);
    if (previous == nullptr) {
      return;
    }
    const double cut = sound ? static_cast<double>(previous->timelineAudioIn) +
                                   static_cast<double>(previous->timelineAudioDuration)
                             : static_cast<double>(previous->timelineVideoIn) +
                                   static_cast<double>(previous->timelineVideoDuration);
    view.rows[2 * track + (sound ? 1 : 0)].marks.push_back(
        Mark{cut - static_cast<double>(effect.offset), static_cast<double>(effect.duration),
             sound ? MarkKind::AudioTransition : MarkKind::VideoTransition, 0, index});
  }

  // The refusal's finding says the playlist is refused; the outcome's refusal
  // names the element that fails, which may lie before the value to change.
  void AddRefused(const double* ends) {
    const auto& refusal = *labels.refusal;
    if (!problems.Refused() || !refusal.element || *refusal.element >= labels.elements.size() ||
        view.rows.empty()) {
      return;
    }
    ViewItem item;
    item.element = static_cast<std::uint32_t>(*refusal.element);
    item.flags = kRefused;
    const auto index = static_cast<std::uint32_t>(view.items.size());
    view.items.push_back(item);
    for (int side = 0; side < 2; ++side) {
      view.rows[static_cast<std::size_t>(side)].marks.push_back(
          Mark{ends[side], 0, MarkKind::Refused, kRefused, index});
    }
  }
};

}  // namespace

namespace {

TimelineView ViewWithFlags(const Engine::Timeline& timeline, const PictureLabels& labels,
                           ProblemFlags flags) {
  ViewBuilder builder{labels, std::move(flags), {}, {}, {}};
  for (std::size_t index = 0; index < labels.assets.size(); ++index) {
    builder.assetIndex.emplace(labels.assets[index].first, static_cast<int>(index));
  }
  auto& view = builder.view;
  // A refused playlist may have converted nothing; its refused element still
  // needs a lane to be drawn in.
  const std::size_t trackCount =
      std::max<std::size_t>(timeline.tracks.size(), labels.refusal ? 1 : 0);
  view.rows.reserve(2 * trackCount);
  for (std::size_t track = 0; track < trackCount; ++track) {
    view.rows.push_back(ViewRow{track, false, {}});
    view.rows.push_back(ViewRow{track, true, {}});
    view.trackIds.push_back(track < timeline.tracks.size() ? timeline.tracks[track].id.Text() : "");
  }
  std::vector<double> ends(2 * trackCount, 0.0);
  // Every item is one view item, and at most one mark in each of its rows.
  std::size_t itemCount = 1;
  for (std::size_t track = 0; track < timeline.tracks.size(); ++track) {
    const std::size_t items = timeline.tracks[track].items.size();
    itemCount += items;
    view.rows[2 * track].marks.reserve(items);
    view.rows[2 * track + 1].marks.reserve(items);
  }
  view.items.reserve(itemCount);
  builder.mediaLengths.reserve(2 * itemCount);
  for (std::size_t track = 0; track < timeline.tracks.size(); ++track) {
    const auto trackIndex = static_cast<std::uint32_t>(track);
    const Engine::MediaSummaryItem* previous = nullptr;
    ElementWalk elements(track == labels.elementTrack, labels.elements.size());
    const bool auxTrack = labels.auxTrack && track == *labels.auxTrack;
    for (const auto& item : timeline.tracks[track].items) {
      const std::optional<std::uint32_t> element = elements.Next(item.get());
      if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
        builder.AddMedia(trackIndex, *media, element, auxTrack, &ends[2 * track]);
        previous = media;
      } else if (const auto* fx = dynamic_cast<const Engine::FxTransitionItem*>(item.get())) {
        builder.AddTransition(trackIndex, *fx, element, previous);
      }
    }
  }
  if (labels.refusal) {
    builder.AddRefused(ends.data());
  }
  double first = 0;
  double last = std::max(1.0, static_cast<double>(timeline.duration));
  for (const auto& row : view.rows) {
    for (const auto& mark : row.marks) {
      first = std::min({first, mark.start, mark.start + mark.length});
      last = std::max({last, mark.start, mark.start + mark.length});
    }
  }
  view.firstFrame = first;
  view.lastFrame = std::max(last, first + 1);
  auto& lengths = builder.mediaLengths;
  view.typicalLength = view.lastFrame - view.firstFrame;
  if (!lengths.empty()) {
    std::nth_element(lengths.begin(),
                     lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2),
                     lengths.end());
    view.typicalLength = lengths[lengths.size() / 2];
  }
  return std::move(builder.view);
}

}  // namespace

TimelineView MakeTimelineView(const Engine::Timeline& timeline, const PictureLabels& labels) {
  return ViewWithFlags(timeline, labels, ProblemFlags(labels.findings, labels.elements.size()));
}

Picture MakePicture(const PlaylistDocument& document, const Outcome& outcome, Findings findings) {
  // The flags are all the marks need of the findings, and the writers name a
  // bounded number of each kind: the rest are let go before the labels, the
  // view and the text are built. One flag pair per element of the document,
  // as the labels hold them.
  ProblemFlags flags(findings, document.playlist.audioVideoTrack.elements.size());
  findings.KeepFirstOfEachKind(kShownFindingsPerKind);
  Picture picture{outcome.timeline,
                  document.playlist.rate,
                  LabelsFromOutcome(document, outcome, std::move(findings)),
                  {}};
  picture.view = ViewWithFlags(outcome.timeline, picture.labels, std::move(flags));
  return picture;
}

}  // namespace TimelineConvert
