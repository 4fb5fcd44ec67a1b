// SPDX-License-Identifier: Apache-2.0
// Identifier and FullyQualifiedName: the text values that name entities (assets,
// timelines, tracks, items) and metadata profile classes.
#pragma once

#include <functional>
#include <string>
#include <utility>

#include "Export.h"

namespace Kov {
namespace BusinessEntityModel {
namespace BaseTypes {

/// One text; equal when the texts are equal. The key of the asset map and the
/// type of every identifier of the engine model.
class TIMELINE_ENGINE_CONVERSION_API Identifier {
 public:
  Identifier() = default;
  Identifier(std::string text) : text_(std::move(text)) {}
  /// A null pointer makes the empty identifier.
  Identifier(const char* text) : text_(text != nullptr ? text : "") {}

  const std::string& Text() const { return text_; }

  /// The one shared empty identifier.
  static const Identifier& Empty();

  friend bool operator==(const Identifier& a, const Identifier& b) { return a.text_ == b.text_; }
  friend bool operator!=(const Identifier& a, const Identifier& b) { return !(a == b); }

 private:
  std::string text_;
};

/// The name of a metadata profile class; ordered by string order.
class TIMELINE_ENGINE_CONVERSION_API FullyQualifiedName {
 public:
  FullyQualifiedName() = default;
  FullyQualifiedName(std::string text) : text_(std::move(text)) {}

  const std::string& Text() const { return text_; }

  friend bool operator<(const FullyQualifiedName& a, const FullyQualifiedName& b) {
    return a.text_ < b.text_;
  }
  friend bool operator==(const FullyQualifiedName& a, const FullyQualifiedName& b) {
    return a.text_ == b.text_;
  }

 private:
  std::string text_;
};

}  // namespace BaseTypes
}  // namespace BusinessEntityModel
}  // namespace Kov

namespace std {
/// The standard hash of the identifier's text.
template <>
struct hash<Kov::BusinessEntityModel::BaseTypes::Identifier> {
  size_t operator()(const Kov::BusinessEntityModel::BaseTypes::Identifier& id) const noexcept {
    return hash<string>()(id.Text());
  }
};
}  // namespace std
