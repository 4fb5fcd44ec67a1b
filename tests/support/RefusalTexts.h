// Every refusal of the library, exception type and exact text, in one table
// shared by the tests and the fuzzer: the fixed ones, the four transition
// refusals made with their numbers, and whether an exception is one that a
// conversion may throw. Free of the test framework.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <typeinfo>

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
inline Refusal PreviousItemTooShort(const char* side, std::int32_t playlistNumber,
                                    std::int32_t itemNumber) {
  return {typeid(std::logic_error), "The playlist PL" + std::to_string(playlistNumber) +
                                        " cannot be edited - contains track item (" +
                                        std::to_string(itemNumber) + ") with a shorter " + side +
                                        " duration than their transition duration."};
}

// A transition longer after its cut than the item that carries it.
inline Refusal CurrentItemTooShort(const char* side, std::int32_t playlistNumber) {
  return {typeid(std::logic_error),
          "The playlist PL" + std::to_string(playlistNumber) +
              " cannot be edited - it contains track items with a shorter " + side +
              " duration than their transition duration."};
}

// The fixed refusals that a conversion can meet (the model's own refusals of
// bad clip ids, duplicates and expired tracks are not among them).
inline const Refusal* const kConversionRefusals[] = {
    &kNoRecordedRanges, &kNoOperatorProfile, &kAbsoluteIn,      &kAbsoluteOut,
    &kRateNotPositive,  &kTrackAssetMissing, &kAuxAssetMissing, &kNullPointer};

// One of the four transition refusals of the playlist with this number, for
// any item number.
inline bool IsTransitionRefusal(const std::string& text, std::int32_t playlistNumber) {
  for (const char* side : {"video", "audio"}) {
    if (text == CurrentItemTooShort(side, playlistNumber).text) {
      return true;
    }
  }
  const std::string::size_type open = text.find('(');
  if (open == std::string::npos) {
    return false;
  }
  char* end = nullptr;
  const long long item = std::strtoll(text.c_str() + open + 1, &end, 10);
  if (item < std::numeric_limits<std::int32_t>::min() ||
      item > std::numeric_limits<std::int32_t>::max()) {
    return false;
  }
  for (const char* side : {"video", "audio"}) {
    if (text == PreviousItemTooShort(side, playlistNumber, static_cast<std::int32_t>(item)).text) {
      return true;
    }
  }
  return false;
}

// An exception that a conversion may throw: a fixed refusal, running out of
// memory, or (from a track conversion, which passes the playlist number of
// the track's first element) a transition refusal.
inline bool IsConversionRefusal(const std::exception& error,
                                std::optional<std::int32_t> playlistNumber) {
  if (typeid(error) == typeid(std::bad_alloc)) {
    return true;
  }
  for (const Refusal* refusal : kConversionRefusals) {
    if (typeid(error) == refusal->type && refusal->text == error.what()) {
      return true;
    }
  }
  return typeid(error) == typeid(std::logic_error) && playlistNumber &&
         IsTransitionRefusal(error.what(), *playlistNumber);
}

}  // namespace testing_support
