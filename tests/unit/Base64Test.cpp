#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using namespace std::string_view_literals;

TEST(Base64, EncodesAndDecodesTheRfc4648Vectors) {
  for (const auto& [bytes, text] :
       {std::pair{"", ""}, std::pair{"f", "Zg=="}, std::pair{"fo", "Zm8="},
        std::pair{"foo", "Zm9v"}, std::pair{"foobar", "Zm9vYmFy"},
        std::pair{"\xFB\xFF\xBF", "+/+/"}}) {
    EXPECT_EQ(base64Encode(testdata::bytesOf(bytes)), text);
    EXPECT_EQ(base64Decode(text), testdata::bytesOf(bytes));
  }
}

TEST(Base64, EveryLengthRoundTrips) {
  for (std::size_t length = 0; length < 100; ++length) {
    const auto bytes = testdata::randomBytes(length, static_cast<std::uint32_t>(length));
    EXPECT_EQ(base64Decode(base64Encode(bytes)), bytes) << length;
  }
}

TEST(Base64, InvalidTextIsAbsent) {
  for (const auto text : {"Zg"sv, "Zg="sv, "Zm9vY"sv,
                          // Padding only at the end, at most two, never in place of data.
                          "Zg==Zg=="sv, "Zg=A"sv, "Z==="sv, "===="sv,
                          // Bits the padding leaves over must be zero.
                          "Zh=="sv, "Zm9="sv,
                          // The standard alphabet only: no URL-safe letters, whitespace or NUL.
                          "Zm9-"sv, "Zm9_"sv, "Zm9v\n"sv, "Zm9vYm Fy"sv, "Zm\0v"sv, "Zm9\xC3"sv}) {
    EXPECT_FALSE(base64Decode(text).has_value()) << testing::PrintToString(text);
  }
}

}  // namespace
}  // namespace tavrin
