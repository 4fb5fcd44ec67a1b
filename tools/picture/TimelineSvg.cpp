// Draws the timeline. The horizontal scale follows the timeline's length but
// never lets a typical media item shrink below a readable width, within a
// bounded picture width; labels are only written where they fit, and every
// box carries its full details as a tooltip. Marks narrower than a band are
// gathered per band of the picture and drawn as one density band (a lone
// mark is drawn as itself), so the output grows with the picture's width,
// not with the number of items.
//
// Over 400 lines: one writer whose parts (header, ruler, lanes, bands,
// legend) all draw with the measures Measure() works out; split across files
// they would have to pass those measures around.
#include "picture/TimelineSvg.h"

#include "picture/PictureText.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;

constexpr double kLeftMargin = 124;
constexpr double kRightMargin = 30;
constexpr double kRowHeight = 22;
constexpr double kRowGap = 4;
constexpr double kLaneHeight = 2 * kRowHeight + 3 * kRowGap + 4;
constexpr double kLegendLineHeight = 18;
constexpr double kHeaderLineHeight = 18;
constexpr std::size_t kMostFindingLines = 20;
constexpr double kCharWidth = 6.6;  // 11 px monospace
constexpr double kFitWidth = 1100;
constexpr double kMinMediaWidth = 56;
constexpr double kMaxWidth = 60000;
constexpr double kMinTickSpacing = 100;
constexpr double kMinBoxWidth = 2;
constexpr double kBandWidth = 8;
constexpr double kRefusedWidth = 84;
constexpr double kSoundCornerRadius = 6;

const char* const kStyle =
    ".background{fill:#ffffff}"
    ".header{font-size:14px;font-weight:bold;fill:#1a1a1a}"
    ".subheader,.legend text{fill:#333333}"
    ".refusal{fill:#b00020;font-weight:bold}"
    ".lane{fill:#f2f4f7;stroke:#d0d5dc}"
    ".lane.alt{fill:#e8ecf1}"
    ".lane-label{fill:#1a1a1a;font-weight:bold}"
    ".row-label{fill:#667085}"
    ".picture{fill:#3d6fc4;stroke:#1c3d78;fill-opacity:0.9}"
    ".sound{fill:#2e9a5e;stroke:#17573a;fill-opacity:0.9}"
    ".speed{stroke:#f0a000;stroke-width:3;stroke-dasharray:6 3}"
    ".problem{stroke:#d0021b;stroke-width:3}"
    ".negative{fill:url(#problem-hatch)}"
    ".refused{fill:url(#refused-hatch);stroke:#d0021b;stroke-width:3}"
    ".marker{fill:#d0021b;stroke:none}"
    ".marker-line{stroke:#d0021b;stroke-width:2}"
    ".flag-label{fill:#b00020;font-weight:bold}"
    ".item-label{fill:#ffffff}"
    ".vfx{fill:url(#vfx-hatch);stroke:#c45a00;stroke-width:1.5}"
    ".afx{fill:url(#afx-hatch);stroke:#7a3ab0;stroke-width:1.5}"
    ".band{fill:#5a6b85;stroke:none}"
    ".band.fx{fill:#c45a00}"
    ".band.problem{stroke:#d0021b;stroke-width:2}"
    ".fx-label{fill:#1a1a1a}"
    ".end-line{stroke:#d0021b;stroke-width:1.5;stroke-dasharray:5 3}"
    ".end-label{fill:#b00020}"
    ".ruler line{stroke:#555555}"
    ".ruler line.minor{stroke:#aaaaaa}"
    ".ruler text{fill:#333333}";

const char* const kDefs =
    "<defs>"
    "<pattern id=\"vfx-hatch\" width=\"6\" height=\"6\" patternUnits=\"userSpaceOnUse\" "
    "patternTransform=\"rotate(45)\"><rect width=\"6\" height=\"6\" fill=\"#ffe2bd\"/>"
    "<line x1=\"0\" y1=\"0\" x2=\"0\" y2=\"6\" stroke=\"#e07b00\" stroke-width=\"3\"/></pattern>"
    "<pattern id=\"afx-hatch\" width=\"6\" height=\"6\" patternUnits=\"userSpaceOnUse\" "
    "patternTransform=\"rotate(-45)\"><rect width=\"6\" height=\"6\" fill=\"#ead9f7\"/>"
    "<line x1=\"0\" y1=\"0\" x2=\"0\" y2=\"6\" stroke=\"#8e44c8\" stroke-width=\"3\"/></pattern>"
    "<pattern id=\"problem-hatch\" width=\"8\" height=\"8\" patternUnits=\"userSpaceOnUse\" "
    "patternTransform=\"rotate(45)\"><rect width=\"8\" height=\"8\" fill=\"#ffd6dc\"/>"
    "<line x1=\"0\" y1=\"0\" x2=\"0\" y2=\"8\" stroke=\"#d0021b\" stroke-width=\"3\"/></pattern>"
    "<pattern id=\"refused-hatch\" width=\"8\" height=\"8\" patternUnits=\"userSpaceOnUse\" "
    "patternTransform=\"rotate(-45)\"><rect width=\"8\" height=\"8\" fill=\"#fff0f0\"/>"
    "<line x1=\"0\" y1=\"0\" x2=\"0\" y2=\"8\" stroke=\"#d0021b\" stroke-width=\"4\"/></pattern>"
    "</defs>";

OneDecimal Number(double value) {
  return {value};
}

std::string Frames(std::int64_t value) {
  return std::to_string(value);
}

// Characters, not bytes: UTF-8 continuation bytes take no room of their own.
std::size_t DisplayLength(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

// The first candidate that fits the width, or nothing.
std::string FittingLabel(const std::vector<std::string>& candidates, double width) {
  for (const auto& candidate : candidates) {
    if (!candidate.empty() &&
        static_cast<double>(DisplayLength(candidate)) * kCharWidth + 6 <= width) {
      return candidate;
    }
  }
  return "";
}

// The ruler's step in frames: the smallest round step whose ticks stand far
// enough apart for their labels.
double TickStep(double pixelsPerFrame, long long framesPerSecond) {
  const double minimum = kMinTickSpacing / pixelsPerFrame;
  const std::vector<long long> steps = TickSteps(framesPerSecond);
  for (const long long step : steps) {
    if (static_cast<double>(step) >= minimum) {
      return static_cast<double>(step);
    }
  }
  double step = static_cast<double>(steps.back());
  while (step < minimum) {
    step *= 2;
  }
  return step;
}

std::string PartText(const char* side, std::int64_t timelineIn, std::int64_t timelineDuration,
                     std::int64_t mediaIn, std::int64_t mediaDuration) {
  return std::string(side) + ": timeline " + Frames(timelineIn) + " + " + Frames(timelineDuration) +
         ", media " + Frames(mediaIn) + " + " +
         (mediaDuration == -1 ? std::string("open-ended") : Frames(mediaDuration));
}

bool IsMedia(MarkKind kind) {
  return kind == MarkKind::Picture || kind == MarkKind::Sound || kind == MarkKind::Refused;
}

// Marks gathered into one band of the picture.
struct Band {
  double index = 0;
  std::size_t count = 0;
  std::size_t problems = 0;
  double pixels = 0;
  const Mark* only = nullptr;
  // Named only when the band is drawn.
  const ViewItem* first = nullptr;
  const ViewItem* last = nullptr;
};

class SvgWriter {
 public:
  SvgWriter(const Engine::Timeline& timeline, const Kov::TimePoints::Rate& rate,
            const PictureLabels& labels, const TimelineView& view)
      : timeline_(timeline),
        rate_(rate),
        labels_(labels),
        view_(view),
        framesPerSecond_(NominalFrameRate(rate)) {
    Measure();
  }

  std::string Svg() {
    out_.Reserve(SizeEstimate());
    out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Number(width_) << "\" height=\""
         << Number(height_) << "\" viewBox=\"0 0 " << Number(width_) << ' ' << Number(height_)
         << "\" font-family=\"monospace\" font-size=\"11\">\n"
         << "<title>" << Escaped(labels_.title) << "</title>\n<style>" << kStyle << "</style>\n"
         << kDefs << "\n<rect class=\"background\" width=\"" << Number(width_) << "\" height=\""
         << Number(height_) << "\"/>\n";
    Header();
    Ruler();
    for (std::size_t track = 0; track < view_.trackIds.size(); ++track) {
      DrawLane(track);
    }
    EndMarker();
    Legend();
    out_ << "</svg>\n";
    return out_.Take();
  }

 private:
  void Measure() {
    const double frames = std::max(1.0, view_.lastFrame - view_.firstFrame);
    scale_ = std::max(kFitWidth / frames, kMinMediaWidth / std::max(1.0, view_.typicalLength));
    scale_ = std::min(scale_, kMaxWidth / frames);
    std::size_t longestLegend = 0;
    for (const auto& asset : labels_.assets) {
      longestLegend = std::max(longestLegend, DisplayLength(asset.first + asset.second) + 40);
    }
    if (labels_.refusal) {
      headerLines_.push_back("Refused: " + labels_.refusal->message);
      const bool drawn =
          labels_.refusal->element && *labels_.refusal->element < labels_.elements.size();
      if (!labels_.refusal->place.empty() || drawn) {
        headerLines_.push_back(labels_.refusal->place +
                               (drawn ? std::string(labels_.refusal->place.empty() ? "" : "; ") +
                                            "the elements before it are drawn as converted"
                                      : ""));
      }
    }
    refusalLines_ = headerLines_.size();
    FindingLines();
    for (const auto& line : headerLines_) {
      longestLegend = std::max(longestLegend, DisplayLength(line));
    }
    width_ = std::max(kLeftMargin + frames * scale_ + kRightMargin + kRefusedWidth,
                      24 + static_cast<double>(longestLegend) * kCharWidth);
    rulerBaseline_ = 74 + static_cast<double>(headerLines_.size()) * kHeaderLineHeight;
    lanesTop_ = rulerBaseline_ + 10;
    legendTop_ = lanesTop_ + static_cast<double>(view_.trackIds.size()) * kLaneHeight + 24;
    height_ = legendTop_ + (3 + static_cast<double>(labels_.assets.size())) * kLegendLineHeight + 8;
  }

  // The findings as check reports them, with their severity and kind; a few
  // at most, so that the header stays readable.
  void FindingLines() {
    static_assert(kMostFindingLines <= kShownFindingsPerKind, "the picture holds no more");
    // Counted from all found: the picture holds only the first of each kind.
    const std::size_t count =
        labels_.findings.CountAll() - labels_.findings.CountOf(Severity::Refusal);
    std::size_t shown = 0;
    for (const auto& finding : labels_.findings) {
      if (finding.severity == Severity::Refusal) {
        continue;
      }
      if (shown == kMostFindingLines) {
        break;
      }
      const std::string where = DescribePlace(labels_.findings.Place(finding));
      headerLines_.push_back(std::string(SeverityWord(finding.severity)) + " " +
                             KindWord(finding.kind) + " " + (where.empty() ? "" : where + ": ") +
                             labels_.findings.Message(finding));
      ++shown;
    }
    if (count > shown) {
      headerLines_.push_back("and " + std::to_string(count - shown) +
                             " more findings: timeline-convert check lists them all");
    }
  }

  // Room for the whole picture at once: grown by doubling, the text would be
  // copied as it grows and held up to three times. A row draws at most a band
  // or a wide mark per band's width, each about a kilobyte with its tooltip;
  // room that is never written costs no memory.
  std::size_t SizeEstimate() const {
    const double perRow = 2 * width_ / kBandWidth + 4;
    double size =
        16384 + 2 * width_ + 256 * static_cast<double>(headerLines_.size() + labels_.assets.size());
    for (const auto& row : view_.rows) {
      size += 1024 * std::min(static_cast<double>(row.marks.size()), perRow);
    }
    return static_cast<std::size_t>(size);
  }

  double X(double frame) const { return kLeftMargin + (frame - view_.firstFrame) * scale_; }

  void Text(const char* cssClass, double x, double y, const std::string& text) {
    out_ << "<text class=\"" << cssClass << "\" x=\"" << Number(x) << "\" y=\"" << Number(y)
         << "\">" << Escaped(text) << "</text>\n";
  }

  void Rect(const std::string& cssClass, double x, double y, double width, double height,
            double cornerRadius = 0) {
    out_ << "<rect class=\"" << cssClass << "\" x=\"" << Number(x) << "\" y=\"" << Number(y)
         << "\" width=\"" << Number(width) << "\" height=\"" << Number(height) << '"';
    if (cornerRadius > 0) {
      out_ << " rx=\"" << Number(cornerRadius) << '"';
    }
    out_ << "/>";
  }

  void Header() {
    Text("header", 12, 22, labels_.title);
    std::string mode =
        labels_.durationMode.empty() ? "" : ", duration mode " + labels_.durationMode;
    Text("subheader", 12, 40,
         "duration " + Frames(timeline_.duration) + " frames (" +
             Timecode(static_cast<double>(timeline_.duration), rate_) + ") at " +
             std::to_string(rate_.numerator) + "/" + std::to_string(rate_.denominator) + ", " +
             std::to_string(timeline_.tracks.size()) + " tracks" + mode);
    for (std::size_t line = 0; line < headerLines_.size(); ++line) {
      Text(line < refusalLines_ ? "refusal" : "flag-label", 12,
           58 + static_cast<double>(line) * kHeaderLineHeight, headerLines_[line]);
    }
  }

  void Ruler() {
    const double step = TickStep(scale_, framesPerSecond_);
    out_ << "<g class=\"ruler\">\n<line x1=\"" << Number(X(view_.firstFrame)) << "\" y1=\""
         << Number(rulerBaseline_) << "\" x2=\"" << Number(X(view_.lastFrame)) << "\" y2=\""
         << Number(rulerBaseline_) << "\"/>\n";
    const double minorStep = step / 5;
    const bool minorTicks =
        minorStep >= 1 && std::floor(minorStep) == minorStep && minorStep * scale_ >= 8;
    const double start = std::ceil(view_.firstFrame / step) * step;
    for (double index = 0; start + index * step <= view_.lastFrame; ++index) {
      const double frame = start + index * step;
      out_ << "<line x1=\"" << Number(X(frame)) << "\" y1=\"" << Number(rulerBaseline_ - 10)
           << "\" x2=\"" << Number(X(frame)) << "\" y2=\"" << Number(rulerBaseline_) << "\"/>";
      const std::string timecode = Timecode(frame, rate_);
      if (X(frame) + 2 + static_cast<double>(timecode.size()) * kCharWidth <= width_) {
        Text("tick", X(frame) + 2, rulerBaseline_ - 12, timecode);
      }
      for (int minor = 1; minorTicks && minor < 5; ++minor) {
        const double at = X(frame + minor * minorStep);
        if (frame + minor * minorStep <= view_.lastFrame) {
          out_ << "<line class=\"minor\" x1=\"" << Number(at) << "\" y1=\""
               << Number(rulerBaseline_ - 4) << "\" x2=\"" << Number(at) << "\" y2=\""
               << Number(rulerBaseline_) << "\"/>";
        }
      }
    }
    out_ << "</g>\n";
  }

  std::string AssetText(const ViewItem& item) const {
    if (item.asset < 0) {
      return "A?";
    }
    const auto index = static_cast<std::size_t>(item.asset);
    return "A" + std::to_string(index + 1) + " " + labels_.assets[index].second;
  }

  std::string ProblemText(std::uint8_t flags) const {
    std::string text;
    for (const std::uint8_t flag : {kNegative, kZero, kOverlap}) {
      if ((flags & flag) != 0) {
        text += std::string("\nFLAG: ") + ProblemWords(flag);
      }
    }
    if ((flags & kAuxZero) != 0) {
      text += "\nFLAG: " + AuxItemText(labels_.auxReason);
    }
    return text;
  }

  // A speed runs on over many elements: its text is made once per run.
  const std::string& Speed(const SourceElement& source) const {
    if (speedText_.empty() || source.speedNumerator != speedOfText_.first ||
        source.speedDenominator != speedOfText_.second) {
      speedOfText_ = {source.speedNumerator, source.speedDenominator};
      speedText_ = SpeedText(source.speedNumerator, source.speedDenominator);
    }
    return speedText_;
  }

  std::string SourceText(const ViewItem& item) const {
    if (!item.element || *item.element >= labels_.elements.size()) {
      return "";
    }
    const auto& source = labels_.elements[*item.element];
    std::string text = "\nelement " + std::to_string(*item.element) + " (number " +
                       std::to_string(source.element->number) + ", clip " +
                       source.element->umId.GetUmId() + ")";
    if (!item.transition) {
      text += "\nspeed " + Speed(source) + (source.ownSpeed ? "" : " (inherited)");
    }
    return text;
  }

  std::string Tooltip(const Mark& mark) const {
    const auto& item = view_.items[mark.item];
    if (mark.kind == MarkKind::Refused) {
      return "REFUSED element " + ItemNumber(item, labels_) + ": " + labels_.refusal->message +
             SourceText(item);
    }
    if (item.transition) {
      const auto& effect = item.Effect();
      const std::string kind = std::to_string(effect.kind);
      return std::string(item.audio ? "audio" : "video") + " transition, effect kind " + kind +
             "\noffset " + Frames(effect.offset) + ", duration " + Frames(effect.duration) +
             " frames\n" + item.Id() + SourceText(item);
    }
    const auto& media = item.Media();
    return "item " + ItemNumber(item, labels_) + " (" + item.Id() + ")\nasset " + AssetText(item) +
           " (" + media.mediaId.Text() + ")\n" +
           PartText("picture", media.timelineVideoIn, media.timelineVideoDuration,
                    media.mediaVideoIn, media.mediaVideoDuration) +
           "\n" +
           PartText("sound", media.timelineAudioIn, media.timelineAudioDuration, media.mediaAudioIn,
                    media.mediaAudioDuration) +
           SourceText(item) + ProblemText(mark.flags);
  }

  std::vector<std::string> LabelChoices(const Mark& mark) const {
    const auto& item = view_.items[mark.item];
    const std::string number = ItemNumber(item, labels_);
    if (mark.kind == MarkKind::Refused) {
      return {number + " refused", number};
    }
    if (item.transition) {
      const auto& effect = item.Effect();
      const std::string kind = std::to_string(effect.kind);
      return {"kind " + kind + ", " + Frames(effect.duration) + "f",
              "k" + kind + " " + Frames(effect.duration), "k" + kind};
    }
    std::string speed;
    if ((mark.flags & kSpeedChanged) != 0 && item.element) {
      const auto& source = labels_.elements[*item.element];
      speed = " " + Speed(source);
    }
    std::string flag;
    if ((mark.flags & kNegative) != 0) {
      flag = " " + Frames(static_cast<std::int64_t>(mark.length)) + "f!";
    } else if ((mark.flags & kOverlap) != 0) {
      flag = " overlap!";
    }
    return {number + speed + flag + " " + AssetText(item), number + speed + flag, number + speed,
            number};
  }

  std::string BoxClass(const Mark& mark, bool sound) const {
    if (mark.kind == MarkKind::Refused) {
      return "refused";
    }
    if (mark.kind == MarkKind::VideoTransition) {
      return "vfx";
    }
    if (mark.kind == MarkKind::AudioTransition) {
      return "afx";
    }
    std::string cssClass = sound ? "sound" : "picture";
    if ((mark.flags & kSpeedChanged) != 0) {
      cssClass += " speed";
    }
    if ((mark.flags & (kNegative | kOverlap)) != 0) {
      cssClass += " problem";
    }
    if ((mark.flags & kNegative) != 0) {
      cssClass += " negative";
    }
    return cssClass;
  }

  // A mark of no width on the picture that must not vanish: a line through
  // the row and a triangle above it.
  void Marker(const Mark& mark, double x, double rowTop, const std::string& label) {
    out_ << "<g class=\"flag\"><title>" << Escaped(Tooltip(mark))
         << "</title><line class=\"marker-line\" x1=\"" << Number(x) << "\" y1=\"" << Number(rowTop)
         << "\" x2=\"" << Number(x) << "\" y2=\"" << Number(rowTop + kRowHeight)
         << "\"/><path class=\"marker\" d=\"M" << Number(x) << ' ' << Number(rowTop + 7)
         << "l-5 -7h10z\"/>";
    if (!label.empty()) {
      out_ << '\n';
      Text("flag-label", x + 7, rowTop + 15, label);
    }
    out_ << "</g>\n";
  }

  void DrawMark(const std::vector<Mark>& marks, std::size_t at, bool sound, double rowTop) {
    const Mark& mark = marks[at];
    const double low = std::min(mark.start, mark.start + mark.length);
    double x = X(low);
    double width = std::abs(mark.length) * scale_;
    if (mark.kind == MarkKind::Refused) {
      width = std::max(width, kRefusedWidth);
    } else if ((mark.flags & (kZero | kAuxZero)) != 0 ||
               (width < kMinBoxWidth && (mark.flags & kNegative) != 0)) {
      const auto& item = view_.items[mark.item];
      std::string label =
          (mark.flags & kAuxZero) != 0
              ? AuxItemText(labels_.auxReason)
              : ItemNumber(item, labels_) +
                    ((mark.flags & kZero) != 0
                         ? " 0f!"
                         : " " + Frames(static_cast<std::int64_t>(mark.length)) + "f!");
      Marker(mark, x, rowTop, label);
      return;
    }
    if (width < kMinBoxWidth) {
      x -= (kMinBoxWidth - width) / 2;
      width = kMinBoxWidth;
    }
    // A media label starts after a transition drawn over its beginning; the
    // transition that opens an item comes just before it.
    double labelX = x;
    if (IsMedia(mark.kind) && at > 0 && !IsMedia(marks[at - 1].kind)) {
      const Mark& before = marks[at - 1];
      if (before.start <= low && before.start + before.length > low) {
        labelX = std::max(x, X(before.start + before.length));
      }
    }
    const bool media = mark.kind == MarkKind::Picture || mark.kind == MarkKind::Sound;
    out_ << "<g><title>" << Escaped(Tooltip(mark)) << "</title>";
    Rect(BoxClass(mark, sound), x, rowTop, width, kRowHeight,
         media && sound ? kSoundCornerRadius : 0);
    const std::string label = FittingLabel(LabelChoices(mark), x + width - labelX);
    if (!label.empty()) {
      out_ << '\n';
      Text(media                            ? "item-label"
           : mark.kind == MarkKind::Refused ? "flag-label"
                                            : "fx-label",
           labelX + 4, rowTop + 15, label);
    }
    out_ << "</g>\n";
  }

  void FlushBand(Band& band, const std::vector<Mark>& marks, bool sound, double rowTop, bool fx) {
    if (band.count == 1) {
      DrawMark(marks, static_cast<std::size_t>(band.only - marks.data()), sound, rowTop);
    } else if (band.count > 1) {
      const double x = kLeftMargin + band.index * kBandWidth;
      // The share of the band that the merged marks cover, so that a gap
      // stays lighter than a run of items; merged transitions are a strip
      // along the bottom, so the items under them stay visible.
      const double opacity = std::min(1.0, 0.3 + 0.7 * band.pixels / kBandWidth);
      out_ << "<rect class=\"band" << (fx ? " fx" : "") << (band.problems > 0 ? " problem" : "")
           << "\" x=\"" << Number(x) << "\" y=\"" << Number(fx ? rowTop + kRowHeight - 6 : rowTop)
           << "\" width=\"" << Number(kBandWidth) << "\" height=\"" << Number(fx ? 6 : kRowHeight)
           << "\" fill-opacity=\"" << Number(opacity) << "\"><title>" << band.count
           << (fx ? " transitions" : " items") << " merged, "
           << Escaped(ItemNumber(*band.first, labels_)) << "\xE2\x80\xA6"
           << Escaped(ItemNumber(*band.last, labels_));
      if (band.problems > 0) {
        out_ << ", " << band.problems << " flagged";
      }
      out_ << "</title></rect>\n";
    }
    band = Band{};
  }

  // Draws the media marks (or the transitions) of one row in track order.
  void DrawRow(const ViewRow& row, double rowTop, bool transitions) {
    Band band;
    for (std::size_t at = 0; at < row.marks.size(); ++at) {
      const Mark& mark = row.marks[at];
      if (IsMedia(mark.kind) == transitions) {
        continue;
      }
      const double low = std::min(mark.start, mark.start + mark.length);
      const double width = std::abs(mark.length) * scale_;
      if (width >= kBandWidth || mark.kind == MarkKind::Refused || (mark.flags & kAuxZero) != 0) {
        FlushBand(band, row.marks, row.sound, rowTop, transitions);
        DrawMark(row.marks, at, row.sound, rowTop);
        continue;
      }
      const double index = std::floor((X(low) - kLeftMargin) / kBandWidth);
      if (band.count > 0 && index != band.index) {
        FlushBand(band, row.marks, row.sound, rowTop, transitions);
      }
      band.index = index;
      band.only = &mark;
      const auto& item = view_.items[mark.item];
      if (band.count == 0) {
        band.first = &item;
      }
      band.last = &item;
      ++band.count;
      band.pixels += width;
      if ((mark.flags & kProblemFlags) != 0) {
        ++band.problems;
      }
    }
    FlushBand(band, row.marks, row.sound, rowTop, transitions);
  }

  void DrawLane(std::size_t track) {
    const double top = lanesTop_ + static_cast<double>(track) * kLaneHeight;
    const double pictureRow = top + kRowGap;
    const double soundRow = pictureRow + kRowHeight + kRowGap;
    const std::string name = "track " + std::to_string(track + 1);
    out_ << "<g class=\"track\">\n<title>" << Escaped(name + " " + view_.trackIds[track])
         << "</title>";
    Rect(track % 2 == 0 ? "lane" : "lane alt", 4, top, width_ - 8, kLaneHeight - 4);
    out_ << '\n';
    Text("lane-label", 10, pictureRow + 15, name);
    Text("row-label", kLeftMargin - 60, pictureRow + 15, "picture");
    Text("row-label", kLeftMargin - 60, soundRow + 15, "sound");
    // Transitions go over the media items, so the overlap stays visible.
    for (const bool transitions : {false, true}) {
      DrawRow(view_.rows[2 * track], pictureRow, transitions);
      DrawRow(view_.rows[2 * track + 1], soundRow, transitions);
    }
    out_ << "</g>\n";
  }

  void EndMarker() {
    const double x = X(static_cast<double>(timeline_.duration));
    const double bottom = lanesTop_ + static_cast<double>(view_.trackIds.size()) * kLaneHeight;
    out_ << "<g class=\"end\"><title>end of the timeline: frame " << timeline_.duration
         << "</title><line class=\"end-line\" x1=\"" << Number(x) << "\" y1=\""
         << Number(rulerBaseline_ - 14) << "\" x2=\"" << Number(x) << "\" y2=\"" << Number(bottom)
         << "\"/>\n";
    const std::string label = "end " + Timecode(static_cast<double>(timeline_.duration), rate_);
    const double labelX =
        std::min(x + 3, width_ - static_cast<double>(label.size()) * kCharWidth - 4);
    Text("end-label", labelX, bottom + 12, label);
    out_ << "</g>\n";
  }

  void Legend() {
    out_ << "<g class=\"legend\">\n";
    const struct {
      const char* cssClass;
      const char* text;
      double cornerRadius;
    } rows[2][5] = {{{"picture", "picture part", 0},
                     {"sound", "sound part", kSoundCornerRadius},
                     {"vfx", "video transition", 0},
                     {"afx", "audio transition", 0},
                     {"band", "many items merged", 0}},
                    {{"picture speed", "speed other than 1/1", 0},
                     {"picture problem negative", "negative length", 0},
                     {"picture problem", "overlap, no transition", 0},
                     {"refused", "refused element", 0},
                     {"band problem", "merged, some flagged", 0}}};
    for (int line = 0; line < 2; ++line) {
      double x = 12;
      const double keyTop = legendTop_ + line * kLegendLineHeight;
      for (const auto& key : rows[line]) {
        Rect(key.cssClass, x, keyTop, 24, 12, key.cornerRadius);
        Text("key", x + 30, keyTop + 10, key.text);
        x += 40 + static_cast<double>(std::char_traits<char>::length(key.text)) * kCharWidth;
      }
      out_ << '\n';
    }
    for (std::size_t index = 0; index < labels_.assets.size(); ++index) {
      const auto& asset = labels_.assets[index];
      std::string line = "A" + std::to_string(index + 1) + " " + asset.second + " \xC2\xB7 ";
      for (const auto& info : timeline_.mediaInfos) {
        if (info.id.Text() == asset.first) {
          line += (info.duration == -1 ? std::string("open-ended")
                                       : Frames(info.duration) + " frames") +
                  " \xC2\xB7 " +
                  (info.tracksDescription.empty() ? "no tracks" : info.tracksDescription) +
                  " \xC2\xB7 ";
        }
      }
      Text("asset", 12, legendTop_ + (3.2 + static_cast<double>(index)) * kLegendLineHeight,
           line + asset.first);
    }
    out_ << "</g>\n";
  }

  const Engine::Timeline& timeline_;
  Kov::TimePoints::Rate rate_;
  const PictureLabels& labels_;
  const TimelineView& view_;
  long long framesPerSecond_;
  mutable std::pair<std::int32_t, std::int32_t> speedOfText_;
  mutable std::string speedText_;
  std::vector<std::string> headerLines_;
  std::size_t refusalLines_ = 0;
  double scale_ = 1;
  double width_ = 0;
  double height_ = 0;
  double rulerBaseline_ = 74;
  double lanesTop_ = 84;
  double legendTop_ = 0;
  TextBuffer out_;
};

}  // namespace

std::string TimelineToSvg(const Engine::Timeline& timeline, const Kov::TimePoints::Rate& rate,
                          const PictureLabels& labels) {
  const TimelineView view = MakeTimelineView(timeline, labels);
  return SvgWriter(timeline, rate, labels, view).Svg();
}

std::string PictureToSvg(const Picture& picture) {
  return SvgWriter(picture.timeline, picture.rate, picture.labels, picture.view).Svg();
}

}  // namespace TimelineConvert
