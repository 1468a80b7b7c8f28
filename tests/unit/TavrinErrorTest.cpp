#include <tavrin/tavrin.hpp>

#include <gtest/gtest.h>

#include <cstring>

namespace tavrin {
namespace {

TEST(ErrorType, RawValuesOutsideZeroToFourGiveNoKind) {
  for (long long raw : {-1LL, 5LL, 1000LL, -9223372036854775807LL}) {
    EXPECT_FALSE(errorTypeFromRawValue(raw).has_value()) << raw;
  }
  for (int raw = 0; raw <= 4; ++raw) {
    const auto type = errorTypeFromRawValue(raw);
    ASSERT_TRUE(type.has_value());
    EXPECT_EQ(rawValue(*type), raw);
  }
  EXPECT_EQ(errorTypeFromRawValue(3), ErrorType::serverRejected);
}

TEST(TavrinError, WhatNamesTheKindAndNotTheMessage) {
  const TavrinError error(ErrorType::accessDenied, "secret detail");
  EXPECT_STREQ(error.what(), "TavrinError.accessDenied");
  EXPECT_EQ(error.getErrorMessage(), "secret detail");
  const TavrinError bare(ErrorType::connectionFailed, std::nullopt);
  EXPECT_FALSE(bare.getErrorMessage().has_value());
  EXPECT_STREQ(errorTypeName(bare.getErrorType()), "connectionFailed");
}

TEST(Version, SymbolsHoldTheExactBytes) {
  const char* expected = "@(#)PROGRAM:tavrinsdk  PROJECT:tavrinsdk-1\n";
  EXPECT_EQ(std::strlen(reinterpret_cast<const char*>(tavrinsdkVersionString)),
            std::strlen(expected));
  EXPECT_STREQ(reinterpret_cast<const char*>(tavrinsdkVersionString), expected);
  EXPECT_EQ(tavrinsdkVersionNumber, 1.0);
}

}  // namespace
}  // namespace tavrin
