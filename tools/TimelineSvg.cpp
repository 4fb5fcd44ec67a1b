// Draws the timeline. The horizontal scale follows the timeline's length but
// never lets a typical media item shrink below a readable width, so a short
// sequence fills a screen and a long one scrolls; labels are only written
// where they fit, and every box carries its full details as a tooltip.
#include "TimelineSvg.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <sstream>

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;
namespace Data = Kov::Replivo::Data;

constexpr double kLeftMargin = 124;
constexpr double kRightMargin = 30;
constexpr double kRulerBaseline = 74;
constexpr double kLanesTop = 84;
constexpr double kRowHeight = 22;
constexpr double kRowGap = 4;
constexpr double kLaneHeight = 2 * kRowHeight + 3 * kRowGap + 4;
constexpr double kLegendLineHeight = 18;
constexpr double kCharWidth = 6.6;  // 11 px monospace
constexpr double kFitWidth = 1100;
constexpr double kMinMediaWidth = 56;
constexpr double kMaxWidth = 60000;
constexpr double kMinTickSpacing = 100;
constexpr double kMinBoxWidth = 2;
constexpr double kSoundCornerRadius = 6;

const char* const kStyle =
    ".background{fill:#ffffff}"
    ".header{font-size:14px;font-weight:bold;fill:#1a1a1a}"
    ".subheader,.legend text{fill:#333333}"
    ".lane{fill:#f2f4f7;stroke:#d0d5dc}"
    ".lane.alt{fill:#e8ecf1}"
    ".lane-label{fill:#1a1a1a;font-weight:bold}"
    ".row-label{fill:#667085}"
    ".picture{fill:#3d6fc4;stroke:#1c3d78;fill-opacity:0.9}"
    ".sound{fill:#2e9a5e;stroke:#17573a;fill-opacity:0.9}"
    ".item-label{fill:#ffffff}"
    ".vfx{fill:url(#vfx-hatch);stroke:#c45a00;stroke-width:1.5}"
    ".afx{fill:url(#afx-hatch);stroke:#7a3ab0;stroke-width:1.5}"
    ".fx-label{fill:#1a1a1a}"
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
    "</defs>";

std::string Number(double value) {
  char buffer[48];
  std::snprintf(buffer, sizeof buffer, "%.1f", value);
  return buffer;
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
    if (!candidate.empty() && DisplayLength(candidate) * kCharWidth + 6 <= width) {
      return candidate;
    }
  }
  return "";
}

// Frames at the sequence rate as HH:MM:SS:FF (non-drop-frame, at the nearest
// whole frame rate); "frame N" when the rate gives no usable frame rate.
std::string Timecode(double frame, long long framesPerSecond) {
  const long long whole = std::llround(frame);
  if (framesPerSecond <= 0) {
    return "frame " + std::to_string(whole);
  }
  const unsigned long long magnitude =
      whole < 0 ? 0ULL - static_cast<unsigned long long>(whole) : whole;
  const auto perSecond = static_cast<unsigned long long>(framesPerSecond);
  const unsigned long long seconds = magnitude / perSecond;
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%s%02llu:%02llu:%02llu:%02llu", whole < 0 ? "-" : "",
                seconds / 3600, seconds / 60 % 60, seconds % 60, magnitude % perSecond);
  return buffer;
}

long long NominalFrameRate(const Kov::TimePoints::Rate& rate) {
  if (rate.numerator <= 0 || rate.denominator <= 0) {
    return 0;
  }
  return std::max(1LL, std::llround(static_cast<double>(rate.numerator) /
                                    static_cast<double>(rate.denominator)));
}

// The ruler's step in frames: the smallest round step whose ticks stand far
// enough apart for their labels.
double TickStep(double pixelsPerFrame, long long framesPerSecond) {
  const double minimum = kMinTickSpacing / pixelsPerFrame;
  std::vector<double> steps;
  for (const double frames : {1.0, 2.0, 5.0, 10.0, 20.0}) {
    if (framesPerSecond <= 0 || frames < static_cast<double>(framesPerSecond)) {
      steps.push_back(frames);
    }
  }
  if (framesPerSecond > 0) {
    for (const double seconds : {1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600}) {
      steps.push_back(seconds * static_cast<double>(framesPerSecond));
    }
  }
  for (const double step : steps) {
    if (step >= minimum) {
      return step;
    }
  }
  double step = steps.back();
  while (step < minimum) {
    step *= 2;
  }
  return step;
}

struct Span {
  double start;
  double length;
};

// One drawn rectangle with its label choices and its tooltip.
struct Box {
  Span span;
  bool sound;
  std::vector<std::string> labels;
  std::string tooltip;
};

struct Lane {
  std::string name;
  std::string trackId;
  std::vector<Box> media;
  std::vector<Box> transitions;
};

std::string PartTooltip(const char* side, std::int64_t timelineIn, std::int64_t timelineDuration,
                        std::int64_t mediaIn, std::int64_t mediaDuration) {
  return std::string(side) + ": timeline " + Frames(timelineIn) + " + " + Frames(timelineDuration) +
         ", media " + Frames(mediaIn) + " + " +
         (mediaDuration == -1 ? std::string("open-ended") : Frames(mediaDuration));
}

class Picture {
 public:
  Picture(const Engine::Timeline& timeline, const Kov::TimePoints::Rate& rate,
          const PictureLabels& labels)
      : timeline_(timeline),
        rate_(rate),
        labels_(labels),
        framesPerSecond_(NominalFrameRate(rate)) {
    for (std::size_t index = 0; index < labels.assets.size(); ++index) {
      assetNumbers_[labels.assets[index].first] = "A" + std::to_string(index + 1);
    }
    for (std::size_t index = 0; index < timeline.tracks.size(); ++index) {
      lanes_.push_back(MakeLane(timeline.tracks[index], index));
    }
    Measure();
  }

  std::string Svg() {
    out_ << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << Number(width_) << "\" height=\""
         << Number(height_) << "\" viewBox=\"0 0 " << Number(width_) << ' ' << Number(height_)
         << "\" font-family=\"monospace\" font-size=\"11\">\n"
         << "<title>" << EscapeXml(labels_.title) << "</title>\n<style>" << kStyle << "</style>\n"
         << kDefs << "\n<rect class=\"background\" width=\"" << Number(width_) << "\" height=\""
         << Number(height_) << "\"/>\n";
    Text("header", 12, 22, labels_.title);
    Text("subheader", 12, 40,
         "duration " + Frames(timeline_.duration) + " frames (" +
             Timecode(static_cast<double>(timeline_.duration), framesPerSecond_) + ") at " +
             std::to_string(rate_.numerator) + "/" + std::to_string(rate_.denominator) + ", " +
             std::to_string(timeline_.tracks.size()) + " tracks");
    Ruler();
    for (std::size_t index = 0; index < lanes_.size(); ++index) {
      DrawLane(lanes_[index], index);
    }
    Legend();
    out_ << "</svg>\n";
    return out_.str();
  }

 private:
  Lane MakeLane(const Engine::Track& track, std::size_t index) {
    Lane lane{"track " + std::to_string(index + 1), track.id.Text(), {}, {}};
    const Engine::MediaSummaryItem* previous = nullptr;
    for (const auto& item : track.items) {
      if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
        AddMedia(lane, *media);
        previous = media;
      } else if (const auto* fx = dynamic_cast<const Engine::FxTransitionItem*>(item.get())) {
        AddTransition(lane, *fx, previous);
      }
    }
    return lane;
  }

  void AddMedia(Lane& lane, const Engine::MediaSummaryItem& media) {
    const auto number = labels_.itemNumbers.find(media.Id().Text());
    const auto asset = assetNumbers_.find(media.mediaId.Text());
    const std::string itemText = number != labels_.itemNumbers.end() ? number->second : "#?";
    const std::string assetText = asset != assetNumbers_.end() ? asset->second : "A?";
    std::string assetName;
    for (const auto& named : labels_.assets) {
      if (named.first == media.mediaId.Text()) {
        assetName = named.second;
      }
    }
    const std::vector<std::string> choices = {itemText + " " + assetText + " " + assetName,
                                              itemText + " " + assetText, itemText};
    const std::string tooltip =
        "item " + itemText + " (" + media.Id().Text() + ")\nasset " + assetText + " " + assetName +
        " (" + media.mediaId.Text() + ")\n" +
        PartTooltip("picture", media.timelineVideoIn, media.timelineVideoDuration,
                    media.mediaVideoIn, media.mediaVideoDuration) +
        "\n" +
        PartTooltip("sound", media.timelineAudioIn, media.timelineAudioDuration, media.mediaAudioIn,
                    media.mediaAudioDuration);
    // A part the element does not have is 0 on both sides and is not drawn.
    if (media.timelineVideoDuration != 0 || media.mediaVideoDuration != 0) {
      lane.media.push_back(Box{{static_cast<double>(media.timelineVideoIn),
                                static_cast<double>(media.timelineVideoDuration)},
                               false,
                               choices,
                               tooltip});
    }
    if (media.timelineAudioDuration != 0 || media.mediaAudioDuration != 0) {
      lane.media.push_back(Box{{static_cast<double>(media.timelineAudioIn),
                                static_cast<double>(media.timelineAudioDuration)},
                               true,
                               choices,
                               tooltip});
    }
  }

  // A transition lies `offset` frames before the cut, which is where the
  // previous media item's part ends, and lasts `duration` frames.
  static void AddTransition(Lane& lane, const Engine::FxTransitionItem& fx,
                            const Engine::MediaSummaryItem* previous) {
    if (previous == nullptr) {
      return;
    }
    const bool sound = fx.GetType() == Engine::FxAudioTransition;
    const double cut = sound ? static_cast<double>(previous->timelineAudioIn) +
                                   static_cast<double>(previous->timelineAudioDuration)
                             : static_cast<double>(previous->timelineVideoIn) +
                                   static_cast<double>(previous->timelineVideoDuration);
    const auto& effect = fx.FxTransition();
    const std::string kind = std::to_string(effect.kind);
    lane.transitions.push_back(
        Box{{cut - static_cast<double>(effect.offset), static_cast<double>(effect.duration)},
            sound,
            {"kind " + kind + ", " + Frames(effect.duration) + "f",
             "k" + kind + " " + Frames(effect.duration), "k" + kind},
            std::string(sound ? "audio" : "video") + " transition, effect kind " + kind +
                "\noffset " + Frames(effect.offset) + ", duration " + Frames(effect.duration) +
                " frames\n" + fx.Id().Text()});
  }

  void Measure() {
    double first = 0;
    double last = std::max(1.0, static_cast<double>(timeline_.duration));
    std::vector<double> mediaLengths;
    for (const auto& lane : lanes_) {
      for (const auto* boxes : {&lane.media, &lane.transitions}) {
        for (const auto& box : *boxes) {
          first = std::min({first, box.span.start, box.span.start + box.span.length});
          last = std::max({last, box.span.start, box.span.start + box.span.length});
        }
      }
      for (const auto& box : lane.media) {
        if (box.span.length > 0) {
          mediaLengths.push_back(box.span.length);
        }
      }
    }
    firstFrame_ = first;
    const double frames = std::max(1.0, last - first);
    double typicalLength = frames;
    if (!mediaLengths.empty()) {
      std::nth_element(mediaLengths.begin(), mediaLengths.begin() + mediaLengths.size() / 2,
                       mediaLengths.end());
      typicalLength = mediaLengths[mediaLengths.size() / 2];
    }
    scale_ = std::max(kFitWidth / frames, kMinMediaWidth / typicalLength);
    scale_ = std::min(scale_, kMaxWidth / frames);
    lastFrame_ = first + frames;
    std::size_t longestLegend = 0;
    for (const auto& asset : labels_.assets) {
      longestLegend = std::max(longestLegend, DisplayLength(asset.first + asset.second) + 40);
    }
    width_ = std::max(kLeftMargin + frames * scale_ + kRightMargin,
                      24 + static_cast<double>(longestLegend) * kCharWidth);
    legendTop_ = kLanesTop + static_cast<double>(lanes_.size()) * kLaneHeight + 24;
    height_ = legendTop_ + (2 + static_cast<double>(labels_.assets.size())) * kLegendLineHeight + 8;
  }

  double X(double frame) const { return kLeftMargin + (frame - firstFrame_) * scale_; }

  void Text(const char* cssClass, double x, double y, const std::string& text) {
    out_ << "<text class=\"" << cssClass << "\" x=\"" << Number(x) << "\" y=\"" << Number(y)
         << "\">" << EscapeXml(text) << "</text>\n";
  }

  void Rect(const char* cssClass, double x, double y, double width, double height,
            double cornerRadius = 0) {
    out_ << "<rect class=\"" << cssClass << "\" x=\"" << Number(x) << "\" y=\"" << Number(y)
         << "\" width=\"" << Number(width) << "\" height=\"" << Number(height) << '"';
    if (cornerRadius > 0) {
      out_ << " rx=\"" << Number(cornerRadius) << '"';
    }
    out_ << "/>";
  }

  void Ruler() {
    const double step = TickStep(scale_, framesPerSecond_);
    out_ << "<g class=\"ruler\">\n<line x1=\"" << Number(X(firstFrame_)) << "\" y1=\""
         << Number(kRulerBaseline) << "\" x2=\"" << Number(X(lastFrame_)) << "\" y2=\""
         << Number(kRulerBaseline) << "\"/>\n";
    const double minorStep = step / 5;
    const bool minorTicks =
        minorStep >= 1 && std::floor(minorStep) == minorStep && minorStep * scale_ >= 8;
    const double start = std::ceil(firstFrame_ / step) * step;
    for (double index = 0; start + index * step <= lastFrame_; ++index) {
      const double frame = start + index * step;
      out_ << "<line x1=\"" << Number(X(frame)) << "\" y1=\"" << Number(kRulerBaseline - 10)
           << "\" x2=\"" << Number(X(frame)) << "\" y2=\"" << Number(kRulerBaseline) << "\"/>";
      const std::string timecode = Timecode(frame, framesPerSecond_);
      if (X(frame) + 2 + static_cast<double>(timecode.size()) * kCharWidth <= width_) {
        Text("tick", X(frame) + 2, kRulerBaseline - 12, timecode);
      }
      for (int minor = 1; minorTicks && minor < 5; ++minor) {
        const double at = X(frame + minor * minorStep);
        if (frame + minor * minorStep <= lastFrame_) {
          out_ << "<line class=\"minor\" x1=\"" << Number(at) << "\" y1=\""
               << Number(kRulerBaseline - 4) << "\" x2=\"" << Number(at) << "\" y2=\""
               << Number(kRulerBaseline) << "\"/>";
        }
      }
    }
    out_ << "</g>\n";
  }

  // Where a media part's label can start: after the transitions drawn over
  // its beginning.
  static double UncoveredStart(const Box& media, const std::vector<Box>& transitions) {
    double start = std::min(media.span.start, media.span.start + media.span.length);
    for (const auto& transition : transitions) {
      const double end = transition.span.start + transition.span.length;
      if (transition.sound == media.sound && transition.span.start <= start && end > start) {
        start = end;
      }
    }
    return start;
  }

  void DrawBox(const Box& box, const char* cssClass, double rowTop, const char* labelClass,
               double cornerRadius, double labelFrame) {
    double x = X(std::min(box.span.start, box.span.start + box.span.length));
    double width = std::abs(box.span.length) * scale_;
    if (width < kMinBoxWidth) {
      x -= (kMinBoxWidth - width) / 2;
      width = kMinBoxWidth;
    }
    out_ << "<g><title>" << EscapeXml(box.tooltip) << "</title>";
    Rect(cssClass, x, rowTop, width, kRowHeight, cornerRadius);
    const double labelX = std::max(x, X(labelFrame));
    const std::string label = FittingLabel(box.labels, x + width - labelX);
    if (!label.empty()) {
      out_ << '\n';
      Text(labelClass, labelX + 4, rowTop + 15, label);
    }
    out_ << "</g>\n";
  }

  void DrawLane(const Lane& lane, std::size_t index) {
    const double top = kLanesTop + static_cast<double>(index) * kLaneHeight;
    const double pictureRow = top + kRowGap;
    const double soundRow = pictureRow + kRowHeight + kRowGap;
    out_ << "<g class=\"track\">\n<title>" << EscapeXml(lane.name + " " + lane.trackId)
         << "</title>";
    Rect(index % 2 == 0 ? "lane" : "lane alt", 4, top, width_ - 8, kLaneHeight - 4);
    out_ << '\n';
    Text("lane-label", 10, pictureRow + 15, lane.name);
    Text("row-label", kLeftMargin - 60, pictureRow + 15, "picture");
    Text("row-label", kLeftMargin - 60, soundRow + 15, "sound");
    for (const auto& box : lane.media) {
      // Sound parts have round corners, so the two parts differ beyond colour.
      DrawBox(box, box.sound ? "sound" : "picture", box.sound ? soundRow : pictureRow, "item-label",
              box.sound ? kSoundCornerRadius : 0, UncoveredStart(box, lane.transitions));
    }
    // Transitions go over the media items, so the overlap stays visible.
    for (const auto& box : lane.transitions) {
      DrawBox(box, box.sound ? "afx" : "vfx", box.sound ? soundRow : pictureRow, "fx-label", 0,
              std::min(box.span.start, box.span.start + box.span.length));
    }
    out_ << "</g>\n";
  }

  void Legend() {
    out_ << "<g class=\"legend\">\n";
    double x = 12;
    const double keyTop = legendTop_;
    const struct {
      const char* cssClass;
      const char* text;
      double cornerRadius;
    } keys[] = {{"picture", "picture part", 0},
                {"sound", "sound part", kSoundCornerRadius},
                {"vfx", "video transition", 0},
                {"afx", "audio transition", 0}};
    for (const auto& key : keys) {
      Rect(key.cssClass, x, keyTop, 24, 12, key.cornerRadius);
      Text("key", x + 30, keyTop + 10, key.text);
      x += 40 + static_cast<double>(std::char_traits<char>::length(key.text)) * kCharWidth;
    }
    out_ << '\n';
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
      Text("asset", 12, keyTop + (2.2 + static_cast<double>(index)) * kLegendLineHeight,
           line + asset.first);
    }
    out_ << "</g>\n";
  }

  const Engine::Timeline& timeline_;
  Kov::TimePoints::Rate rate_;
  const PictureLabels& labels_;
  long long framesPerSecond_;
  std::map<std::string, std::string> assetNumbers_;
  std::vector<Lane> lanes_;
  double firstFrame_ = 0;
  double lastFrame_ = 1;
  double scale_ = 1;
  double width_ = 0;
  double height_ = 0;
  double legendTop_ = 0;
  std::ostringstream out_;
};

std::string GuidText(const Data::Guid& guid) {
  char buffer[Data::Guid::kTextLength + 1];
  return guid.ToString(buffer, sizeof buffer);
}

}  // namespace

std::string EscapeXml(const std::string& text) {
  std::string escaped;
  escaped.reserve(text.size());
  for (const char c : text) {
    switch (c) {
      case '&':
        escaped += "&amp;";
        break;
      case '<':
        escaped += "&lt;";
        break;
      case '>':
        escaped += "&gt;";
        break;
      case '"':
        escaped += "&quot;";
        break;
      case '\'':
        escaped += "&apos;";
        break;
      default:
        // XML cannot carry most control characters, not even as references.
        if (static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t') {
          escaped += "\xEF\xBF\xBD";
        } else {
          escaped += c;
        }
    }
  }
  return escaped;
}

PictureLabels LabelsFromDocument(const PlaylistDocument& document) {
  namespace Elements = Data::Sequences::Elements;
  PictureLabels labels;
  const auto& playlist = document.playlist;
  labels.title = "Timeline " + std::string(playlist.umId.GetUmId());
  for (const auto& asset : document.assetOrder) {
    labels.assets.emplace_back(asset.key.Text(),
                               asset.umId.empty() ? asset.key.Text() : asset.umId);
  }
  for (const auto& element : playlist.audioVideoTrack.elements) {
    labels.itemNumbers[GuidText(Elements::Guid(element.number, element.serverId))] =
        "#" + std::to_string(element.itemNumber);
  }
  labels.itemNumbers[GuidText(
      Elements::Guid(playlist.number, playlist.serverId, Elements::Guid::AuxTrack))] = "aux";
  return labels;
}

std::string TimelineToSvg(const Engine::Timeline& timeline, const Kov::TimePoints::Rate& rate,
                          const PictureLabels& labels) {
  return Picture(timeline, rate, labels).Svg();
}

std::string SvgToHtmlPage(const std::string& svg, const std::string& title) {
  return "<!DOCTYPE html>\n<html xmlns=\"http://www.w3.org/1999/xhtml\" lang=\"en\">\n<head>\n"
         "<meta charset=\"utf-8\"/>\n<title>" +
         EscapeXml(title) +
         "</title>\n<style>body{font-family:sans-serif;margin:16px;background:#f7f7f7}"
         ".timeline{overflow-x:auto;border:1px solid #cccccc;background:#ffffff}</style>\n"
         "</head>\n<body>\n<h1>" +
         EscapeXml(title) +
         "</h1>\n<p>Point at a box for its details.</p>\n<div class=\"timeline\">\n" + svg +
         "</div>\n</body>\n</html>\n";
}

}  // namespace TimelineConvert
