// The one way the converters find an asset in the context's map: an exact-key
// look-up, where a missing map counts as an empty one. Internal to the library.
#pragma once

#include "../TimeConverter.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

inline const DataModel::MediaAssets::MediaAsset* FindAsset(
    const ExternalSequenceInfo& info, const BusinessEntityModel::BaseTypes::Identifier& id) {
  if (!info.mediaAssets) {
    return nullptr;
  }
  const auto found = info.mediaAssets->find(id);
  return found == info.mediaAssets->end() ? nullptr : &found->second;
}

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
