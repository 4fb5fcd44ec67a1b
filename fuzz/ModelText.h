// Text forms of the conversion's inputs and results, field by field, for the
// fuzzer and the reliability tests. Two inputs with the same text have the same
// bytes (opaque spans included), the same dynamic element classes, the same
// shared objects at the same addresses and the same owner counts, so comparing
// the text before and after a conversion proves that the conversion left its
// input untouched. Results are written without addresses, so results made in
// different threads or runs compare equal when they carry the same values.
#pragma once

#include <TimelineEngineConversion/TimelineEngineConversion.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <typeinfo>

namespace ModelText {

namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Engine = Kov::TimelineEngineModel;

inline void Number(std::string& out, const char* name, long long value) {
  out.append(name).append("=").append(std::to_string(value)).append(" ");
}

// Length first, so that no text can pass for another field.
inline void Text(std::string& out, const char* name, const std::string& text) {
  out.append(name).append("[").append(std::to_string(text.size())).append("]=");
  out.append(text).append(" ");
}

inline void Bytes(std::string& out, const char* name, const void* data, std::size_t size) {
  static constexpr char kHex[] = "0123456789abcdef";
  out.append(name).append("=");
  for (std::size_t i = 0; i < size; ++i) {
    const unsigned byte = static_cast<const unsigned char*>(data)[i];
    out.push_back(kHex[byte >> 4]);
    out.push_back(kHex[byte & 0x0f]);
  }
  out.append(" ");
}

inline void Address(std::string& out, const char* name, const void* pointer) {
  Number(out, name, static_cast<long long>(reinterpret_cast<std::uintptr_t>(pointer)));
}

// A shared object's identity: where it lives and how many own it.
template <typename T>
void Shared(std::string& out, const char* name, const std::shared_ptr<T>& pointer) {
  Address(out, name, pointer.get());
  Number(out, "owners", pointer.use_count());
}

inline void UmId(std::string& out, const char* name, const Kov::Replivo::Data::Clips::UmId& umId) {
  // The whole record, the zero bytes after the text included.
  Bytes(out, name, umId.GetUmId(), Kov::Replivo::Data::Clips::UmId::kMaxTextLength + 1);
}

inline void ElementBase(std::string& out, const Sequences::Element& element) {
  Text(out, "class", typeid(element).name());
  Number(out, "type", element.GetType());
  Number(out, "number", element.number);
  Number(out, "server", element.serverId.Value());
  Number(out, "playlistNumber", element.playlistNumber);
  Number(out, "itemNumber", element.itemNumber);
  UmId(out, "umId", element.umId);
  Number(out, "inKind", element.inBoundaryKind);
  Number(out, "outKind", element.outBoundaryKind);
  Bytes(out, "opaque1", element.opaqueAfterBoundaryKinds, sizeof element.opaqueAfterBoundaryKinds);
  Number(out, "speed", element.speed.numerator);
  Number(out, "per", element.speed.denominator);
  Bytes(out, "opaque2", element.opaqueAfterSpeed, sizeof element.opaqueAfterSpeed);
  Number(out, "transition", element.transitionType);
}

inline std::string Describe(const Sequences::Element& element) {
  std::string out;
  ElementBase(out, element);
  return out;
}

// Video and audio elements share their fields.
template <typename SingleSideElement>
std::string DescribeSingleSide(const SingleSideElement& element) {
  std::string out;
  ElementBase(out, element);
  Number(out, "transitionDuration", element.transitionDuration);
  Number(out, "in", element.inValue);
  Number(out, "out", element.outValue);
  return out;
}
inline std::string Describe(const Sequences::VideoElement& element) {
  return DescribeSingleSide(element);
}
inline std::string Describe(const Sequences::AudioElement& element) {
  return DescribeSingleSide(element);
}

inline std::string Describe(const Sequences::AudioVideoElement& element) {
  std::string out;
  ElementBase(out, element);
  Number(out, "audioTransition", element.audioTransitionType);
  Number(out, "videoTransitionDuration", element.videoTransitionDuration);
  Number(out, "audioTransitionDuration", element.audioTransitionDuration);
  Number(out, "videoIn", element.videoInValue);
  Number(out, "videoOut", element.videoOutValue);
  Number(out, "audioIn", element.audioInValue);
  Number(out, "audioOut", element.audioOutValue);
  return out;
}

template <typename ElementT>
std::string Describe(const Sequences::Track<ElementT>& track) {
  std::string out;
  Bytes(out, "header", track.opaqueHeader, sizeof track.opaqueHeader);
  Address(out, "elements", track.elements.data());
  Number(out, "count", static_cast<long long>(track.elements.size()));
  for (const ElementT& element : track.elements) {
    out.append("{").append(Describe(element)).append("} ");
  }
  return out;
}

inline std::string Describe(const Sequences::Playlist& playlist) {
  std::string out;
  Bytes(out, "header", playlist.opaqueHeader, sizeof playlist.opaqueHeader);
  Number(out, "server", playlist.serverId.Value());
  Number(out, "number", playlist.number);
  UmId(out, "umId", playlist.umId);
  Bytes(out, "opaque1", playlist.opaqueAfterUmId, sizeof playlist.opaqueAfterUmId);
  Number(out, "duration", playlist.durationInFields);
  Bytes(out, "opaque2", playlist.opaqueAfterDuration, sizeof playlist.opaqueAfterDuration);
  Number(out, "rate", playlist.rate.numerator);
  Number(out, "per", playlist.rate.denominator);
  Bytes(out, "opaque3", playlist.opaqueAfterRate, sizeof playlist.opaqueAfterRate);
  out.append("track{").append(Describe(playlist.audioVideoTrack)).append("} ");
  UmId(out, "aux", playlist.auxTrackUmId);
  return out;
}

inline void MediaTrack(std::string& out, const Assets::Track* track) {
  Address(out, "track", track);
  if (track != nullptr) {
    Text(out, "id", track->id.Text());
    Text(out, "secondId", track->secondId);
    Number(out, "kind", track->kind);
  }
}

inline void Layout(std::string& out, const Assets::TrackLayout& layout) {
  Text(out, "id", layout.id.Text());
  Text(out, "secondId", layout.secondId);
  for (const Assets::TrackLayoutEntry& entry : layout.entries) {
    Text(out, "entry", entry.id);
    Text(out, "secondId", entry.secondId);
    Address(out, "target", entry.track.lock().get());
    Number(out, "owners", entry.track.use_count());
  }
  for (const Assets::Track* track : layout.tracks) {
    MediaTrack(out, track);
  }
}

inline void Resource(std::string& out, const Assets::MediaResource& resource) {
  for (const auto& reference : resource.trackLayouts) {
    Text(out, "layoutKey", reference.Key().Text());
    Shared(out, "layout", reference.Pointer());
    if (reference.Pointer()) {
      out.append("{");
      Layout(out, *reference.Pointer());
      out.append("} ");
    }
  }
  for (const std::shared_ptr<Assets::Track>& track : resource.tracks) {
    Number(out, "owners", track.use_count());
    MediaTrack(out, track.get());
  }
}

inline std::string Describe(const Assets::MediaAsset& asset) {
  std::string out;
  Text(out, "id", asset.id.Text());
  Number(out, "kind", asset.assetKind);
  for (const Kov::TimePoints::TimeBounds& range : asset.timeBounds) {
    Bytes(out, "range", &range, sizeof range);
  }
  Bytes(out, "short", &asset.shortBounds, sizeof asset.shortBounds);
  for (const auto& profile : asset.metadataProfiles) {
    Text(out, "profile", profile.first.Text());
    Shared(out, "object", profile.second);
    if (const auto* object = profile.second.get()) {
      Text(out, "class", typeid(*object).name());
    }
    if (const auto* kyt =
            dynamic_cast<const Assets::KytOperatorMetadataProfile*>(profile.second.get())) {
      Number(out, "videoRate", kyt->videoRate);
    }
  }
  for (const auto& reference : asset.resources) {
    Text(out, "resourceKey", reference.Key().Text());
    Shared(out, "resource", reference.Pointer());
    if (reference.Pointer()) {
      out.append("{");
      Resource(out, *reference.Pointer());
      out.append("} ");
    }
  }
  return out;
}

// The map in its iteration order, with where each asset lives.
inline std::string Describe(const Assets::MediaAssetMap& assets) {
  std::string out;
  Number(out, "buckets", static_cast<long long>(assets.bucket_count()));
  for (const auto& entry : assets) {
    Text(out, "key", entry.first.Text());
    Address(out, "at", &entry.second);
    out.append("{").append(Describe(entry.second)).append("} ");
  }
  return out;
}

inline std::string Describe(const Engine::TransitionEffect& effect) {
  std::string out;
  Number(out, "kind", effect.kind);
  Number(out, "offset", effect.offset);
  Number(out, "duration", effect.duration);
  Text(out, "name", effect.name);
  return out;
}

inline std::string Describe(const Engine::TrackItem& item) {
  std::string out;
  Text(out, "class", typeid(item).name());
  Number(out, "type", item.GetType());
  Text(out, "id", item.Id().Text());
  if (const auto* media = dynamic_cast<const Engine::MediaSummaryItem*>(&item)) {
    Number(out, "timelineVideoIn", media->timelineVideoIn);
    Number(out, "timelineVideoDuration", media->timelineVideoDuration);
    Number(out, "timelineAudioIn", media->timelineAudioIn);
    Number(out, "timelineAudioDuration", media->timelineAudioDuration);
    Text(out, "media", media->mediaId.Text());
    Number(out, "mediaVideoIn", media->mediaVideoIn);
    Number(out, "mediaVideoDuration", media->mediaVideoDuration);
    Number(out, "mediaAudioIn", media->mediaAudioIn);
    Number(out, "mediaAudioDuration", media->mediaAudioDuration);
    Number(out, "reservedA", media->reservedA);
    Number(out, "reservedB", media->reservedB);
  }
  if (const auto* transition = dynamic_cast<const Engine::FxTransitionItem*>(&item)) {
    out.append(Describe(transition->FxTransition()));
  }
  return out;
}

inline std::string Describe(const Engine::Track& track) {
  std::string out;
  Text(out, "id", track.id.Text());
  Number(out, "type", track.type);
  for (const std::shared_ptr<Engine::TrackItem>& item : track.items) {
    out.append("{").append(item ? Describe(*item) : std::string("null")).append("} ");
  }
  return out;
}

inline std::string Describe(const Engine::MediaInfo& info) {
  std::string out;
  Text(out, "id", info.id.Text());
  Number(out, "limitIn", info.limitIn);
  Number(out, "duration", info.duration);
  Text(out, "tracks", info.tracksDescription);
  return out;
}

inline std::string Describe(const Engine::Timeline& timeline) {
  std::string out;
  Text(out, "id", timeline.id.Text());
  Text(out, "secondaryId", timeline.secondaryId.Text());
  Number(out, "duration", timeline.duration);
  for (const Engine::Track& track : timeline.tracks) {
    out.append("track{").append(Describe(track)).append("} ");
  }
  for (const Engine::MediaInfo& info : timeline.mediaInfos) {
    out.append("info{").append(Describe(info)).append("} ");
  }
  return out;
}

}  // namespace ModelText
