// Every refusal of the library, exception type and exact text, in one table,
// and the one check of a refusal: the type (not a subclass) and the text
// together. The four transition refusals carry numbers and are made here too.
#pragma once

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <typeinfo>
#include <utility>

namespace testing_support {

struct Refusal {
  const std::type_info& type;
  std::string text;
};

inline const Refusal kNoRecordedRanges{typeid(std::invalid_argument),
                                       "MediaAsset from Sequence has no PhysicalTimebounds"};
inline const Refusal kNoOperatorProfile{typeid(std::invalid_argument),
                                        "MediaAsset from Sequence has no KytOperatorMetadata"};
inline const Refusal kAbsoluteIn{
    typeid(std::invalid_argument),
    "a sequence element contains absolute IN boundaries : not allowed in Timeline Engine"};
inline const Refusal kAbsoluteOut{
    typeid(std::invalid_argument),
    "a sequence element contains absolute OUT boundaries : not allowed in Timeline Engine"};
inline const Refusal kRateNotPositive{
    typeid(std::invalid_argument),
    "TimeBoundaryToFields: the rate needs a positive numerator and denominator"};
inline const Refusal kTrackAssetMissing{typeid(std::runtime_error),
                                        "MediaAsset for sequence track item not found"};
inline const Refusal kAuxAssetMissing{typeid(std::runtime_error),
                                      "MediaAsset for aux-track not found"};
inline const Refusal kNullPointer{typeid(std::runtime_error), "null pointer"};
inline const Refusal kDuplicateItem{
    typeid(std::runtime_error),
    "Kov::DataModel::MediaAssets::SortedVector::Insert: item already present in the collection"};
inline const Refusal kExpiredTrack{
    typeid(std::runtime_error),
    "Kov::DataModel::MediaAssets::CompareEqualWeakPointer: weak pointer object is expired"};
inline const Refusal kUmIdTooLong{typeid(std::invalid_argument),
                                  "UmId: the text has more than 11 characters"};
inline const Refusal kGuidTextInvalid{typeid(std::invalid_argument),
                                      "Guid: an id text has at most 11 characters and no NUL"};

// A transition longer before its cut than the previous item ("video" or
// "audio"); it names the element that carries the transition.
inline Refusal PreviousItemTooShort(const char* side, int playlistNumber, int itemNumber) {
  return {typeid(std::logic_error), "The playlist PL" + std::to_string(playlistNumber) +
                                        " cannot be edited - contains track item (" +
                                        std::to_string(itemNumber) + ") with a shorter " + side +
                                        " duration than their transition duration."};
}

// A transition longer after its cut than the item that carries it.
inline Refusal CurrentItemTooShort(const char* side, int playlistNumber) {
  return {typeid(std::logic_error),
          "The playlist PL" + std::to_string(playlistNumber) +
              " cannot be edited - it contains track items with a shorter " + side +
              " duration than their transition duration."};
}

template <typename Action>
void ExpectRefused(Action&& action, const Refusal& refusal) {
  try {
    std::forward<Action>(action)();
    ADD_FAILURE() << "expected " << refusal.type.name() << ": " << refusal.text;
  } catch (const std::exception& error) {
    EXPECT_EQ(refusal.type, typeid(error)) << "thrown: " << typeid(error).name();
    EXPECT_EQ(refusal.text, error.what());
  }
}

}  // namespace testing_support
