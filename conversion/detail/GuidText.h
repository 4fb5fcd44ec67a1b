// The identifiers that the conversion makes from GUIDs: the asset of a clip,
// the timeline of a sequence, the items of elements. Every place that names an
// asset goes through ClipAssetIdentifier, so the asset listing and the asset
// look-ups of the track conversions always agree. Internal to the library.
#pragma once

#include <string>

#include "../../input-models/Identifier.h"
#include "../../input-models/SequenceIdentifiers.h"

namespace Kov {
namespace Replivo {
namespace Tollan {
namespace TimelineEngineConversion {
namespace detail {

// The canonical text of a GUID, rendered into a 37-byte buffer. The text always
// fills it, so its length needs no counting.
inline BusinessEntityModel::BaseTypes::Identifier GuidToIdentifier(const Data::Guid& guid) {
  char buffer[Data::Guid::kTextLength + 1];
  return BusinessEntityModel::BaseTypes::Identifier(
      std::string(guid.ToString(buffer, sizeof buffer), Data::Guid::kTextLength));
}

// The text of a clip's asset identifier, written into a buffer of
// kTextLength + 1 bytes: the identifier without its own copy of the text.
inline const char* ClipAssetText(const Data::Clips::UmId& umId,
                                 char (&buffer)[Data::Guid::kTextLength + 1]) {
  return Data::Clips::Guid(std::string(umId.GetUmId())).ToString(buffer, sizeof buffer);
}

inline BusinessEntityModel::BaseTypes::Identifier ClipAssetIdentifier(
    const Data::Clips::UmId& umId) {
  char buffer[Data::Guid::kTextLength + 1];
  return BusinessEntityModel::BaseTypes::Identifier(
      std::string(ClipAssetText(umId, buffer), Data::Guid::kTextLength));
}

inline BusinessEntityModel::BaseTypes::Identifier SequenceIdentifier(
    const Data::Clips::UmId& umId) {
  return GuidToIdentifier(Data::Sequences::Guid(std::string(umId.GetUmId())));
}

}  // namespace detail
}  // namespace TimelineEngineConversion
}  // namespace Tollan
}  // namespace Replivo
}  // namespace Kov
