// libFuzzer harness of the whole library. The fuzzer's bytes become a playlist,
// a video track, an audio track, a few elements of caller-derived classes and a
// shared asset map (recorded ranges with open ends, short ranges, metadata
// profiles of every sort, resources and track layouts with null and empty-key
// references, null track pointers). Every public operation runs on them, and
// the run stops at the first breach of the library's promises: a refusal that
// is not one of its fixed exceptions, an input that differs after the calls, a
// reference to the input kept after a call, or answers of the same question
// that disagree with each other.
#include <fuzzer/FuzzedDataProvider.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <memory>
#include <optional>
#include <regex>
#include <stdexcept>
#include <string>
#include <typeinfo>
#include <vector>

#include "ModelText.h"
#include "support/PlaylistBuilders.h"

namespace {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Conversion::TimeConverter;
using Conversion::TimelineConverter;
using Conversion::TrackConverter;
using Kov::BusinessEntityModel::BaseTypes::FullyQualifiedName;
using Kov::BusinessEntityModel::BaseTypes::Identifier;
using Kov::BusinessEntityModel::BaseTypes::MetadataProfile;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;
using Kov::TimePoints::Rate;
using Kov::TimePoints::TimeBoundary;
using Kov::TimePoints::TimeBounds;

constexpr std::int64_t kMax64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kMin64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int32_t kMax32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin32 = std::numeric_limits<std::int32_t>::min();
// One field at 50/1, in ticks of 100 ns.
constexpr std::int64_t kTicksPerField = 100000;

// The fixed refusals of the library, as thrown by its sources.
constexpr const char* kInvalidArgumentTexts[] = {
    "MediaAsset from Sequence has no PhysicalTimebounds",
    "MediaAsset from Sequence has no KytOperatorMetadata",
    "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine",
    "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine",
    "TimeBoundaryToFields: the rate needs a positive numerator and denominator",
};
constexpr const char* kRuntimeErrorTexts[] = {
    "MediaAsset for sequence track item not found",
    "MediaAsset for aux-track not found",
    "null pointer",
};

[[noreturn]] void Fail(const std::string& what) {
  std::fprintf(stderr, "ConversionFuzzer: %s\n", what.c_str());
  std::abort();
}

void Require(bool condition, const char* what) {
  if (!condition) {
    Fail(what);
  }
}

void RequireSame(const std::string& expected, const std::string& actual, const char* what) {
  if (expected != actual) {
    Fail(std::string(what) + "\n  expected: " + expected + "\n  actual:   " + actual);
  }
}

template <std::size_t N>
bool OneOf(const char* const (&texts)[N], const std::string& text) {
  return std::find(std::begin(texts), std::end(texts), text) != std::end(texts);
}

// A transition that does not fit its media, naming the playlist number of the
// track's first element.
bool IsTransitionRefusal(const std::string& text, std::int32_t playlistNumber) {
  static const std::regex pattern(
      "The playlist PL(-?[0-9]+) cannot be edited - (contains track item \\(-?[0-9]+\\)|it "
      "contains track items) with a shorter (video|audio) duration than their transition "
      "duration\\.");
  std::smatch match;
  return std::regex_match(text, match, pattern) && match[1] == std::to_string(playlistNumber);
}

// Only the track conversions may refuse a transition; they pass the number the
// refusal must name.
void RequireDocumentedRefusal(const std::exception& error,
                              std::optional<std::int32_t> playlistNumber) {
  const std::type_info& type = typeid(error);
  const std::string text = error.what();
  const bool documented =
      type == typeid(std::bad_alloc) ||
      (type == typeid(std::invalid_argument) && OneOf(kInvalidArgumentTexts, text)) ||
      (type == typeid(std::runtime_error) && OneOf(kRuntimeErrorTexts, text)) ||
      (type == typeid(std::logic_error) && playlistNumber &&
       IsTransitionRefusal(text, *playlistNumber));
  if (!documented) {
    Fail(std::string("undocumented refusal ") + type.name() + ": " + text);
  }
}

// Runs an operation that returns the text of its result. The outcome is that
// text, or the refusal, which must be a documented one.
template <typename Operation>
std::string Attempt(Operation&& operation,
                    std::optional<std::int32_t> playlistNumber = std::nullopt) {
  try {
    return "done " + operation();
  } catch (const std::exception& error) {
    RequireDocumentedRefusal(error, playlistNumber);
    return std::string("refused ") + typeid(error).name() + ": " + error.what();
  }
}

template <typename ElementT>
std::optional<std::int32_t> FirstPlaylistNumber(const std::vector<ElementT>& elements) {
  if (elements.empty()) {
    return std::nullopt;
  }
  return elements.front().playlistNumber;
}

// A caller's element class, derived from Record, that reports whatever kind it
// is given: a bare element with a kind, or an audio-video record claiming another.
template <typename Record>
class ReportingElement : public Record {
 public:
  explicit ReportingElement(Sequences::Element::Type reported) : reported_(reported) {}
  Sequences::Element::Type GetType() const override { return reported_; }

 private:
  Sequences::Element::Type reported_;
};

// Profiles stored under the operator profile's name that are not plain ones.
class ForeignProfile : public MetadataProfile {};
class DerivedOperatorProfile : public Assets::KytOperatorMetadataProfile {};

// Everything one run converts. The tracks are owned here so that layouts can
// point at tracks that no resource holds; declared first, they die last.
struct Inputs {
  std::vector<std::shared_ptr<Assets::Track>> mediaTracks;
  Sequences::Playlist playlist;
  Sequences::Track<Sequences::VideoElement> videoTrack;
  Sequences::AudioTrack audioTrack;
  std::vector<std::unique_ptr<Sequences::Element>> reportingElements;
  std::shared_ptr<Assets::MediaAssetMap> assets = std::make_shared<Assets::MediaAssetMap>();
};

std::string Describe(const Inputs& inputs) {
  std::string out = ModelText::Describe(inputs.playlist) + ModelText::Describe(inputs.videoTrack) +
                    ModelText::Describe(inputs.audioTrack) + ModelText::Describe(*inputs.assets);
  for (const auto& element : inputs.reportingElements) {
    const auto* audioVideo = dynamic_cast<const Sequences::AudioVideoElement*>(element.get());
    out += audioVideo != nullptr ? ModelText::Describe(*audioVideo) : ModelText::Describe(*element);
  }
  ModelText::Number(out, "mapOwners", inputs.assets.use_count());
  return out;
}

// Turns bytes into inputs. Values are drawn from small ranges, from the edges
// of their types and from raw bytes, so that both plausible sequences and
// hostile ones come up often.
class InputBuilder {
 public:
  explicit InputBuilder(FuzzedDataProvider& bytes) : bytes_(bytes) {}

  Inputs Build() {
    Inputs inputs;
    FillPlaylist(inputs.playlist);
    for (int n = Count(4); n > 0; --n) {
      inputs.videoTrack.elements.push_back(SingleSide<Sequences::VideoElement>());
    }
    for (int n = Count(4); n > 0; --n) {
      inputs.audioTrack.elements.push_back(SingleSide<Sequences::AudioElement>());
    }
    auto reporting = std::make_unique<ReportingElement<Sequences::Element>>(Kind());
    FillBase(*reporting);
    inputs.reportingElements.push_back(std::move(reporting));
    auto claiming = std::make_unique<ReportingElement<Sequences::AudioVideoElement>>(Kind());
    FillAudioVideo(*claiming);
    inputs.reportingElements.push_back(std::move(claiming));
    for (int n = Count(4); n > 0; --n) {
      AddAsset(*inputs.assets, inputs.mediaTracks);
    }
    return inputs;
  }

  std::int64_t Int64() {
    static constexpr std::int64_t kNotable[] = {0,
                                                1,
                                                -1,
                                                2,
                                                3,
                                                -2,
                                                kTicksPerField,
                                                kMax64,
                                                kMin64,
                                                kMax64 - 1,
                                                kMin64 + 1,
                                                kMax32,
                                                kMin32,
                                                1LL << 32,
                                                1LL << 62,
                                                -(1LL << 62),
                                                10'000'000,
                                                2 * kTicksPerField};
    switch (bytes_.ConsumeIntegralInRange(0, 3)) {
      case 0:
        return bytes_.PickValueInArray(kNotable);
      case 1:
        return bytes_.ConsumeIntegralInRange<std::int64_t>(-100, 1000);
      case 2:
        return bytes_.ConsumeIntegralInRange<std::int64_t>(-100, 10000) * kTicksPerField;
      default:
        return bytes_.ConsumeIntegral<std::int64_t>();
    }
  }

  std::int32_t Int32() {
    static constexpr std::int32_t kNotable[] = {0, 1, -1, 2, kMax32, kMin32, kMax32 - 1};
    switch (bytes_.ConsumeIntegralInRange(0, 2)) {
      case 0:
        return bytes_.PickValueInArray(kNotable);
      case 1:
        return bytes_.ConsumeIntegralInRange<std::int32_t>(-50, 500);
      default:
        return bytes_.ConsumeIntegral<std::int32_t>();
    }
  }

  Rate PickRate() {
    static constexpr Rate kRates[] = {{50, 1},     {60000, 1001}, {25, 1},
                                      {0, 1},      {50, 0},       {-50, 1},
                                      {kMax64, 1}, {1, kMax64},   {kMax64, kMax64}};
    if (bytes_.ConsumeIntegralInRange(0, 7) > 0) {
      return bytes_.PickValueInArray(kRates);
    }
    return {Int64(), Int64()};
  }

  Data::Clips::UmId PickClip() { return Data::Clips::UmId(bytes_.PickValueInArray(kClipTexts)); }

  // An element kind, mostly a handled one.
  Sequences::Element::Type Kind() {
    return static_cast<Sequences::Element::Type>(
        bytes_.ConsumeBool() ? bytes_.ConsumeIntegralInRange(-1, 3) : Int32());
  }

  Conversion::CurrentSequencePlayStatus PickStatus() { return {Int64(), Int64(), PickSpeed()}; }

  int Count(int most) { return bytes_.ConsumeIntegralInRange(0, most); }

  // Texts of the clips that elements and assets draw from, so that most
  // look-ups succeed; "" is the empty clip id, the last one is as long as a
  // clip id can be.
  static constexpr const char* kClipTexts[] = {"", "A", "CAM-A-0031", "CAM-A-003", "12345678901"};

  static Identifier AssetKey(const char* clipText) { return testing_support::AssetIdOf(clipText); }

 private:
  Data::Channels::Speed PickSpeed() {
    static constexpr Data::Channels::Speed kSpeeds[] = {
        {0, 1}, {1, 1}, {1, 2}, {2, 1}, {0, 0}, {-1, 1}, {1, 0}, {kMin32, -1}, {-1, kMin32}};
    if (bytes_.ConsumeIntegralInRange(0, 3) > 0) {
      return bytes_.PickValueInArray(kSpeeds);
    }
    return {Int32(), Int32()};
  }

  std::int32_t BoundaryKind() {
    return bytes_.ConsumeIntegralInRange(0, 7) > 0 ? bytes_.ConsumeIntegralInRange(0, 4) : Int32();
  }

  std::int32_t TransitionKind(std::int32_t last) {
    return bytes_.ConsumeIntegralInRange(0, 7) > 0 ? bytes_.ConsumeIntegralInRange(-1, last + 1)
                                                   : Int32();
  }

  std::int32_t TransitionDuration() {
    return bytes_.ConsumeBool() ? bytes_.ConsumeIntegralInRange(0, 60) : Int32();
  }

  template <std::size_t N>
  void FillOpaque(std::uint8_t (&opaque)[N]) {
    std::memset(opaque, bytes_.ConsumeIntegral<std::uint8_t>(), N);
  }

  void FillBase(Sequences::Element& element) {
    element.number = bytes_.ConsumeIntegral<std::uint32_t>();
    element.serverId = Data::Servers::ServerId(bytes_.ConsumeIntegralInRange(0U, 3U));
    element.playlistNumber = Int32();
    element.itemNumber = Int32();
    element.umId = PickClip();
    element.inBoundaryKind = BoundaryKind();
    element.outBoundaryKind = BoundaryKind();
    FillOpaque(element.opaqueAfterBoundaryKinds);
    element.speed = PickSpeed();
    FillOpaque(element.opaqueAfterSpeed);
    element.transitionType = TransitionKind(20);
  }

  template <typename ElementT>
  ElementT SingleSide() {
    ElementT element;
    FillBase(element);
    element.transitionDuration = TransitionDuration();
    element.inValue = Int64();
    element.outValue = Int64();
    return element;
  }

  void FillAudioVideo(Sequences::AudioVideoElement& element) {
    FillBase(element);
    element.audioTransitionType = TransitionKind(8);
    element.videoTransitionDuration = TransitionDuration();
    element.audioTransitionDuration = TransitionDuration();
    element.videoInValue = Int64();
    element.videoOutValue = Int64();
    element.audioInValue = Int64();
    element.audioOutValue = Int64();
  }

  void FillPlaylist(Sequences::Playlist& playlist) {
    FillOpaque(playlist.opaqueHeader);
    playlist.serverId = Data::Servers::ServerId(bytes_.ConsumeIntegral<std::uint32_t>());
    playlist.number = bytes_.ConsumeIntegral<std::uint32_t>();
    playlist.umId = PickClip();
    FillOpaque(playlist.opaqueAfterUmId);
    playlist.durationInFields = Int64();
    FillOpaque(playlist.opaqueAfterDuration);
    playlist.rate = PickRate();
    FillOpaque(playlist.opaqueAfterRate);
    FillOpaque(playlist.audioVideoTrack.opaqueHeader);
    for (int n = Count(6); n > 0; --n) {
      Sequences::AudioVideoElement element;
      FillAudioVideo(element);
      playlist.audioVideoTrack.elements.push_back(element);
    }
    playlist.auxTrackUmId = PickClip();
  }

  // A time boundary; an end may be the open end of material still recorded.
  TimeBoundary Boundary(bool mayBeOpen) {
    const std::int64_t value = mayBeOpen && bytes_.ConsumeIntegralInRange(0, 3) == 0
                                   ? Kov::TimePoints::TimePoint::MaxValue().value
                                   : Int64();
    return {value, bytes_.ConsumeIntegralInRange<std::uint8_t>(0, 2)};
  }

  void AddProfiles(Assets::MediaAsset& asset) {
    static constexpr std::int64_t kVideoRates[] = {50, 25, 60, 30, 0, -50, 59};
    const FullyQualifiedName& operatorName =
        Assets::KytOperatorMetadataProfile::StaticFullyQualifiedName();
    auto plain = std::make_shared<Assets::KytOperatorMetadataProfile>();
    plain->videoRate = bytes_.ConsumeBool() ? bytes_.PickValueInArray(kVideoRates) : Int64();
    switch (bytes_.ConsumeIntegralInRange(0, 5)) {
      case 0:
        break;
      case 1:
        asset.metadataProfiles[operatorName] = nullptr;
        break;
      case 2:
        asset.metadataProfiles[operatorName] = std::make_shared<ForeignProfile>();
        break;
      case 3: {
        auto derived = std::make_shared<DerivedOperatorProfile>();
        derived->videoRate = plain->videoRate;
        asset.metadataProfiles[operatorName] = derived;
        break;
      }
      case 4:
        asset.metadataProfiles[FullyQualifiedName("Kov.Other.Profile")] = plain;
        break;
      default:
        asset.metadataProfiles[operatorName] = plain;
        break;
    }
  }

  // Insertion into the sorted containers refuses duplicates and null items;
  // such an item is simply left out of the input.
  template <typename Container, typename Item>
  static void InsertIfAccepted(Container& container, const Item& item) {
    try {
      container.Insert(item);
    } catch (const std::runtime_error&) {
    }
  }

  std::shared_ptr<Assets::TrackLayout> Layout(
      const std::vector<std::shared_ptr<Assets::Track>>& tracks) {
    auto layout = std::make_shared<Assets::TrackLayout>();
    layout->id = Identifier(bytes_.ConsumeBool() ? "L1" : "L2");
    layout->secondId = bytes_.ConsumeBool() ? "" : "second";
    for (int n = Count(2); n > 0; --n) {
      Assets::TrackLayoutEntry entry{"E", "", {}};
      if (!tracks.empty() && bytes_.ConsumeBool()) {
        entry.track = tracks[bytes_.ConsumeIntegralInRange<std::size_t>(0, tracks.size() - 1)];
      }
      layout->entries.push_back(entry);
    }
    for (int n = Count(5); n > 0; --n) {
      const std::size_t pick = bytes_.ConsumeIntegralInRange<std::size_t>(0, tracks.size());
      layout->tracks.push_back(pick < tracks.size() ? tracks[pick].get() : nullptr);
    }
    return layout;
  }

  std::shared_ptr<Assets::MediaResource> Resource(
      std::vector<std::shared_ptr<Assets::Track>>& mediaTracks) {
    static constexpr std::int32_t kTrackKinds[] = {2, 0, 1, -1, 2, 0};
    auto resource = std::make_shared<Assets::MediaResource>();
    std::vector<std::shared_ptr<Assets::Track>> tracks;
    for (int n = Count(4); n > 0; --n) {
      auto track = std::make_shared<Assets::Track>();
      track->id = Identifier(std::string(1, static_cast<char>('a' + Count(3))));
      track->kind = bytes_.ConsumeBool() ? bytes_.PickValueInArray(kTrackKinds) : Int32();
      mediaTracks.push_back(track);
      tracks.push_back(track);
      if (bytes_.ConsumeBool()) {
        InsertIfAccepted(resource->tracks, track);
      }
    }
    for (int n = Count(2); n > 0; --n) {
      const std::string key = bytes_.PickValueInArray({"", "L1", "L2"});
      InsertIfAccepted(
          resource->trackLayouts,
          SharedReference<Assets::TrackLayout>(
              bytes_.ConsumeIntegralInRange(0, 5) > 0 ? Layout(tracks) : nullptr, Identifier(key)));
    }
    return resource;
  }

  void AddAsset(Assets::MediaAssetMap& assets,
                std::vector<std::shared_ptr<Assets::Track>>& mediaTracks) {
    Assets::MediaAsset asset;
    const char* clip = bytes_.PickValueInArray(kClipTexts);
    const Identifier key =
        bytes_.ConsumeIntegralInRange(0, 7) > 0 ? AssetKey(clip) : Identifier(clip);
    asset.id = bytes_.ConsumeBool() ? key : Identifier("other");
    asset.assetKind = bytes_.ConsumeBool() ? bytes_.ConsumeIntegralInRange(-1, 2) : Int32();
    for (int n = Count(4); n > 0; --n) {
      const TimeBoundary start = Boundary(false);
      InsertIfAccepted(asset.timeBounds, TimeBounds{start, Boundary(true)});
    }
    const TimeBoundary shortStart = Boundary(false);
    asset.shortBounds = {shortStart, Boundary(true)};
    AddProfiles(asset);
    for (int n = Count(2); n > 0; --n) {
      const std::string resourceKey = bytes_.PickValueInArray({"", "R1", "R2"});
      InsertIfAccepted(
          asset.resources,
          SharedReference<Assets::MediaResource>(
              bytes_.ConsumeIntegralInRange(0, 5) > 0 ? Resource(mediaTracks) : nullptr,
              Identifier(resourceKey)));
    }
    assets.emplace(key, std::move(asset));
  }

  FuzzedDataProvider& bytes_;
};

Conversion::ExternalSequenceInfo ContextOf(const Engine::Timeline& timeline, const Inputs& inputs) {
  return {timeline.id, inputs.playlist.rate, inputs.assets};
}

// ToTimeline in both duration modes and one arbitrary mode, with the shared map
// and without one. The mode decides the duration and nothing else; a missing
// map converts like an empty one; and the timeline agrees with its parts made
// one by one.
void ConvertWholePlaylist(const Inputs& inputs, std::int32_t arbitraryMode) {
  const Sequences::Playlist& playlist = inputs.playlist;
  const auto& elements = playlist.audioVideoTrack.elements;
  const bool hasAux = playlist.auxTrackUmId != Data::Clips::UmId::Empty();
  const auto listed = TimelineConverter::ListAssetsFromPlaylist(playlist);
  Require(listed.size() == elements.size() + (hasAux ? 1 : 0), "one listed asset per clip");

  const auto convert = [&](std::int32_t mode, std::shared_ptr<Assets::MediaAssetMap> assets,
                           Engine::Timeline* kept) {
    return Attempt(
        [&] {
          Engine::Timeline timeline = TimelineConverter::ToTimeline(
              playlist, static_cast<TimelineConverter::DurationMode>(mode), assets);
          std::string text = ModelText::Describe(timeline);
          if (kept != nullptr) {
            *kept = std::move(timeline);
          }
          return text;
        },
        FirstPlaylistNumber(elements));
  };
  Engine::Timeline byItems;
  const std::string fromItems = convert(TimelineConverter::FromTrackItems, inputs.assets, &byItems);
  Engine::Timeline byPlaylist;
  const std::string fromPlaylist =
      convert(TimelineConverter::FromPlaylist, inputs.assets, &byPlaylist);
  RequireSame(arbitraryMode == TimelineConverter::FromTrackItems ? fromItems : fromPlaylist,
              convert(arbitraryMode, inputs.assets, nullptr),
              "any mode other than 0 reads the playlist");
  RequireSame(inputs.assets->empty() ? fromPlaylist
                                     : convert(TimelineConverter::FromPlaylist,
                                               std::make_shared<Assets::MediaAssetMap>(), nullptr),
              convert(TimelineConverter::FromPlaylist, nullptr, nullptr),
              "a null map converts like an empty one");

  Require(fromItems.rfind("done", 0) == fromPlaylist.rfind("done", 0), "modes fail together");
  if (fromItems.rfind("done", 0) != 0) {
    RequireSame(fromItems, fromPlaylist, "both modes refuse alike");
    return;
  }
  Require(byPlaylist.duration == playlist.durationInFields / 2, "playlist duration in frames");
  byPlaylist.duration = byItems.duration;
  RequireSame(ModelText::Describe(byItems), ModelText::Describe(byPlaylist),
              "the mode changes the duration only");

  for (std::size_t t = 0; t < byItems.tracks.size(); ++t) {
    for (std::size_t i = 0; i < byItems.tracks[t].items.size(); ++i) {
      Require(*byItems.tracks[t].items[i] == *byPlaylist.tracks[t].items[i],
              "items with equal fields compare equal");
    }
  }

  const Conversion::ExternalSequenceInfo info = ContextOf(byItems, inputs);
  Require(byItems.tracks.size() == (hasAux ? 2U : 1U), "one track, two with an aux clip");
  RequireSame(ModelText::Describe(byItems.tracks[0]),
              ModelText::Describe(TrackConverter::ToTrack(playlist.audioVideoTrack, 0, info)),
              "the main track is the audio-video track");
  if (hasAux) {
    RequireSame(ModelText::Describe(byItems.tracks[1]),
                ModelText::Describe(TrackConverter::PlaylistAuxTrackToTrack(playlist, info)),
                "the second track is the aux track");
  }
  Require(byItems.mediaInfos.size() == inputs.assets->size(), "one media info per asset");
  std::size_t index = 0;
  for (const auto& entry : *inputs.assets) {
    RequireSame(ModelText::Describe(byItems.mediaInfos[index++]),
                ModelText::Describe(
                    Conversion::MediaInfoConverter::ToMediaInfo(entry.second, playlist.rate)),
                "media infos in map order");
  }
}

void ConvertAssets(const Inputs& inputs, const Rate& rate) {
  for (const auto& entry : *inputs.assets) {
    const Assets::MediaAsset& asset = entry.second;
    Attempt([&] {
      const Rate assetRate = TimeConverter::GetMediaAssetRate(asset);
      Require(assetRate.numerator == 50 || assetRate.numerator == 60000, "a named rate");
      return std::string();
    });
    Attempt([&] {
      const auto timing = TimeConverter::GetMediaAssetLimitInAndDuration(asset, rate);
      return std::to_string(timing.limitIn) + " " + std::to_string(timing.duration);
    });
    Attempt([&] {
      const auto timing = TimeConverter::GetShortInAndDurationFromMediaAsset(asset, rate);
      return std::to_string(timing.limitIn) + " " + std::to_string(timing.duration);
    });
    Attempt([&] {
      return ModelText::Describe(Conversion::MediaInfoConverter::ToMediaInfo(asset, rate));
    });
  }
}

// Transition items agree with the effects they carry and have their own ids.
void CheckTransitionItems(const Sequences::Element& element) {
  const auto check = [&](std::unique_ptr<Engine::FxTransitionItem> item,
                         const Engine::TransitionEffect& effect, const Identifier& id,
                         Engine::TrackItemType type) {
    Require((item == nullptr) == (effect.kind == 0), "a transition item unless kind 0");
    if (item) {
      RequireSame(ModelText::Describe(effect), ModelText::Describe(item->FxTransition()),
                  "the item carries the effect");
      Require(item->Id() == id && item->GetType() == type, "transition item id and type");
    }
  };
  check(TrackConverter::ToFxVideoTransitionItem(element),
        TimeConverter::ToVideoTransitionBounds(element),
        Conversion::ElementIdToTransitionId<Conversion::Video>(element), Engine::FxVideoTransition);
  check(TrackConverter::ToFxAudioTransitionItem(element),
        TimeConverter::ToAudioTransitionBounds(element),
        Conversion::ElementIdToTransitionId<Conversion::Audio>(element), Engine::FxAudioTransition);
}

// Every operation that takes one element.
void ConvertElement(const Sequences::Element& element, const Conversion::ExternalSequenceInfo& info,
                    InputBuilder& builder) {
  CheckTransitionItems(element);
  const auto mediaText = [](const Identifier& id, std::int64_t videoIn, std::int64_t videoDuration,
                            std::int64_t audioIn, std::int64_t audioDuration) {
    return id.Text() + " " + std::to_string(videoIn) + " " + std::to_string(videoDuration) + " " +
           std::to_string(audioIn) + " " + std::to_string(audioDuration);
  };
  const std::string bounds = Attempt([&] {
    const Conversion::MediaBounds media = TimeConverter::ToMediaBounds(element, info);
    return mediaText(media.mediaId, media.videoIn, media.videoDuration, media.audioIn,
                     media.audioDuration);
  });

  Conversion::CurrentSequencePlayStatus status = builder.PickStatus();
  const Conversion::CurrentSequencePlayStatus before = status;
  const std::string item = Attempt([&] {
    const auto media = TrackConverter::ToMediaSummaryItem(element, status, info);
    return mediaText(media->mediaId, media->mediaVideoIn, media->mediaVideoDuration,
                     media->mediaAudioIn, media->mediaAudioDuration);
  });
  RequireSame(bounds, item, "a media item plays the element's media bounds");
  if (item.rfind("done", 0) != 0) {
    Require(status.position == before.position && status.secondPosition == before.secondPosition &&
                status.speed == before.speed,
            "a refused item leaves the play status alone");
  }

  if (info.mediaAssets && !info.mediaAssets->empty()) {
    const Assets::MediaAsset& asset = info.mediaAssets->begin()->second;
    const long long inValue = builder.Int64();
    const long long outValue = builder.Int64();
    Attempt([&] {
      return std::to_string(TimeConverter::FieldInToRelativeFromBeginning(
          inValue, outValue, element, asset, info.rate));
    });
    Attempt([&] {
      return std::to_string(TimeConverter::FieldOutToRelativeFromBeginning(
          inValue, outValue, element, asset, info.rate));
    });
  }
}

// A clip id keeps a text of up to 11 characters (up to its first NUL) and
// refuses a longer one; a GUID's text fits any buffer it is given.
void ConvertIdentifiers(FuzzedDataProvider& bytes) {
  const std::string text = bytes.ConsumeRandomLengthString(16);
  const std::string kept = text.substr(0, text.find('\0'));
  std::string outcome;
  try {
    outcome = Data::Clips::UmId(text.c_str()).GetUmId();
  } catch (const std::exception& error) {
    outcome = std::string(typeid(error).name()) + ": " + error.what();
  }
  RequireSame(kept.size() <= Data::Clips::UmId::kMaxTextLength
                  ? kept
                  : std::string(typeid(std::invalid_argument).name()) +
                        ": UmId: the text has more than 11 characters",
              outcome, "a clip id keeps its text or refuses it");

  const Data::Sequences::Elements::Guid guid(
      bytes.ConsumeIntegral<unsigned>(),
      Data::Servers::ServerId(bytes.ConsumeIntegral<std::uint32_t>()));
  const unsigned size = bytes.ConsumeIntegralInRange(0U, Data::Guid::kTextLength + 2);
  // On the heap and exactly as large as said, so that the address sanitizer sees any overrun.
  std::vector<char> buffer(size, 'x');
  const char* written = guid.ToString(buffer.data(), size);
  Require(written == buffer.data(), "ToString returns its buffer");
  Require(
      size == 0 || std::strlen(written) == std::min<unsigned>(size - 1, Data::Guid::kTextLength),
      "ToString writes what fits");
}

// The lower entry points one by one, with a context of the fuzzer's choosing.
void ConvertParts(const Inputs& inputs, InputBuilder& builder, FuzzedDataProvider& bytes) {
  const Rate rate = bytes.ConsumeBool() ? inputs.playlist.rate : builder.PickRate();
  ConvertAssets(inputs, rate);

  static constexpr const char* kTimelineIds[] = {"", "7", "TIMELINE00",
                                                 "0a1b2c3d-0000-0000-0000-00000000000f"};
  const Conversion::ExternalSequenceInfo info{
      Identifier(bytes.PickValueInArray(kTimelineIds)), rate,
      bytes.ConsumeIntegralInRange(0, 15) > 0 ? inputs.assets : nullptr};
  const unsigned index = bytes.ConsumeBool() ? bytes.ConsumeIntegralInRange(0U, 12U)
                                             : bytes.ConsumeIntegral<unsigned>();
  Require(TrackConverter::TimelineIdToTrackId(info.timelineId, index).Text().size() >=
              info.timelineId.Text().size(),
          "a track id is never shorter than its timeline id");

  Attempt(
      [&] { return ModelText::Describe(TrackConverter::ToTrack(inputs.videoTrack, index, info)); },
      FirstPlaylistNumber(inputs.videoTrack.elements));
  Attempt(
      [&] { return ModelText::Describe(TrackConverter::ToTrack(inputs.audioTrack, index, info)); },
      FirstPlaylistNumber(inputs.audioTrack.elements));
  Attempt(
      [&] {
        return ModelText::Describe(
            TrackConverter::ToTrack(inputs.playlist.audioVideoTrack, index, info));
      },
      FirstPlaylistNumber(inputs.playlist.audioVideoTrack.elements));
  Attempt([&] {
    return ModelText::Describe(TrackConverter::PlaylistAuxTrackToTrack(inputs.playlist, info));
  });

  for (const auto& element : inputs.playlist.audioVideoTrack.elements) {
    ConvertElement(element, info, builder);
  }
  for (const auto& element : inputs.videoTrack.elements) {
    ConvertElement(element, info, builder);
  }
  for (const auto& element : inputs.audioTrack.elements) {
    ConvertElement(element, info, builder);
  }
  for (const auto& element : inputs.reportingElements) {
    ConvertElement(*element, info, builder);
  }

  const TimeBoundary to{builder.Int64(), 0};
  const TimeBoundary from{builder.Int64(), 0};
  Attempt([&] {
    return std::to_string(
        Kov::Replivo::Tollan::DataModelConversion::ClipMediaTimeConverter::TimeBoundaryToFields(
            to, from, rate));
  });
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  FuzzedDataProvider bytes(data, size);
  InputBuilder builder(bytes);
  const Inputs inputs = builder.Build();
  const std::string before = Describe(inputs);

  ConvertWholePlaylist(inputs, bytes.ConsumeIntegral<std::int32_t>());
  ConvertParts(inputs, builder, bytes);
  ConvertIdentifiers(bytes);

  RequireSame(before, Describe(inputs), "the inputs are unchanged and no longer referenced");
  return 0;
}
