// Builders shared by the test suites: assets with recorded ranges given in
// fields, elements, conversion contexts, and an exact check of an exception's
// type and text.
#pragma once

#include <gtest/gtest.h>

#include <initializer_list>
#include <memory>
#include <string>
#include <typeinfo>
#include <utility>

#include "conversion/TimeConverter.h"
#include "input-models/MediaAsset.h"
#include "input-models/Sequence.h"

namespace testing_support {

namespace Data = Kov::Replivo::Data;
namespace Sequences = Kov::Replivo::Data::Sequences;
namespace Assets = Kov::DataModel::MediaAssets;
namespace Conversion = Kov::Replivo::Tollan::TimelineEngineConversion;
using Kov::BusinessEntityModel::BaseTypes::Identifier;

// At the 50/1 rate one field is 100,000 ticks; tests count time in fields.
constexpr std::int64_t kTicksPerField = 100000;

Kov::TimePoints::TimeBounds FieldRange(std::int64_t startField, std::int64_t endField);
// A range that starts at a field and is still being recorded.
Kov::TimePoints::TimeBounds OpenRange(std::int64_t startField);

// The asset key of a clip, as the conversion makes it.
Identifier AssetIdOf(const char* umIdText);

// An asset keyed by its clip's id, with its recorded ranges.
Assets::MediaAsset AssetWithRanges(const char* umIdText,
                                   std::initializer_list<Kov::TimePoints::TimeBounds> ranges);

// An audio-video element playing the same part of its clip on both sides.
Sequences::AudioVideoElement AvElement(const char* umIdText, std::int32_t inKind,
                                       std::int32_t outKind, std::int64_t inValue,
                                       std::int64_t outValue);

// A video or audio element playing a part of its clip.
template <typename ElementT>
ElementT SingleSidedElement(const char* umIdText, std::int32_t inKind, std::int32_t outKind,
                            std::int64_t inValue, std::int64_t outValue) {
  ElementT element;
  element.umId = Data::Clips::UmId(umIdText);
  element.inBoundaryKind = inKind;
  element.outBoundaryKind = outKind;
  element.inValue = inValue;
  element.outValue = outValue;
  return element;
}

// A context at 50/1 holding the given assets.
Conversion::ExternalSequenceInfo InfoWith(std::initializer_list<Assets::MediaAsset> assets,
                                          Identifier timelineId = "TIMELINE00");

// Expects `action` to throw exactly `Exception` (not a subclass) with `message`.
template <typename Exception, typename Action>
void ExpectThrowExactly(Action&& action, const std::string& message) {
  try {
    std::forward<Action>(action)();
    ADD_FAILURE() << "expected " << typeid(Exception).name() << ": " << message;
  } catch (const std::exception& error) {
    EXPECT_EQ(typeid(Exception), typeid(error)) << "thrown: " << typeid(error).name();
    EXPECT_EQ(message, error.what());
  }
}

}  // namespace testing_support
