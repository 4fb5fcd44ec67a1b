// The library's fast paths give what the plain computations give: field
// counting in 64 bits where the product fits, GUID text from a table, element
// records found by their exact class before any cast, and a whole synthetic
// conversion whose every value is pinned by a fingerprint.
#include <gtest/gtest.h>

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <limits>
#include <random>
#include <string>
#include <typeinfo>
#include <vector>

#include "SyntheticInput.h"
#include "support/PlaylistBuilders.h"

namespace {

namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
namespace Data = Kov::Replivo::Data;
namespace Engine = Kov::TimelineEngineModel;
using Kov::Replivo::Tollan::DataModelConversion::ClipMediaTimeConverter;
using Kov::TimePoints::Rate;
using Kov::TimePoints::TimeBoundary;

__extension__ typedef unsigned __int128 UInt128;
__extension__ typedef __int128 Int128;

// (to - from) * 2 * numerator / (denominator * 10^7), rounded half away from
// zero and saturated, all in 128 bits.
std::int64_t ReferenceFields(std::int64_t to, std::int64_t from, const Rate& rate) {
  const Int128 distance = static_cast<Int128>(to) - from;
  const UInt128 magnitude = static_cast<UInt128>(distance < 0 ? -distance : distance);
  const UInt128 scaled = magnitude * 2 * static_cast<UInt128>(rate.numerator);
  const UInt128 divisor = static_cast<UInt128>(rate.denominator) * 10000000u;
  UInt128 quotient = scaled / divisor;
  if (2 * (scaled % divisor) >= divisor) {
    ++quotient;
  }
  const Int128 signedQuotient = distance < 0 ? -static_cast<Int128>(quotient) : quotient;
  if (signedQuotient > std::numeric_limits<std::int64_t>::max()) {
    return std::numeric_limits<std::int64_t>::max();
  }
  if (signedQuotient < std::numeric_limits<std::int64_t>::min()) {
    return std::numeric_limits<std::int64_t>::min();
  }
  return static_cast<std::int64_t>(signedQuotient);
}

TEST(FieldCountingTest, AgreesWithExactArithmeticOnBothSidesOfThe64BitProduct) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
  const Rate rates[] = {{50, 1},         {60000, 1001},      {1, 3},
                        {kMax, 1},       {1, kMax},          {kMax, kMax},
                        {3, 1844674407}, {7, 1844674407371}, {1000003, 922337203685}};
  // Distances around the point where distance * 2 * numerator leaves 64 bits.
  std::vector<std::int64_t> distances = {0, 1, 2, 99999, 100000, 100001, kMax, 1LL << 32};
  for (const Rate& rate : rates) {
    const std::uint64_t limit = std::numeric_limits<std::uint64_t>::max() /
                                (2 * static_cast<std::uint64_t>(rate.numerator));
    // Unsigned, so that the steps around the limit wrap instead of overflowing.
    for (const std::uint64_t near : {limit - 2, limit - 1, limit, limit + 1, limit + 2}) {
      distances.push_back(
          static_cast<std::int64_t>(std::min(near, static_cast<std::uint64_t>(kMax))));
    }
  }
  std::mt19937_64 random(20261122);
  for (int i = 0; i < 2000; ++i) {
    distances.push_back(static_cast<std::int64_t>(random() >> (random() % 63)));
  }
  for (const Rate& rate : rates) {
    for (const std::int64_t distance : distances) {
      for (const std::int64_t from : {std::int64_t{0}, std::int64_t{-5}, kMin, kMax}) {
        const std::int64_t to = static_cast<std::int64_t>(static_cast<std::uint64_t>(from) +
                                                          static_cast<std::uint64_t>(distance));
        for (const auto& pair : {std::make_pair(to, from), std::make_pair(from, to)}) {
          ASSERT_EQ(ReferenceFields(pair.first, pair.second, rate),
                    ClipMediaTimeConverter::TimeBoundaryToFields(
                        TimeBoundary{pair.first, 0}, TimeBoundary{pair.second, 0}, rate))
              << pair.first << " - " << pair.second << " at " << rate.numerator << "/"
              << rate.denominator;
        }
      }
    }
  }
}

std::string ReferenceElementGuidText(std::uint32_t family, std::uint32_t number,
                                     std::uint32_t server, std::uint32_t category) {
  char text[64];
  std::snprintf(text, sizeof text,
                "%08" PRIx32 "-%04" PRIx32 "-%04" PRIx32 "-%04" PRIx32 "-%04" PRIx32 "%08" PRIx32,
                family, number >> 16, number & 0xffff, server >> 16, server & 0xffff, category);
  return text;
}

TEST(GuidTextTest, MatchesPrintfFormattingAndCutsToTheBuffer) {
  std::mt19937 random(7);
  for (int i = 0; i < 500; ++i) {
    const std::uint32_t number = random();
    const std::uint32_t server = random();
    const Data::Sequences::Elements::Guid plain(number, Data::Servers::ServerId(server));
    const Data::Sequences::Elements::Guid video(number, Data::Servers::ServerId(server),
                                                Data::Sequences::Elements::Guid::VideoTransition);
    char buffer[Data::Guid::kTextLength + 1];
    ASSERT_EQ(ReferenceElementGuidText(0xe1e00003, number, server, 0),
              plain.ToString(buffer, sizeof buffer));
    ASSERT_EQ(ReferenceElementGuidText(0xe1e00004, number, server, 3),
              video.ToString(buffer, sizeof buffer));
  }
  const Data::Sequences::Elements::Guid guid(0xabcdef01, Data::Servers::ServerId(0x23456789));
  const std::string full = ReferenceElementGuidText(0xe1e00003, 0xabcdef01, 0x23456789, 0);
  for (const unsigned size : {1u, 2u, 9u, 10u, 36u, 37u, 64u}) {
    char buffer[64];
    std::fill(buffer, buffer + sizeof buffer, 'x');
    EXPECT_EQ(full.substr(0, size - 1), guid.ToString(buffer, size)) << size;
    EXPECT_EQ('\0', buffer[std::min(size, 37u) - 1]) << size;
    if (size < sizeof buffer) {
      EXPECT_EQ('x', buffer[std::min(size, 37u)]) << "wrote past the text at " << size;
    }
  }
  char untouched = 'x';
  EXPECT_EQ(&untouched, guid.ToString(&untouched, 0));
  EXPECT_EQ('x', untouched);
}

// A caller's own element classes: one derived from the audio-video record, one
// that only claims to be of its kind.
struct TaggedAudioVideoElement : Data::Sequences::AudioVideoElement {
  int tag = 1;
};
struct ImpostorElement : Data::Sequences::Element {
  Type GetType() const override { return AudioVideo; }
};

TEST(ElementRecordTest, SubclassesOfARecordConvertLikeTheRecordAndImpostorsGiveZeros) {
  const auto info = testing_support::InfoWith(
      {testing_support::AssetWithRanges("CLIP", {testing_support::FieldRange(0, 2000)})});
  Data::Sequences::AudioVideoElement plain = testing_support::AvElement("CLIP", 3, 2, 40, 600);
  plain.audioInValue = 60;
  plain.transitionType = 14;
  plain.videoTransitionDuration = 25;
  plain.audioTransitionType = 8;
  plain.audioTransitionDuration = 31;
  TaggedAudioVideoElement tagged;
  static_cast<Data::Sequences::AudioVideoElement&>(tagged) = plain;
  ASSERT_NE(typeid(plain), typeid(static_cast<const Data::Sequences::Element&>(tagged)));

  const Conversion::MediaBounds expected = Conversion::TimeConverter::ToMediaBounds(plain, info);
  const Conversion::MediaBounds derived = Conversion::TimeConverter::ToMediaBounds(tagged, info);
  EXPECT_EQ(expected.mediaId, derived.mediaId);
  EXPECT_EQ(280, derived.videoIn);
  EXPECT_EQ(20, derived.videoDuration);
  EXPECT_EQ(270, derived.audioIn);
  EXPECT_EQ(30, derived.audioDuration);
  EXPECT_EQ(6, Conversion::TimeConverter::ToVideoTransitionBounds(tagged).offset);
  EXPECT_EQ(15, Conversion::TimeConverter::ToAudioTransitionBounds(tagged).duration);

  ImpostorElement impostor;
  impostor.umId = plain.umId;
  impostor.inBoundaryKind = 9;  // never read: no record to read it with
  impostor.transitionType = 14;
  const Conversion::MediaBounds zeros = Conversion::TimeConverter::ToMediaBounds(impostor, info);
  EXPECT_EQ(expected.mediaId, zeros.mediaId);
  EXPECT_EQ(0, zeros.videoIn);
  EXPECT_EQ(0, zeros.audioDuration);
  EXPECT_EQ(0, Conversion::TimeConverter::ToVideoTransitionBounds(impostor).kind);
}

// FNV-1a over a text rendering of every value of a timeline.
class Fingerprint {
 public:
  template <typename T>
  Fingerprint& operator<<(const T& value) {
    const std::string text = ToText(value) + "|";
    for (const char c : text) {
      hash_ = (hash_ ^ static_cast<unsigned char>(c)) * 0x100000001b3ULL;
    }
    return *this;
  }
  std::uint64_t Value() const { return hash_; }

 private:
  static std::string ToText(const std::string& text) { return text; }
  static std::string ToText(const Kov::BusinessEntityModel::BaseTypes::Identifier& id) {
    return id.Text();
  }
  template <typename Number>
  static std::string ToText(Number number) {
    return std::to_string(number);
  }
  std::uint64_t hash_ = 0xcbf29ce484222325ULL;
};

std::uint64_t FingerprintOf(const Engine::Timeline& timeline) {
  Fingerprint print;
  print << timeline.id << timeline.secondaryId << timeline.duration;
  // In identifier order: the map's own order belongs to the standard library.
  std::vector<const Engine::MediaInfo*> infos;
  for (const Engine::MediaInfo& info : timeline.mediaInfos) {
    infos.push_back(&info);
  }
  std::sort(infos.begin(), infos.end(),
            [](const auto* a, const auto* b) { return a->id.Text() < b->id.Text(); });
  for (const Engine::MediaInfo* info : infos) {
    print << info->id << info->limitIn << info->duration << info->tracksDescription;
  }
  for (const Engine::Track& track : timeline.tracks) {
    print << track.id << track.type << track.items.size();
    for (const auto& item : track.items) {
      print << item->Id() << static_cast<int>(item->GetType());
      if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
        print << media->mediaId << media->timelineVideoIn << media->timelineVideoDuration
              << media->timelineAudioIn << media->timelineAudioDuration << media->mediaVideoIn
              << media->mediaVideoDuration << media->mediaAudioIn << media->mediaAudioDuration;
      } else if (const auto* fx = dynamic_cast<const Engine::FxTransitionItem*>(item.get())) {
        print << fx->effect.kind << fx->effect.offset << fx->effect.duration << fx->effect.name;
      }
    }
  }
  return print.Value();
}

TEST(WholeConversionTest, SyntheticTimelinesKeepTheirFingerprints) {
  using Converter = Conversion::TimelineConverter;
  for (const std::size_t ranges : {std::size_t{1}, std::size_t{100}}) {
    const TimelineEngineBench::SyntheticInput input =
        TimelineEngineBench::MakeSyntheticInput(1000, ranges);
    const Engine::Timeline byItems =
        Converter::ToTimeline(input.playlist, Converter::FromTrackItems, input.assets);
    const Engine::Timeline byPlaylist =
        Converter::ToTimeline(input.playlist, Converter::FromPlaylist, input.assets);
    EXPECT_EQ(8851192062170167997u, FingerprintOf(byItems)) << ranges;
    EXPECT_EQ(8995300971677485768u, FingerprintOf(byPlaylist)) << ranges;
  }
}

}  // namespace
