// The conversion fuzzer's inputs: the fuzzer's bytes become a playlist, a video
// track, an audio track, a few elements of caller-derived classes and a shared
// asset map (recorded ranges with open ends, short ranges, metadata profiles of
// every sort, resources and track layouts with null and empty-key references,
// null track pointers), or change a few values of a generated sequence.
#include <cstring>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "ConversionFuzzer.h"

namespace conversion_fuzzer {

namespace {

using Kov::BusinessEntityModel::BaseTypes::FullyQualifiedName;
using Kov::BusinessEntityModel::BaseTypes::MetadataProfile;
using Kov::BusinessEntityModel::BaseTypes::SharedReference;
using Kov::TimePoints::TimeBounds;

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

}  // namespace

Inputs InputBuilder::Build() {
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

std::int64_t InputBuilder::Int64() {
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

std::int32_t InputBuilder::Int32() {
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

Rate InputBuilder::PickRate() {
  static constexpr Rate kRates[] = {{50, 1},  {60000, 1001}, {25, 1},     {0, 1},          {50, 0},
                                    {-50, 1}, {kMax64, 1},   {1, kMax64}, {kMax64, kMax64}};
  if (bytes_.ConsumeIntegralInRange(0, 7) > 0) {
    return bytes_.PickValueInArray(kRates);
  }
  return {Int64(), Int64()};
}

Data::Clips::UmId InputBuilder::PickClip() {
  return Data::Clips::UmId(bytes_.PickValueInArray(kClipTexts));
}

Sequences::Element::Type InputBuilder::Kind() {
  return static_cast<Sequences::Element::Type>(
      bytes_.ConsumeBool() ? bytes_.ConsumeIntegralInRange(-1, 3) : Int32());
}

Conversion::CurrentSequencePlayStatus InputBuilder::PickStatus() {
  return {Int64(), Int64(), PickSpeed()};
}

int InputBuilder::Count(int most) {
  return bytes_.ConsumeIntegralInRange(0, most);
}

Identifier InputBuilder::AssetKey(const char* clipText) {
  return testing_support::AssetIdOf(clipText);
}

Data::Channels::Speed InputBuilder::PickSpeed() {
  static constexpr Data::Channels::Speed kSpeeds[] = {
      {0, 1}, {1, 1}, {1, 2}, {2, 1}, {0, 0}, {-1, 1}, {1, 0}, {kMin32, -1}, {-1, kMin32}};
  if (bytes_.ConsumeIntegralInRange(0, 3) > 0) {
    return bytes_.PickValueInArray(kSpeeds);
  }
  return {Int32(), Int32()};
}

std::int32_t InputBuilder::BoundaryKind() {
  return bytes_.ConsumeIntegralInRange(0, 7) > 0 ? bytes_.ConsumeIntegralInRange(0, 4) : Int32();
}

std::int32_t InputBuilder::TransitionKind(std::int32_t last) {
  return bytes_.ConsumeIntegralInRange(0, 7) > 0 ? bytes_.ConsumeIntegralInRange(-1, last + 1)
                                                 : Int32();
}

std::int32_t InputBuilder::TransitionDuration() {
  return bytes_.ConsumeBool() ? bytes_.ConsumeIntegralInRange(0, 60) : Int32();
}

template <std::size_t N>
void InputBuilder::FillOpaque(std::uint8_t (&opaque)[N]) {
  std::memset(opaque, bytes_.ConsumeIntegral<std::uint8_t>(), N);
}

void InputBuilder::FillBase(Sequences::Element& element) {
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
ElementT InputBuilder::SingleSide() {
  ElementT element;
  FillBase(element);
  element.transitionDuration = TransitionDuration();
  element.inValue = Int64();
  element.outValue = Int64();
  return element;
}

void InputBuilder::FillAudioVideo(Sequences::AudioVideoElement& element) {
  FillBase(element);
  element.audioTransitionType = TransitionKind(8);
  element.videoTransitionDuration = TransitionDuration();
  element.audioTransitionDuration = TransitionDuration();
  element.videoInValue = Int64();
  element.videoOutValue = Int64();
  element.audioInValue = Int64();
  element.audioOutValue = Int64();
}

void InputBuilder::FillPlaylist(Sequences::Playlist& playlist) {
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

TimeBoundary InputBuilder::Boundary(bool mayBeOpen) {
  const std::int64_t value = mayBeOpen && bytes_.ConsumeIntegralInRange(0, 3) == 0
                                 ? Kov::TimePoints::TimePoint::MaxValue().value
                                 : Int64();
  return {value, bytes_.ConsumeIntegralInRange<std::uint8_t>(0, 2)};
}

void InputBuilder::AddProfiles(Assets::MediaAsset& asset) {
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

template <typename Container, typename Item>
void InputBuilder::InsertIfAccepted(Container& container, const Item& item) {
  try {
    container.Insert(item);
  } catch (const std::runtime_error&) {
  }
}

std::shared_ptr<Assets::TrackLayout> InputBuilder::Layout(
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

std::shared_ptr<Assets::MediaResource> InputBuilder::Resource(
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

void InputBuilder::AddAsset(Assets::MediaAssetMap& assets,
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
    InsertIfAccepted(asset.resources,
                     SharedReference<Assets::MediaResource>(
                         bytes_.ConsumeIntegralInRange(0, 5) > 0 ? Resource(mediaTracks) : nullptr,
                         Identifier(resourceKey)));
  }
  assets.emplace(key, std::move(asset));
}

void InputBuilder::Tweak(Sequences::Playlist& playlist) {
  auto& elements = playlist.audioVideoTrack.elements;
  for (int n = Count(3); n > 0 && !elements.empty(); --n) {
    auto& element = elements[bytes_.ConsumeIntegralInRange<std::size_t>(0, elements.size() - 1)];
    switch (bytes_.ConsumeIntegralInRange(0, 5)) {
      case 0:
        element.inBoundaryKind = BoundaryKind();
        break;
      case 1:
        element.outBoundaryKind = BoundaryKind();
        break;
      case 2:
        element.videoInValue = Int64();
        break;
      case 3:
        element.audioOutValue = Int64();
        break;
      case 4:
        element.speed = PickSpeed();
        break;
      default:
        element.transitionType = TransitionKind(20);
        element.videoTransitionDuration = TransitionDuration();
        break;
    }
  }
}

}  // namespace conversion_fuzzer
