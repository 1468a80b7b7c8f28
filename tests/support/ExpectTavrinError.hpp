#pragma once

#include <tavrin/error.hpp>

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace tavrin::testing_support {

// Runs `action` and checks that it throws a TavrinError of that kind and
// message; gives the error, so that a test can look further.
template <typename Action>
std::optional<TavrinError> expectTavrinError(Action&& action, ErrorType type,
                                             const std::optional<std::string>& message) {
  try {
    action();
  } catch (const TavrinError& error) {
    EXPECT_STREQ(errorTypeName(error.getErrorType()), errorTypeName(type));
    EXPECT_EQ(error.getErrorMessage(), message);
    return error;
  }
  ADD_FAILURE() << "expected TavrinError " << errorTypeName(type) << ", none was thrown";
  return std::nullopt;
}

}  // namespace tavrin::testing_support
