#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using namespace testdata;

TEST(Zip, WrapsRawDeflateInTheFixedHeaderAndABigEndianAdler32) {
  const Bytes zipped = *zip(bytesOf("abc"));
  EXPECT_EQ(zipped, (Bytes{0x78, 0x5E} + *deflate(bytesOf("abc")) + Bytes{0x02, 0x4D, 0x01, 0x27}));
  EXPECT_EQ(unzip(zipped, false), bytesOf("abc"));
  Bytes altered = zipped;
  altered.back() ^= 0x40;
  EXPECT_FALSE(unzip(altered, false).has_value());
  EXPECT_EQ(unzip(altered, true), bytesOf("abc"));
}

TEST(Unzip, SixBytesOrFewerAreAbsent) {
  const Bytes zipped = *zip(Bytes{});  // 8 bytes
  EXPECT_EQ(unzip(zipped, false), Bytes{});
  for (std::size_t size = 0; size <= 6; ++size) {
    EXPECT_FALSE(unzip(std::span(zipped).first(size), true)) << size;
  }
}

class UnzipHeader : public ::testing::TestWithParam<std::tuple<int, int, bool>> {};

TEST_P(UnzipHeader, NeedsMethod8AndAMultipleOf31) {
  const auto [cmf, flg, accepted] = GetParam();
  Bytes zipped = *zip(bytesOf("abc"));
  zipped[0] = static_cast<std::uint8_t>(cmf);
  zipped[1] = static_cast<std::uint8_t>(flg);
  EXPECT_EQ(unzip(zipped, false), accepted ? std::optional(bytesOf("abc")) : std::nullopt);
}

INSTANTIATE_TEST_SUITE_P(
    Unzip, UnzipHeader,
    ::testing::Values(std::tuple(0x78, 0x01, true), std::tuple(0x78, 0x9C, true),
                      std::tuple(0x78, 0xDA, true),
                      // Neither the window size nor the preset-dictionary flag is examined.
                      std::tuple(0x08, 0x1D, true), std::tuple(0x78, 0xBB, true),
                      // Not a multiple of 31; then multiples of 31 with methods 9 and 15.
                      std::tuple(0x78, 0x5F, false), std::tuple(0x79, 0x18, false),
                      std::tuple(0x7F, 0x07, false)));

}  // namespace
}  // namespace tavrin
