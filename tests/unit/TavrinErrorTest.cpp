#include <tavrin/tavrin.hpp>

#include <gtest/gtest.h>

#include <cstring>

namespace tavrin {
namespace {

TEST(ErrorType, RawValuesOutsideZeroToFiveGiveNoKind) {
  for (long long raw : {-1LL, 6LL, 1000LL, -9223372036854775807LL}) {
    EXPECT_FALSE(errorTypeFromRawValue(raw).has_value()) << raw;
  }
  for (int raw = 0; raw <= 5; ++raw) {
    const auto type = errorTypeFromRawValue(raw);
    ASSERT_TRUE(type.has_value());
    EXPECT_EQ(rawValue(*type), raw);
  }
  EXPECT_EQ(errorTypeFromRawValue(3), ErrorType::serverRejected);
}

TEST(TavrinError, WhatNamesTheKindAndTheMessageAndCopiesKeepTheExchange) {
  const TavrinError error(ErrorType::accessDenied, "403", 403, "id-1", "");
  const TavrinError copy = error;
  EXPECT_STREQ(copy.what(), "TavrinError.accessDenied: 403");
  EXPECT_EQ(copy.getErrorMessage(), "403");
  EXPECT_EQ(copy.httpStatus(), 403);
  EXPECT_EQ(copy.requestId(), "id-1");
  const TavrinError bare(ErrorType::cancelled, std::nullopt);
  EXPECT_STREQ(bare.what(), "TavrinError.cancelled");
  EXPECT_FALSE(bare.getErrorMessage().has_value());
  EXPECT_EQ(bare.httpStatus(), 0);
  EXPECT_EQ(bare.requestId() + bare.transportReason(), "");
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
