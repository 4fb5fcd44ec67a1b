// The conversion fuzzer's properties: answers of the same question that must
// agree with each other, over every public operation.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "ConversionFuzzer.h"
#include "support/RefusalTexts.h"
#include "support/SequenceGenerator.h"

namespace conversion_fuzzer {

namespace {

using Conversion::TimeConverter;
using Conversion::TimelineConverter;
using Conversion::TrackConverter;

Conversion::ExternalSequenceInfo ContextOf(const Engine::Timeline& timeline, const Inputs& inputs) {
  return {timeline.id, inputs.playlist.rate, inputs.assets};
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

std::string MediaPart(const Engine::MediaSummaryItem& item) {
  return item.mediaId.Text() + " " + std::to_string(item.mediaVideoIn) + "+" +
         std::to_string(item.mediaVideoDuration) + " " + std::to_string(item.mediaAudioIn) + "+" +
         std::to_string(item.mediaAudioDuration);
}

std::string ConvertedWhole(const Sequences::Playlist& playlist,
                           const std::shared_ptr<Assets::MediaAssetMap>& assets,
                           Engine::Timeline* kept = nullptr) {
  return Attempt(
      [&] {
        Engine::Timeline timeline =
            TimelineConverter::ToTimeline(playlist, TimelineConverter::FromTrackItems, assets);
        if (kept != nullptr) {
          *kept = std::move(timeline);
        }
        return std::string();
      },
      FirstPlaylistNumber(playlist.audioVideoTrack.elements));
}

// Each media item names the key listed for its element and plays what the
// element plays alone (a track of its own, a map holding only its asset); a
// planted refusal is the same whatever follows it, and what comes before it
// converts.
void CheckAgainstElementsAlone(const Sequences::Playlist& playlist,
                               const std::shared_ptr<Assets::MediaAssetMap>& assets,
                               std::size_t refused) {
  Engine::Timeline timeline;
  const std::string whole = ConvertedWhole(playlist, assets, &timeline);
  const auto& elements = playlist.audioVideoTrack.elements;
  if (refused < elements.size()) {
    Require(whole != "done ", "a planted refusal is refused");
    Sequences::Playlist cut = playlist;
    cut.audioVideoTrack.elements.resize(refused + 1);
    RequireSame(whole, ConvertedWhole(cut, assets), "a refusal is the same whatever follows it");
    cut.audioVideoTrack.elements.pop_back();
    RequireSame("done ", ConvertedWhole(cut, assets), "what comes before a refusal converts");
    return;
  }
  if (whole != "done ") {
    return;
  }
  std::vector<const Engine::MediaSummaryItem*> media;
  for (const auto& item : timeline.tracks[0].items) {
    if (const auto* found = dynamic_cast<const Engine::MediaSummaryItem*>(item.get())) {
      media.push_back(found);
    }
  }
  Require(media.size() == elements.size(), "one media item per element");
  const auto listed = TimelineConverter::ListAssetsFromPlaylist(playlist);
  const std::size_t first = listed.size() - elements.size();  // after the aux clip's key
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const Identifier& key = listed[first + i];
    Require(media[i]->mediaId == key, "a media item plays the asset listed for its element");
    auto own = std::make_shared<Assets::MediaAssetMap>();
    own->emplace(key, assets->at(key));
    Sequences::Track<Sequences::AudioVideoElement> alone;
    alone.elements = {elements[i]};
    const Engine::Track track = TrackConverter::ToTrack(alone, 0, {"ALONE", playlist.rate, own});
    Require(track.items.size() == 1, "an element alone is one media item");
    RequireSame(MediaPart(dynamic_cast<const Engine::MediaSummaryItem&>(*track.items[0])),
                MediaPart(*media[i]), "a media item plays what its element plays alone");
  }
}

}  // namespace

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
                  : std::string(testing_support::kUmIdTooLong.type.name()) + ": " +
                        testing_support::kUmIdTooLong.text,
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

// A sequence of the shape operators edit, from the shared generator, with a
// few values changed or one element planted to be refused.
void ConvertGeneratedSequence(InputBuilder& builder, FuzzedDataProvider& bytes) {
  // Every other input, so that the fuzzer keeps most of its pace.
  if (bytes.remaining_bytes() == 0 || !bytes.ConsumeBool()) {
    return;
  }
  testing_support::SequenceShape shape;
  shape.elements = bytes.ConsumeIntegralInRange<std::size_t>(1, 80);
  shape.clips = bytes.ConsumeIntegralInRange<std::size_t>(1, 40);
  shape.maxRanges = bytes.ConsumeIntegralInRange<std::size_t>(1, 20);
  shape.auxClip = bytes.ConsumeBool();
  shape.trackLayouts = bytes.ConsumeBool();
  shape.plantRefusal = bytes.ConsumeBool();
  auto generated = testing_support::GenerateSequence(bytes.ConsumeIntegral<std::uint64_t>(), shape);
  if (!shape.plantRefusal) {
    builder.Tweak(generated.playlist);
  }
  Inputs inputs;
  inputs.playlist = std::move(generated.playlist);
  inputs.assets = std::move(generated.assets);
  const std::string before = Describe(inputs);
  ConvertWholePlaylist(inputs, bytes.ConsumeIntegral<std::int32_t>());
  CheckAgainstElementsAlone(inputs.playlist, inputs.assets, generated.refusedElement);
  RequireSame(before, Describe(inputs), "a generated input is unchanged and no longer referenced");
}

}  // namespace conversion_fuzzer
