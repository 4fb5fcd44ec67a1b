// SPDX-License-Identifier: Apache-2.0
// SharedReference: a shared entity together with the key that identifies it.
// The key can be read without touching the entity; reaching through a
// reference whose entity is missing throws instead of crashing.
#pragma once

#include <memory>
#include <stdexcept>
#include <utility>

#include "Identifier.h"

namespace Kov {
namespace BusinessEntityModel {
namespace BaseTypes {

template <typename T>
class SharedReference {
 public:
  SharedReference() = default;
  SharedReference(std::shared_ptr<T> pointer, Identifier key)
      : pointer_(std::move(pointer)), key_(std::move(key)) {}

  const Identifier& Key() const { return key_; }
  const std::shared_ptr<T>& Pointer() const { return pointer_; }

  /// Both throw std::runtime_error("null pointer") when there is no entity.
  T& operator*() const { return *Checked(); }
  T* operator->() const { return Checked(); }

 private:
  T* Checked() const {
    if (!pointer_) {
      throw std::runtime_error("null pointer");
    }
    return pointer_.get();
  }

  std::shared_ptr<T> pointer_;
  Identifier key_;
};

}  // namespace BaseTypes
}  // namespace BusinessEntityModel
}  // namespace Kov
