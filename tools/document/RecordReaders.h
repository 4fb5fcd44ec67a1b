// RecordReaders: the library's input records (an element of the track, an
// asset with its resources) read from their nodes of the document, every field
// checked for presence, type and range.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "document/DocumentStream.h"
#include "document/JsonNode.h"
#include "document/PlaylistDocument.h"

namespace TimelineConvert {

// What a field of an element holds: an integer of a record field's range, a
// clip id, a boundary kind (by name or number), or a speed object.
enum class ElementValue { Unsigned32, Signed32, Signed64, ClipId, BoundaryKind, Speed };

struct ElementField {
  std::string_view name;
  ElementValue value;
  bool required;
};

// An element's fields in the order they are read, the required ones first.
// Both element readers go by this table, so they know the same fields.
inline constexpr std::array<ElementField, 16> kElementFields = {{
    {"number", ElementValue::Unsigned32, true},
    {"serverId", ElementValue::Unsigned32, true},
    {"playlistNumber", ElementValue::Signed32, true},
    {"itemNumber", ElementValue::Signed32, true},
    {"umId", ElementValue::ClipId, true},
    {"inBoundaryKind", ElementValue::BoundaryKind, true},
    {"outBoundaryKind", ElementValue::BoundaryKind, true},
    {"videoInValue", ElementValue::Signed64, true},
    {"videoOutValue", ElementValue::Signed64, true},
    {"audioInValue", ElementValue::Signed64, true},
    {"audioOutValue", ElementValue::Signed64, true},
    {"speed", ElementValue::Speed, false},
    {"transitionType", ElementValue::Signed32, false},
    {"videoTransitionDuration", ElementValue::Signed32, false},
    {"audioTransitionType", ElementValue::Signed32, false},
    {"audioTransitionDuration", ElementValue::Signed32, false},
}};

// Stores the integer field at `field` of kElementFields (the value already
// checked against the field's range).
void SetElementInteger(Kov::Replivo::Data::Sequences::AudioVideoElement& element, std::size_t field,
                       std::int64_t value);

// The boundary kind a name stands for; false for a name that is none.
bool BoundaryKindOfName(std::string_view name, std::int32_t& kind);

Kov::Replivo::Data::Sequences::AudioVideoElement ReadElement(const Node& node);

// The asset, and in `name` the key it is stored under and the clip it names.
Kov::DataModel::MediaAssets::MediaAsset ReadAsset(const Node& node, DocumentAsset& name);

// Reads the asset and adds it to the records, refusing a key given before.
void AddAsset(const Node& node, StreamedRecords& records);

}  // namespace TimelineConvert
