// JsonNode: a value of the document together with its JSON pointer, so that
// every reader of a field can say exactly where a fault is.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

#include <nlohmann/json.hpp>

#include "document/PlaylistDocument.h"

namespace TimelineConvert {

using Json = nlohmann::json;

// Appends one step of a JSON pointer: '~' and '/' in a key are written ~0 and ~1.
inline void AppendPointerStep(std::string& path, std::string_view key) {
  path += '/';
  for (const char c : key) {
    if (c == '~') {
      path += "~0";
    } else if (c == '/') {
      path += "~1";
    } else {
      path += c;
    }
  }
}

inline std::string PointerStep(const std::string& key) {
  std::string step;
  AppendPointerStep(step, key);
  return step;
}

template <typename T>
const char* RangeName() {
  if (std::is_same<T, std::int32_t>::value) return "a signed 32-bit number";
  if (std::is_same<T, std::uint32_t>::value) return "an unsigned 32-bit number";
  if (std::is_same<T, std::uint8_t>::value) return "an 8-bit number";
  return "a signed 64-bit number";
}

// A value of the document together with its JSON pointer.
class Node {
 public:
  Node(const Json& value, std::string path) : value_(value), path_(std::move(path)) {}

  [[noreturn]] void Fail(const std::string& problem) const {
    throw DocumentError(path_.empty() ? "/" : path_, problem);
  }

  // An object holding every required field, and no field beyond the two lists.
  void ExpectObject(std::initializer_list<const char*> required,
                    std::initializer_list<const char*> optional = {}) const {
    if (required.size() + optional.size() > kMostFieldNames) {
      throw std::logic_error("ExpectObject lists more names than it can hold");
    }
    std::string_view names[kMostFieldNames];
    std::size_t nameCount = 0;
    for (const auto* list : {&required, &optional}) {
      for (const char* name : *list) {
        names[nameCount++] = name;
      }
    }
    ExpectFields(names, nameCount, required.size());
  }

  // The same with the names in one list, the first `requiredCount` required;
  // each name a literal (NUL-terminated).
  void ExpectFields(const std::string_view* names, std::size_t count,
                    std::size_t requiredCount) const {
    if (!value_.is_object()) {
      Fail(std::string("expected an object, found ") + Describe());
    }
    for (std::size_t index = 0; index < requiredCount; ++index) {
      if (!value_.contains(names[index].data())) {
        Fail("missing field \"" + std::string(names[index]) + "\"");
      }
    }
    // Names compared by length first: most differ in it.
    for (const auto& field : value_.items()) {
      const std::string_view key = field.key();
      if (std::find(names, names + count, key) == names + count) {
        std::string expected;
        for (std::size_t index = 0; index < count; ++index) {
          expected += (expected.empty() ? "" : ", ") + std::string(names[index]);
        }
        Node(field.value(), Below(field.key()))
            .Fail("unknown field (expected one of: " + expected + ")");
      }
    }
  }

  bool Has(const char* name) const { return value_.contains(name); }
  Node operator[](const char* name) const { return Node(value_.at(name), Below(name)); }

  std::vector<Node> Elements() const {
    if (!value_.is_array()) {
      Fail(std::string("expected an array, found ") + Describe());
    }
    std::vector<Node> elements;
    for (std::size_t index = 0; index < value_.size(); ++index) {
      elements.emplace_back(value_[index], Below(std::to_string(index)));
    }
    return elements;
  }

  bool IsString() const { return value_.is_string(); }
  bool IsObject() const { return value_.is_object(); }

  std::string String() const {
    if (!value_.is_string()) {
      Fail(std::string("expected a string, found ") + Describe());
    }
    return value_.get<std::string>();
  }

  // A clip id as the 12-byte record holds it: at most 11 bytes, no NUL.
  std::string UmIdText() const {
    std::string text = String();
    if (text.size() > Kov::Replivo::Data::Clips::UmId::kMaxTextLength) {
      Fail("a clip id holds at most 11 characters, \"" + text + "\" has " +
           std::to_string(text.size()));
    }
    if (text.find('\0') != std::string::npos) {
      Fail("a clip id cannot hold a NUL character");
    }
    return text;
  }

  template <typename T>
  T Integer() const {
    if (FitsIn<T>()) {
      return value_.is_number_unsigned() ? static_cast<T>(value_.get<std::uint64_t>())
                                         : static_cast<T>(value_.get<std::int64_t>());
    }
    const bool wholeNumber = value_.is_number_integer() ||
                             (value_.is_number_float() && std::isfinite(value_.get<double>()) &&
                              std::trunc(value_.get<double>()) == value_.get<double>());
    if (!wholeNumber) {
      Fail(std::string("expected an integer, found ") + Describe());
    }
    // 3.0 or 1e3: a whole value, but written as a fraction, which the reader
    // does not round into an integer (large ones would not be exact).
    const double whole = value_.get<double>();
    if (whole >= static_cast<double>(std::numeric_limits<T>::min()) &&
        whole < static_cast<double>(std::numeric_limits<T>::max()) + 1.0) {
      Fail(value_.dump() + " is not an integer: write it without a fraction part or exponent");
    }
    Fail(value_.dump() + " is out of range for " + RangeName<T>() + " (" +
         std::to_string(std::numeric_limits<T>::min() + 0) + " to " +
         std::to_string(std::numeric_limits<T>::max() + 0) + ")");
  }

  template <typename T>
  void ReadOptional(const char* name, T& target) const {
    if (Has(name)) {
      target = (*this)[name].Integer<T>();
    }
  }

 private:
  // The most names one ExpectObject call lists.
  static constexpr std::size_t kMostFieldNames = 32;

  // The path of a member or array element of this value.
  std::string Below(std::string_view step) const {
    std::string path;
    path.reserve(path_.size() + step.size() + 1);
    path += path_;
    AppendPointerStep(path, step);
    return path;
  }

  template <typename T>
  bool FitsIn() const {
    const auto highest = static_cast<std::uint64_t>(std::numeric_limits<T>::max());
    if (value_.is_number_unsigned()) {
      return value_.get<std::uint64_t>() <= highest;
    }
    if (!value_.is_number_integer()) {
      return false;
    }
    const auto value = value_.get<std::int64_t>();
    return value < 0 ? value >= static_cast<std::int64_t>(std::numeric_limits<T>::min())
                     : static_cast<std::uint64_t>(value) <= highest;
  }

  std::string Describe() const {
    if (value_.is_number()) {
      return "the number " + value_.dump();
    }
    if (value_.is_null()) {
      return "null";
    }
    const std::string type = value_.type_name();  // string, boolean, object, array
    return (type[0] == 'a' || type[0] == 'o' ? "an " : "a ") + type;
  }

  const Json& value_;
  std::string path_;
};

}  // namespace TimelineConvert
