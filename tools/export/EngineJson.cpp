// Writes the engine model field by field. Items are told apart by their
// `type`: media items carry the eleven media fields, transition items their
// effect, and an item of any other class only its id and type. The text is
// formatted straight into one buffer, the same text a JSON library prints with
// an indent of two.
#include "export/EngineJson.h"

#include <algorithm>
#include <charconv>
#include <nlohmann/json.hpp>

namespace TimelineConvert {

namespace {

namespace Engine = Kov::TimelineEngineModel;

class JsonText {
 public:
  explicit JsonText(std::string& text) : text_(text) {}

  void Raw(const char* piece) { text_ += piece; }

  void Number(std::int64_t value) {
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    text_.append(digits, end);
  }

  // Text of printable ASCII goes as it is; anything else (escapes, UTF-8, and
  // bytes that are not UTF-8, written as replacement characters rather than
  // refused: the tool reports, it does not judge the library's ids) takes
  // the library's own escaping.
  void String(const std::string& value) {
    const bool plain = std::all_of(value.begin(), value.end(), [](char c) {
      return c >= 0x20 && c < 0x7F && c != '"' && c != '\\';
    });
    if (plain) {
      text_ += '"';
      text_ += value;
      text_ += '"';
    } else {
      text_ += nlohmann::json(value).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
    }
  }

  // `"name": ` at the given indent, after the comma of the member before.
  void Member(const char* indent, const char* name, bool first = false) {
    text_ += first ? "\n" : ",\n";
    text_ += indent;
    text_ += '"';
    text_ += name;
    text_ += "\": ";
  }

  void Item(const Engine::TrackItem* item) {
    if (item == nullptr) {
      text_ += "null";
      return;
    }
    static const char* const kIndent = "          ";
    text_ += '{';
    Member(kIndent, "id", true);
    String(item->Id().Text());
    Member(kIndent, "type");
    Number(static_cast<std::int32_t>(item->GetType()));
    if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item)) {
      const std::pair<const char*, std::int64_t> before[] = {
          {"timelineVideoIn", media->timelineVideoIn},
          {"timelineVideoDuration", media->timelineVideoDuration},
          {"timelineAudioIn", media->timelineAudioIn},
          {"timelineAudioDuration", media->timelineAudioDuration}};
      for (const auto& field : before) {
        Member(kIndent, field.first);
        Number(field.second);
      }
      Member(kIndent, "mediaId");
      String(media->mediaId.Text());
      const std::pair<const char*, std::int64_t> after[] = {
          {"mediaVideoIn", media->mediaVideoIn}, {"mediaVideoDuration", media->mediaVideoDuration},
          {"mediaAudioIn", media->mediaAudioIn}, {"mediaAudioDuration", media->mediaAudioDuration},
          {"reservedA", media->reservedA},       {"reservedB", media->reservedB}};
      for (const auto& field : after) {
        Member(kIndent, field.first);
        Number(field.second);
      }
    } else if (const auto* transition = dynamic_cast<const Engine::FxTransitionItem*>(item)) {
      const auto& effect = transition->FxTransition();
      static const char* const kEffectIndent = "            ";
      Member(kIndent, "effect");
      text_ += '{';
      Member(kEffectIndent, "kind", true);
      Number(effect.kind);
      Member(kEffectIndent, "offset");
      Number(effect.offset);
      Member(kEffectIndent, "duration");
      Number(effect.duration);
      Member(kEffectIndent, "name");
      String(effect.name);
      text_ += "\n";
      text_ += kIndent;
      text_ += '}';
    }
    text_ += "\n        }";
  }

  void MediaInfo(const Engine::MediaInfo& info) {
    static const char* const kIndent = "      ";
    text_ += '{';
    Member(kIndent, "id", true);
    String(info.id.Text());
    Member(kIndent, "limitIn");
    Number(info.limitIn);
    Member(kIndent, "duration");
    Number(info.duration);
    Member(kIndent, "tracksDescription");
    String(info.tracksDescription);
    text_ += "\n    }";
  }

  // The members of an array at `indent`, each written by `element(index)`.
  template <typename WriteElement>
  void Array(std::size_t size, const char* indent, WriteElement element) {
    if (size == 0) {
      text_ += "[]";
      return;
    }
    text_ += "[\n";
    for (std::size_t index = 0; index < size; ++index) {
      text_ += indent;
      text_ += "  ";
      element(index);
      text_ += index + 1 < size ? ",\n" : "\n";
    }
    text_ += indent;
    text_ += ']';
  }

 private:
  std::string& text_;
};

// Bytes per item and per media info, about, so that the buffer grows once.
constexpr std::size_t kItemBytes = 480;
constexpr std::size_t kMediaInfoBytes = 160;

// Bytes a stream is handed at once, so that the text is never held whole.
constexpr std::size_t kFlushBytes = std::size_t{1} << 20;

// Writes the timeline into `text`; with `out`, hands the text to it whenever
// it has grown past kFlushBytes, and once more at the end.
void FormatTimeline(std::string& text, const Engine::Timeline& timeline, std::ostream* out) {
  JsonText json(text);
  const auto flush = [&text, out](bool last) {
    if (out != nullptr && (last || text.size() >= kFlushBytes)) {
      out->write(text.data(), static_cast<std::streamsize>(text.size()));
      text.clear();
    }
  };
  json.Raw("{");
  json.Member("  ", "id", true);
  json.String(timeline.id.Text());
  json.Member("  ", "secondaryId");
  json.String(timeline.secondaryId.Text());
  json.Member("  ", "duration");
  json.Number(timeline.duration);
  json.Member("  ", "tracks");
  json.Array(timeline.tracks.size(), "  ", [&](std::size_t index) {
    const auto& track = timeline.tracks[index];
    json.Raw("{");
    json.Member("      ", "id", true);
    json.String(track.id.Text());
    json.Member("      ", "type");
    json.Number(track.type);
    json.Member("      ", "items");
    json.Array(track.items.size(), "      ", [&](std::size_t item) {
      json.Item(track.items[item].get());
      flush(false);
    });
    json.Raw("\n    }");
  });
  json.Member("  ", "mediaInfos");
  json.Array(timeline.mediaInfos.size(), "  ", [&](std::size_t index) {
    json.MediaInfo(timeline.mediaInfos[index]);
    flush(false);
  });
  json.Raw("\n}\n");
  flush(true);
}

}  // namespace

void AppendTimelineJson(std::string& text, const Engine::Timeline& timeline) {
  std::size_t items = 0;
  for (const auto& track : timeline.tracks) {
    items += track.items.size();
  }
  text.reserve(text.size() + 256 + items * kItemBytes +
               timeline.mediaInfos.size() * kMediaInfoBytes);
  FormatTimeline(text, timeline, nullptr);
}

void WriteTimelineJson(std::ostream& out, const Engine::Timeline& timeline) {
  std::string text;
  text.reserve(kFlushBytes + 4096);
  FormatTimeline(text, timeline, &out);
}

std::string TimelineToJsonText(const Engine::Timeline& timeline) {
  std::string text;
  AppendTimelineJson(text, timeline);
  return text;
}

}  // namespace TimelineConvert
