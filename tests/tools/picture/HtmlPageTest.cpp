// The viewer page's data: every column of the marks and items tables, and
// every item id, decoded as the page's script decodes them, gives back what
// the picture holds, whichever coding the writer picked for it.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <cmath>
#include <cstring>
#include <string>
#include <vector>

#include "picture/HtmlPage.h"
#include "picture/TimelineSvg.h"

namespace {

namespace Engine = Kov::TimelineEngineModel;
using Json = nlohmann::json;

std::vector<unsigned char> FromBase64(const std::string& text) {
  static const std::string kDigits =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<unsigned char> bytes;
  unsigned group = 0;
  int bits = 0;
  for (const char c : text) {
    if (c == '=') {
      break;
    }
    group = (group << 6) | static_cast<unsigned>(kDigits.find(c));
    bits += 6;
    if (bits >= 8) {
      bits -= 8;
      bytes.push_back(static_cast<unsigned char>((group >> bits) & 0xFF));
    }
  }
  return bytes;
}

// A column as the viewer's data.js reads it: a constant, zigzag varint
// differences, runs of one value, or a little-endian typed array.
std::vector<double> Decode(const Json& column, std::size_t count) {
  const std::string type = column[0];
  if (type == "c") {
    return std::vector<double>(count, column[1].get<double>());
  }
  const auto bytes = FromBase64(column[2].get<std::string>());
  std::vector<double> values;
  if (type == "v" || type == "r") {
    std::size_t at = 0;
    const auto next = [&bytes, &at]() {
      std::uint64_t zigzag = 0;
      for (int shift = 0;; shift += 7) {
        zigzag |= static_cast<std::uint64_t>(bytes.at(at) & 0x7F) << shift;
        if ((bytes.at(at++) & 0x80) == 0) {
          break;
        }
      }
      return (zigzag & 1) ? -static_cast<double>((zigzag >> 1) + 1) : double(zigzag >> 1);
    };
    double total = 0;
    while (values.size() < count) {
      if (type == "r") {
        const double value = next();
        values.insert(values.end(), static_cast<std::size_t>(next()), value);
      } else {
        values.push_back(total += next());
      }
    }
    EXPECT_EQ(values.size(), count);
    return values;
  }
  const std::size_t size = type == "f64" ? 8 : std::stoul(type.substr(1)) / 8;
  for (std::size_t at = 0; at + size <= bytes.size(); at += size) {
    std::uint64_t pattern = 0;
    for (std::size_t byte = 0; byte < size; ++byte) {
      pattern |= static_cast<std::uint64_t>(bytes[at + byte]) << (8 * byte);
    }
    if (type == "f64") {
      double value = 0;
      std::memcpy(&value, &pattern, sizeof value);
      values.push_back(value);
    } else if (type[0] == 'i' && (pattern >> (8 * size - 1)) != 0) {
      values.push_back(static_cast<double>(pattern) - std::ldexp(1.0, int(8 * size)));
    } else {
      values.push_back(static_cast<double>(pattern));
    }
  }
  return values;
}

Json PageData(const std::string& page) {
  const std::string open = "<script type=\"application/json\" id=\"timeline-data\">";
  const auto from = page.find(open) + open.size();
  return Json::parse(page.substr(from, page.find("</script>", from) - from));
}

// The picture of a timeline, which it points at: the timeline must outlive it.
TimelineConvert::Picture PictureOf(const Engine::Timeline& timeline) {
  TimelineConvert::PictureLabels labels;
  labels.assets = {{"asset", "CLIP"}};
  TimelineConvert::Picture picture{timeline, {50, 1}, labels, {}};
  picture.view = TimelineConvert::MakeTimelineView(timeline, picture.labels);
  return picture;
}

// Items of the given lengths one after another, with the given ids (or
// "item-N" past them).
Engine::Timeline TimelineOf(const std::vector<std::int64_t>& lengths,
                            const std::vector<std::string>& ids = {}) {
  Engine::Track track{"track", 1, {}};
  std::int64_t position = 0;
  for (std::size_t index = 0; index < lengths.size(); ++index) {
    auto media = std::make_shared<Engine::MediaSummaryItem>(
        index < ids.size() ? ids[index] : "item-" + std::to_string(index));
    media->mediaId = "asset";
    media->timelineVideoIn = media->timelineAudioIn = position;
    media->timelineVideoDuration = media->timelineAudioDuration = lengths[index];
    media->mediaVideoIn = media->mediaAudioIn = index % 2 == 0 || index > 10 ? 0 : 3000000000LL;
    media->mediaVideoDuration = media->mediaAudioDuration = lengths[index];
    position += lengths[index];
    track.items.push_back(media);
  }
  return Engine::Timeline{"timeline", {}, position, {track}, {}};
}

TEST(HtmlPage, ColumnsAndIdsDecodeToWhatThePictureHolds) {
  struct Case {
    const char* name;
    std::vector<std::int64_t> lengths;
    std::vector<std::string> ids;
  };
  const Case cases[] = {
      {"small steps, ids sharing both ends",
       {100, 120, 140, 100},
       {"e1-0001-x", "e1-0002-x", "e1-0003-x", "e1-0013-x"}},
      {"huge and negative steps, ids that are parts of each other",
       {5, 70000, -40, 0, 1LL << 40, -(1LL << 41)},
       {"aa", "aaa", "a", "", "ab\xC3\xA9-1", "ab\xC3\xA9-11"}},
      {"one item", {7}, {"only"}},
      {"long runs of one length", std::vector<std::int64_t>(40, 25),
       std::vector<std::string>(40, "same")},
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.name);
    const auto timeline = TimelineOf(row.lengths, row.ids);
    const auto picture = PictureOf(timeline);
    const auto data = PageData(TimelineConvert::PictureToHtml(picture));
    const auto& marks = data["tables"]["marks"];
    const std::size_t count = marks["count"];
    const auto starts = Decode(marks["columns"]["start"], count);
    const auto lengths = Decode(marks["columns"]["length"], count);
    const auto rows = Decode(marks["columns"]["row"], count);
    const auto itemIndexes = Decode(marks["columns"]["item"], count);
    std::size_t at = 0;
    for (std::size_t row = 0; row < picture.view.rows.size(); ++row) {
      for (const auto& mark : picture.view.rows[row].marks) {
        ASSERT_LT(at, count);
        EXPECT_EQ(starts[at], mark.start);
        EXPECT_EQ(lengths[at], mark.length);
        EXPECT_EQ(rows[at], double(row));
        EXPECT_EQ(itemIndexes[at], double(mark.item));
        ++at;
      }
    }
    EXPECT_EQ(at, count);
    const auto& items = data["tables"]["items"];
    const auto mediaIns = Decode(items["columns"]["mediaVideoIn"], items["count"]);
    for (std::size_t index = 0; index < picture.view.items.size(); ++index) {
      EXPECT_EQ(mediaIns[index], double(picture.view.items[index].Media().mediaVideoIn));
    }
    // Ids: shared start, the middle, shared end, against the previous one.
    const auto shared = Decode(data["ids"]["shared"], row.ids.size());
    const auto suffix = Decode(data["ids"]["suffix"], row.ids.size());
    std::vector<std::string> middles(1);
    for (const char c : data["ids"]["rest"].get<std::string>()) {
      if (c == '\n') {
        middles.emplace_back();
      } else {
        middles.back() += c;
      }
    }
    ASSERT_EQ(middles.size(), row.ids.size());
    std::string previous;
    for (std::size_t index = 0; index < row.ids.size(); ++index) {
      const auto tail = static_cast<std::size_t>(suffix[index]);
      const std::string id = previous.substr(0, static_cast<std::size_t>(shared[index])) +
                             middles[index] + previous.substr(previous.size() - tail);
      EXPECT_EQ(id, row.ids[index]);
      previous = id;
    }
  }
}

TEST(HtmlPage, FindingsPastTheLimitOfAKindAreCounted) {
  const auto timeline = TimelineOf({100, 100}, {"a", "b"});
  auto picture = PictureOf(timeline);
  for (int index = 0; index < 1003; ++index) {
    picture.labels.findings.Add(
        TimelineConvert::FindingKind::AvDrift,
        {"av-drift", TimelineConvert::Severity::Warning, {}, "drift", {{"offset", index}}});
  }
  picture.labels.findings.Add(TimelineConvert::FindingKind::Overlap,
                              {"overlap", TimelineConvert::Severity::Warning, {}, "overlap", {}});
  const std::string page = TimelineConvert::PictureToHtml(picture);
  const auto findings = PageData(page)["findings"];
  ASSERT_EQ(findings.size(), 1000U + 1 + 1);
  EXPECT_EQ(findings[999][6]["offset"], 999);
  EXPECT_EQ(findings[1000][0], "overlap");
  EXPECT_EQ(findings[1001][4], "3 more av-drift findings (check --all lists them)");
  EXPECT_EQ(findings[1001][6]["more"], 3);
  // A picture lets go of the findings neither writer shows, and still counts them.
  const std::string svg = TimelineConvert::PictureToSvg(picture);
  picture.labels.findings.KeepFirstOfEachKind(TimelineConvert::kShownFindingsPerKind);
  EXPECT_EQ(picture.labels.findings.size(), 1000U + 1);
  EXPECT_EQ(TimelineConvert::PictureToHtml(picture), page);
  EXPECT_EQ(TimelineConvert::PictureToSvg(picture), svg);
}

}  // namespace
