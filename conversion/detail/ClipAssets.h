// The assets of one track conversion, found and timed once per clip. Within a
// call the asset map is only read, so the asset of a clip, its identifier text
// and its material length are the same at every element that plays the clip:
// the first such element finds the map's entry, the others find it by the
// clip's 12 bytes in a small open-addressed table. A clip whose asset is
// missing is never kept, so every element that meets it is refused at the same
// point as the first. Lives on the stack of one call: nothing is kept between
// calls or shared between threads. Internal to the library.
//
// Two ways to meet a clip for the first time:
//   by text  the timeline conversion walks the whole map for the media infos
//            anyway; it adds every entry here with the length it computed, and
//            a clip's asset is then found by the clip's identifier text,
//            written on the stack and hashed here: no identifier is built and
//            no text goes through the map's own hash.
//   by map   a track converted on its own looks the clip's identifier up in
//            the map, as the single-element conversions do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <memory>

#include "../../input-models/Identifier.h"
#include "../../input-models/MediaAsset.h"
#include "../../input-models/SequenceIdentifiers.h"
#include "../Refusals.hpp"
#include "AssetLookup.h"
#include "GuidText.h"
#include "PlayedParts.h"
#include "TimeUnits.h"

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

// The hash of a GUID text: its 36 characters read as four 64-bit words and one
// 32-bit word, folded and mixed.
inline std::size_t GuidTextHash(const char* text) {
  static_assert(Data::Guid::kTextLength == 4 * sizeof(std::uint64_t) + sizeof(std::uint32_t),
                "a GUID text is 36 characters");
  std::uint64_t hash = 0;
  for (std::size_t i = 0; i < 4; ++i) {
    std::uint64_t word;
    std::memcpy(&word, text + i * sizeof word, sizeof word);
    hash = (hash ^ word) * 0x9E3779B97F4A7C15u;
  }
  std::uint32_t tail;
  std::memcpy(&tail, text + 4 * sizeof(std::uint64_t), sizeof tail);
  return MixedBits(hash ^ tail);
}

class ClipAssets {
 public:
  enum class FirstLookup { ByText, ByMap };

  // An asset of the map with its material length, once computed.
  struct Asset {
    const DataModel::MediaAssets::MediaAssetMap::value_type* entry = nullptr;
    Frames length;
    bool lengthKnown = false;
  };

  // The length of an asset's material, counted the first time a boundary
  // asks, as MaterialLength counts it.
  class Length {
   public:
    Length(Asset& asset, const FieldCounter& counter) : asset_(asset), counter_(counter) {}
    Frames Get() {
      if (!asset_.lengthKnown) {
        asset_.length = MaterialFrames(asset_.entry->second, counter_);
        asset_.lengthKnown = true;
      }
      return asset_.length;
    }

   private:
    Asset& asset_;
    const FieldCounter& counter_;
  };

  // Room for every asset of the map (ByText) or for as many as the track can
  // meet (ByMap), and for the distinct clips of elementCount elements. The
  // map may be null (no asset at all).
  //
  // This table is working memory of the call, and it must not end up between
  // the blocks of the result: when it did (a heap table that grew while the
  // items were being made, and was freed after them), the freed block sat in
  // the middle of the result, later blocks filled it, and when the caller
  // freed the result the allocator gave the top of the heap back to the
  // system, so the next call faulted every page in again: 0.12 page faults
  // per element and 3.4 times the floor's time at 10,000 elements, for a
  // caller that frees each result before the next call. Hence: a table that
  // fits kInlineBytes lives on the stack; a larger one is one heap block,
  // sized once for the whole call and made before the first block of the
  // result, so that it never grows and leaves no hole among the result's
  // blocks when it goes.
  ClipAssets(const DataModel::MediaAssets::MediaAssetMap* map, std::size_t elementCount,
             FirstLookup firstLookup, const FieldCounter& counter)
      : map_(map), firstLookup_(firstLookup), counter_(counter) {
    const std::size_t mapSize = map != nullptr ? map->size() : 0;
    assetCapacity_ = firstLookup == FirstLookup::ByText ? mapSize : Smaller(elementCount, mapSize);
    textSlotCount_ = firstLookup == FirstLookup::ByText ? SlotsFor(mapSize) : 0;
    clipSlotCount_ = SlotsFor(Smaller(elementCount, mapSize));
    for (std::size_t count = clipSlotCount_; count > 1; count /= 2) {
      --clipShift_;
    }
    const std::size_t bytes = clipSlotCount_ * sizeof(ClipSlot) + assetCapacity_ * sizeof(Asset) +
                              textSlotCount_ * sizeof(std::uint32_t);
    std::byte* storage = inline_;
    if (bytes > sizeof inline_) {
      heap_.reset(new std::byte[bytes]);
      storage = heap_.get();
    }
    clipSlots_ = reinterpret_cast<ClipSlot*>(storage);
    std::uninitialized_value_construct_n(clipSlots_, clipSlotCount_);
    assets_ = reinterpret_cast<Asset*>(storage + clipSlotCount_ * sizeof(ClipSlot));
    std::uninitialized_value_construct_n(assets_, assetCapacity_);
    textSlots_ = reinterpret_cast<std::uint32_t*>(storage + clipSlotCount_ * sizeof(ClipSlot) +
                                                  assetCapacity_ * sizeof(Asset));
    std::uninitialized_value_construct_n(textSlots_, textSlotCount_);
  }
  ClipAssets(const ClipAssets&) = delete;
  ClipAssets& operator=(const ClipAssets&) = delete;

  // ByText only, once for every entry of the map: the entry, with its
  // material length when it was computed already at the counter's rate.
  void Add(const DataModel::MediaAssets::MediaAssetMap::value_type& entry, const Frames* length) {
    Asset& asset = assets_[assetsUsed_++];
    asset.entry = &entry;
    if (length != nullptr) {
      asset.length = *length;
      asset.lengthKnown = true;
    }
    // Any other text is never the identifier of a clip's asset.
    const std::string& text = entry.first.Text();
    if (text.size() != Data::Guid::kTextLength) {
      return;
    }
    for (std::size_t i = GuidTextHash(text.data()) & (textSlotCount_ - 1);;
         i = (i + 1) & (textSlotCount_ - 1)) {
      if (textSlots_[i] == 0) {
        textSlots_[i] = static_cast<std::uint32_t>(assetsUsed_);
        return;
      }
    }
  }

  // The asset of the clip; refuses a clip whose asset the map lacks. The
  // result stays valid until the next call.
  Asset& Find(const Data::Clips::UmId& clip) {
    const ClipKey key = KeyOf(clip);
    if (clipSlotCount_ != 0) {
      for (std::size_t i = SlotIndex(key);; i = (i + 1) & (clipSlotCount_ - 1)) {
        const ClipSlot& slot = clipSlots_[i];
        if (slot.asset == 0) {
          break;
        }
        if (slot.key.low == key.low && slot.key.high == key.high) {
          return assets_[slot.asset - 1];
        }
      }
    }
    return FirstMeeting(clip, key);
  }

  // The identifier of the asset that Find gave last, for the item that plays
  // it: a text built to look a clip up in the map is handed on, not copied.
  BusinessEntityModel::BaseTypes::Identifier MediaId(const Asset& asset) {
    if (builtPending_) {
      builtPending_ = false;
      return std::move(built_);
    }
    return asset.entry->first;
  }

  const FieldCounter& Counter() const { return counter_; }

 private:
  // Enough for the tables of a map and a track of a few dozen clips, far
  // below what a call may take of its thread's stack.
  static constexpr std::size_t kInlineBytes = 4096;
  static constexpr std::size_t kNone = ~std::size_t{0};
  static constexpr std::size_t kUnkept = kNone - 1;

  // The clip's 12 bytes as two numbers, compared without a library call.
  struct ClipKey {
    std::uint64_t low = 0;
    std::uint32_t high = 0;
  };

  struct ClipSlot {
    ClipKey key;
    // 1 + the index of the clip's asset; 0 while the slot is empty.
    std::uint32_t asset = 0;
  };

  static_assert(sizeof(Data::Clips::UmId) == sizeof(std::uint64_t) + sizeof(std::uint32_t),
                "a clip id is 12 bytes");

  static std::size_t Smaller(std::size_t a, std::size_t b) { return a < b ? a : b; }

  // Slots for n keys at most half full: a power of two, or none for no key.
  static std::size_t SlotsFor(std::size_t n) {
    if (n == 0) {
      return 0;
    }
    std::size_t count = 2;
    while (count < 2 * n) {
      count *= 2;
    }
    return count;
  }

  static ClipKey KeyOf(const Data::Clips::UmId& clip) {
    ClipKey key;
    std::memcpy(&key.low, clip.GetUmId(), sizeof key.low);
    std::memcpy(&key.high, clip.GetUmId() + sizeof key.low, sizeof key.high);
    return key;
  }

  // Multiplicative hashing of the whole key: the top bits of the product
  // depend on every byte, and clip texts often share their first characters
  // and differ only in their last.
  std::size_t SlotIndex(const ClipKey& key) const {
    return static_cast<std::size_t>(
        ((key.low ^ (std::uint64_t{key.high} * 0xC2B2AE3D27D4EB4Fu)) * 0x9E3779B97F4A7C15u) >>
        clipShift_);
  }

  // The first element of a clip: its asset found in the map or among the
  // entries added, and kept for the clip's other elements.
  [[gnu::noinline]] Asset& FirstMeeting(const Data::Clips::UmId& clip, const ClipKey& key) {
    const std::size_t index =
        firstLookup_ == FirstLookup::ByText ? FindByText(clip) : FindInMap(clip);
    if (index == kNone) {
      RefuseMissingElementAsset();
    }
    if (index == kUnkept) {
      return unkept_;
    }
    // At most half full, so that every probe meets an empty slot soon; past
    // that (only clips whose bytes differ after their text can get there),
    // later clips are found again at every element.
    if (clipSlotCount_ != 0 && 2 * (clipsUsed_ + 1) <= clipSlotCount_) {
      std::size_t i = SlotIndex(key);
      while (clipSlots_[i].asset != 0) {
        i = (i + 1) & (clipSlotCount_ - 1);
      }
      clipSlots_[i].key = key;
      clipSlots_[i].asset = static_cast<std::uint32_t>(index + 1);
      ++clipsUsed_;
    }
    return assets_[index];
  }

  // The index of the asset whose key is the clip's identifier text, or kNone.
  std::size_t FindByText(const Data::Clips::UmId& clip) const {
    if (textSlotCount_ == 0) {
      return kNone;
    }
    char text[Data::Guid::kTextLength + 1];
    ClipAssetText(clip, text);
    const std::size_t mask = textSlotCount_ - 1;
    for (std::size_t i = GuidTextHash(text) & mask;; i = (i + 1) & mask) {
      if (textSlots_[i] == 0) {
        return kNone;
      }
      const std::size_t index = textSlots_[i] - 1;
      if (std::memcmp(assets_[index].entry->first.Text().data(), text, Data::Guid::kTextLength) ==
          0) {
        return index;
      }
    }
  }

  // The clip's asset from the map: a new asset of the table, or kUnkept when
  // the table is full (then found again at every element), or kNone.
  std::size_t FindInMap(const Data::Clips::UmId& clip) {
    built_ = ClipAssetIdentifier(clip);
    const auto* entry = FindAssetEntry(map_, built_);
    if (entry == nullptr) {
      return kNone;
    }
    builtPending_ = true;
    Asset& asset = assetsUsed_ < assetCapacity_ ? assets_[assetsUsed_] : unkept_;
    asset = Asset();
    asset.entry = entry;
    if (&asset == &unkept_) {
      return kUnkept;
    }
    return assetsUsed_++;
  }

  const DataModel::MediaAssets::MediaAssetMap* map_;
  FirstLookup firstLookup_;
  const FieldCounter& counter_;
  std::size_t assetCapacity_ = 0;
  std::size_t assetsUsed_ = 0;
  std::size_t textSlotCount_ = 0;
  std::size_t clipSlotCount_ = 0;
  std::size_t clipsUsed_ = 0;
  // 64 - log2(clipSlotCount_): the top bits of a product index the slots.
  unsigned clipShift_ = 64;
  ClipSlot* clipSlots_ = nullptr;
  Asset* assets_ = nullptr;
  std::uint32_t* textSlots_ = nullptr;
  Asset unkept_;
  BusinessEntityModel::BaseTypes::Identifier built_;
  bool builtPending_ = false;
  std::unique_ptr<std::byte[]> heap_;
  alignas(std::max_align_t) std::byte inline_[kInlineBytes];
};

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
