#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using testdata::Bytes;
using namespace std::string_view_literals;

struct Vector {
  const char* bytes;
  const char* text;
};

class Base64Vector : public ::testing::TestWithParam<Vector> {};

TEST_P(Base64Vector, EncodesAndDecodes) {
  const Bytes bytes = testdata::bytesOf(GetParam().bytes);
  EXPECT_EQ(base64Encode(bytes), GetParam().text);
  EXPECT_EQ(base64Decode(GetParam().text), bytes);
}

INSTANTIATE_TEST_SUITE_P(Rfc4648, Base64Vector,
                         ::testing::Values(Vector{"", ""}, Vector{"f", "Zg=="},
                                           Vector{"fo", "Zm8="}, Vector{"foo", "Zm9v"},
                                           Vector{"foob", "Zm9vYg=="}, Vector{"fooba", "Zm9vYmE="},
                                           Vector{"foobar", "Zm9vYmFy"},
                                           Vector{"\xFB\xFF\xBF", "+/+/"}));

TEST(Base64, EveryLengthRoundTrips) {
  for (std::size_t length = 0; length < 200; ++length) {
    const Bytes bytes = testdata::randomBytes(length, static_cast<std::uint32_t>(length));
    const std::string text = base64Encode(bytes);
    EXPECT_EQ(text.size(), (length + 2) / 3 * 4);
    EXPECT_EQ(base64Decode(text), bytes) << length;
  }
}

class Base64Invalid : public ::testing::TestWithParam<std::string_view> {};

TEST_P(Base64Invalid, IsAbsent) { EXPECT_FALSE(base64Decode(GetParam()).has_value()); }

INSTANTIATE_TEST_SUITE_P(
    Base64, Base64Invalid,
    ::testing::Values("Z"sv, "Zg"sv, "Zg="sv, "Zm9"sv, "Zm9vY"sv,
                      // Padding only at the end, at most two, never in place of data.
                      "Zg==Zg=="sv, "Zg=A"sv, "Z==="sv, "===="sv, "Z=g="sv,
                      // Bits the padding leaves over must be zero.
                      "Zh=="sv, "Zm9="sv,
                      // Only the standard alphabet: no URL-safe letters, whitespace or NUL.
                      "Zm9-"sv, "Zm9_"sv, "Zm9v\n"sv, " Zm9v"sv, "Zm9vYm Fy"sv, "Zm\0v"sv,
                      "Zm9\xC3"sv, "Zm9vYmFy\r\n"sv, "Zm9vY*Fy"sv));

}  // namespace
}  // namespace tavrin
