// SPDX-License-Identifier: Apache-2.0
// MetadataProfile: the polymorphic base of the metadata profiles that an asset
// carries, stored by the name of their class.
#pragma once

#include "Export.h"
#include "Identifier.h"

namespace Kov {
namespace BusinessEntityModel {
namespace BaseTypes {

class TIMELINE_ENGINE_CONVERSION_API MetadataProfile {
 public:
  MetadataProfile() = default;
  MetadataProfile(const MetadataProfile&) = default;
  MetadataProfile& operator=(const MetadataProfile&) = default;
  virtual ~MetadataProfile();
};

}  // namespace BaseTypes
}  // namespace BusinessEntityModel
}  // namespace Kov
