#pragma once

#include <tavrin/error.hpp>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tavrin::testing_support {

// Runs `action` and checks that it throws a TavrinError of that kind and message.
template <typename Action>
void expectTavrinError(Action&& action, ErrorType type, const std::optional<std::string>& message) {
  try {
    action();
  } catch (const TavrinError& error) {
    EXPECT_STREQ(errorTypeName(error.getErrorType()), errorTypeName(type));
    EXPECT_EQ(error.getErrorMessage(), message);
    return;
  }
  ADD_FAILURE() << "expected TavrinError " << errorTypeName(type) << ", none was thrown";
}

}  // namespace tavrin::testing_support
