// SPDX-License-Identifier: Apache-2.0
// Sorted containers of the asset model. Each keeps its items in a vector in the
// order of its Less comparator and refuses an item that is Equal to the one at
// its insertion point. Only the element at the lower bound is tested for
// equality, so an item that ties under Less with held items but is not Equal to
// the first of them is inserted before all of them:
//
//   held:   [a1 a2 b]      a1, a2 tie with x under Less; x != a1
//   insert x:  lower bound = 0  ->  [x a1 a2 b]
#pragma once

#include <cstddef>
#include <memory>
#include <stdexcept>
#include <vector>

#include "SharedReference.h"

namespace Kov {
namespace BusinessEntityModel {
namespace BaseTypes {

/// SortedVectorBase is only a base: its destructor is protected and not virtual,
/// so a container is never destroyed through a pointer to the base, and the
/// containers below are final. Neither changes the object layout or the virtual
/// table, which the library shares with its callers.
template <typename T, typename Less, typename Equal, typename Allocator = std::allocator<T>>
class SortedVectorBase {
 public:
  using value_type = T;
  using const_iterator = typename std::vector<T, Allocator>::const_iterator;

  virtual void Insert(const T& item) {
    const std::size_t position = LowerBound(item);
    if (position != items_.size() && Equal()(items_[position], item)) {
      throw std::runtime_error(
          "Kov::DataModel::MediaAssets::SortedVector::Insert: item already present in the "
          "collection");
    }
    if (position == items_.size() && items_.size() < items_.capacity()) {
      items_.emplace_back(item);
    } else {
      items_.insert(items_.begin() + static_cast<std::ptrdiff_t>(position), item);
    }
  }

  const_iterator begin() const { return items_.begin(); }
  const_iterator end() const { return items_.end(); }
  std::size_t size() const { return items_.size(); }
  bool empty() const { return items_.empty(); }
  const T& front() const { return items_.front(); }
  const T& back() const { return items_.back(); }
  const T& operator[](std::size_t index) const { return items_[index]; }

 protected:
  SortedVectorBase() = default;
  SortedVectorBase(const SortedVectorBase&) = default;
  SortedVectorBase(SortedVectorBase&&) = default;
  SortedVectorBase& operator=(const SortedVectorBase&) = default;
  SortedVectorBase& operator=(SortedVectorBase&&) = default;
  ~SortedVectorBase() = default;

 private:
  /// Binary search halving the remaining count, the middle taken at its integer half.
  std::size_t LowerBound(const T& item) const {
    std::size_t first = 0;
    std::size_t count = items_.size();
    while (count > 0) {
      const std::size_t half = count / 2;
      if (Less()(items_[first + half], item)) {
        first += half + 1;
        count -= half + 1;
      } else {
        count = half;
      }
    }
    return first;
  }

  std::vector<T, Allocator> items_;
};

/// Comparators by key; specialised for the item types that the containers hold.
template <typename T>
struct CompareLess;
template <typename T>
struct CompareEqual;
template <typename T>
struct CompareLessPointer;
template <typename T>
struct CompareEqualPointer;

template <typename T>
struct CompareLess<SharedReference<T>> {
  bool operator()(const SharedReference<T>& a, const SharedReference<T>& b) const {
    return a.Key().Text() < b.Key().Text();
  }
};

template <typename T>
struct CompareEqual<SharedReference<T>> {
  bool operator()(const SharedReference<T>& a, const SharedReference<T>& b) const {
    return a.Key().Text() == b.Key().Text();
  }
};

template <typename T, typename Allocator = std::allocator<T>>
class SortedVector final : public SortedVectorBase<T, CompareLess<T>, CompareEqual<T>, Allocator> {
};

template <typename T, typename Allocator = std::allocator<std::shared_ptr<T>>>
class SortedVectorSharedPointer final
    : public SortedVectorBase<std::shared_ptr<T>, CompareLessPointer<std::shared_ptr<T>>,
                              CompareEqualPointer<std::shared_ptr<T>>, Allocator> {};

/// The pointee of a shared pointer met by a comparator; a null one throws.
template <typename T>
const T& DereferenceChecked(const std::shared_ptr<T>& pointer) {
  if (!pointer) {
    throw std::runtime_error("null pointer");
  }
  return *pointer;
}

}  // namespace BaseTypes
}  // namespace BusinessEntityModel
}  // namespace Kov
