// The one way the converters find an asset in the context's map: an exact-key
// look-up, where a missing map counts as an empty one. Internal to the library.
#pragma once

#include "../TimeConverter.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// The map's entry (its key and its asset), or null when there is none.
inline const DataModel::MediaAssets::MediaAssetMap::value_type* FindAssetEntry(
    const DataModel::MediaAssets::MediaAssetMap* map,
    const BusinessEntityModel::BaseTypes::Identifier& id) {
  if (map == nullptr) {
    return nullptr;
  }
  const auto found = map->find(id);
  return found == map->end() ? nullptr : &*found;
}

inline const DataModel::MediaAssets::MediaAssetMap::value_type* FindAssetEntry(
    const ExternalSequenceInfo& info, const BusinessEntityModel::BaseTypes::Identifier& id) {
  return FindAssetEntry(info.mediaAssets.get(), id);
}

inline const DataModel::MediaAssets::MediaAsset* FindAsset(
    const ExternalSequenceInfo& info, const BusinessEntityModel::BaseTypes::Identifier& id) {
  const auto* entry = FindAssetEntry(info, id);
  return entry == nullptr ? nullptr : &entry->second;
}

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
