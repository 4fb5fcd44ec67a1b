// The assets of one track conversion, found and timed once per clip. Within a
// call the asset map is only read, so the asset of a clip, its identifier text
// and its material length are the same at every element that plays the clip:
// the first such element builds the identifier, looks it up and keeps the
// map's entry here; the others find it by the clip's 12 bytes in a small
// open-addressed table. A clip whose asset is missing is never kept, so every
// element that meets it is refused at the same point as the first. The
// timeline conversion also hands on the lengths it computed for the media
// infos. Lives on the stack of one call: nothing is kept between calls or
// shared between threads. Internal to the library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "../../engine-model/Track.h"
#include "../../input-models/Identifier.h"
#include "../../input-models/MediaAsset.h"
#include "../../input-models/Sequence.h"
#include "../../input-models/SequenceIdentifiers.h"
#include "../Refusals.hpp"
#include "../TimeConverter.h"
#include "AssetLookup.h"
#include "GuidText.h"
#include "PlayedParts.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// A 64-bit value with every input bit spread over every output bit, so that
// any part of it can index a table.
inline std::size_t MixedBits(std::uint64_t value) {
  value ^= value >> 33;
  value *= 0xFF51AFD7ED558CCDu;
  value ^= value >> 33;
  value *= 0xC4CEB9FE1A85EC53u;
  value ^= value >> 33;
  return static_cast<std::size_t>(value);
}

// Material lengths already computed in the same call, by asset: the timeline
// conversion times every asset of the map for its media infos, at the
// sequence's rate, before it converts the track, and hands the lengths on so
// that the track does not count the same ranges again. Sized once for the
// assets of the map; a few assets need no heap at all.
class AssetLengths {
 public:
  explicit AssetLengths(std::size_t assetCount) {
    std::size_t count = kInlineSlots;
    while (count < 2 * assetCount) {
      count *= 2;
    }
    if (count > kInlineSlots) {
      heap_.reset(new Slot[count]);
      slots_ = heap_.get();
    }
    mask_ = count - 1;
  }
  AssetLengths(const AssetLengths&) = delete;
  AssetLengths& operator=(const AssetLengths&) = delete;

  // At most once per asset, and for no more assets than the count given.
  void Add(const DataModel::MediaAssets::MediaAsset& asset, Frames length) {
    Slot& slot = *Probe(&asset);
    slot.asset = &asset;
    slot.length = length;
  }

  // The asset's length, or null when it was not added.
  const Frames* Find(const DataModel::MediaAssets::MediaAsset& asset) const {
    const Slot& slot = *Probe(&asset);
    return slot.asset != nullptr ? &slot.length : nullptr;
  }

 private:
  static constexpr std::size_t kInlineSlots = 16;

  struct Slot {
    const DataModel::MediaAssets::MediaAsset* asset = nullptr;
    Frames length;
  };

  Slot* Probe(const DataModel::MediaAssets::MediaAsset* asset) const {
    for (std::size_t i = MixedBits(reinterpret_cast<std::uintptr_t>(asset)) & mask_;;
         i = (i + 1) & mask_) {
      Slot& slot = slots_[i];
      if (slot.asset == nullptr || slot.asset == asset) {
        return &slot;
      }
    }
  }

  std::array<Slot, kInlineSlots> inline_{};
  std::unique_ptr<Slot[]> heap_;
  Slot* slots_ = inline_.data();
  std::size_t mask_ = kInlineSlots - 1;
};

class ClipAssets {
 public:
  // known, when given, holds lengths computed earlier in the same call at the
  // rate of info.
  explicit ClipAssets(const ExternalSequenceInfo& info, const AssetLengths* known = nullptr)
      : info_(info), known_(known) {}
  ClipAssets(const ClipAssets&) = delete;
  ClipAssets& operator=(const ClipAssets&) = delete;

  // The material length of the clip's asset, with the asset's identifier
  // written to mediaId; refuses a clip whose asset the map lacks. The result
  // stays valid until the next call.
  MaterialLength& Find(const Data::Clips::UmId& clip,
                       BusinessEntityModel::BaseTypes::Identifier& mediaId) {
    const ClipKey key = KeyOf(clip);
    Slot* slot = Probe(key);
    if (slot->entry != nullptr) {
      mediaId = slot->entry->first;
      return slot->material;
    }
    mediaId = ClipAssetIdentifier(clip);
    const auto* entry = FindAssetEntry(info_, mediaId);
    if (entry == nullptr) {
      RefuseMissingElementAsset();
    }
    // At most half full, so that every probe meets an empty slot soon.
    if (2 * (used_ + 1) > mask_ + 1) {
      Grow();
      slot = Probe(key);
    }
    slot->key = key;
    slot->entry = entry;
    slot->material = MaterialLength(entry->second, info_.rate);
    if (known_ != nullptr) {
      if (const Frames* length = known_->Find(entry->second)) {
        slot->material = MaterialLength(entry->second, info_.rate, *length);
      }
    }
    ++used_;
    return slot->material;
  }

 private:
  // Enough for the clips of most tracks without touching the heap.
  static constexpr std::size_t kInlineSlots = 16;

  // The clip's 12 bytes as two numbers, compared without a library call.
  struct ClipKey {
    std::uint64_t low = 0;
    std::uint32_t high = 0;
  };

  struct Slot {
    ClipKey key;
    // The map's entry; null while the slot is empty.
    const DataModel::MediaAssets::MediaAssetMap::value_type* entry = nullptr;
    MaterialLength material;
  };

  static_assert(sizeof(Data::Clips::UmId) == sizeof(std::uint64_t) + sizeof(std::uint32_t),
                "a clip id is 12 bytes");

  static ClipKey KeyOf(const Data::Clips::UmId& clip) {
    ClipKey key;
    std::memcpy(&key.low, clip.GetUmId(), sizeof key.low);
    std::memcpy(&key.high, clip.GetUmId() + sizeof key.low, sizeof key.high);
    return key;
  }

  // Every byte of the key moves every bit of the index: clip texts often share
  // their first characters and differ only in their last.
  std::size_t SlotIndex(const ClipKey& key) const {
    return MixedBits(key.low ^ (std::uint64_t{key.high} << 32 | key.high)) & mask_;
  }

  // The clip's slot, or the empty slot where it belongs.
  Slot* Probe(const ClipKey& key) {
    for (std::size_t i = SlotIndex(key);; i = (i + 1) & mask_) {
      Slot& slot = slots_[i];
      if (slot.entry == nullptr || (slot.key.low == key.low && slot.key.high == key.high)) {
        return &slot;
      }
    }
  }

  void Grow() {
    const std::size_t oldCount = mask_ + 1;
    std::unique_ptr<Slot[]> grown(new Slot[2 * oldCount]);
    Slot* const old = slots_;
    slots_ = grown.get();
    mask_ = 2 * oldCount - 1;
    for (std::size_t i = 0; i < oldCount; ++i) {
      if (old[i].entry != nullptr) {
        *Probe(old[i].key) = old[i];
      }
    }
    heap_ = std::move(grown);
  }

  const ExternalSequenceInfo& info_;
  const AssetLengths* known_;
  std::array<Slot, kInlineSlots> inline_{};
  std::unique_ptr<Slot[]> heap_;
  Slot* slots_ = inline_.data();
  std::size_t mask_ = kInlineSlots - 1;
  std::size_t used_ = 0;
};

// The audio-video track as TrackConverter::ToTrack converts it, with the
// lengths that the caller computed earlier in the same call at info's rate.
TimelineEngineModel::Track ToTrackWithKnownLengths(
    const Data::Sequences::Track<Data::Sequences::AudioVideoElement>& track, unsigned index,
    const ExternalSequenceInfo& info, const AssetLengths& known);

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
