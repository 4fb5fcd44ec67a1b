// The one check of a refusal in the tests: the exception's type (not a
// subclass) and its text together, against an entry of RefusalTexts.h.
#pragma once

#include <gtest/gtest.h>

#include <utility>

#include "RefusalTexts.h"

namespace testing_support {

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
