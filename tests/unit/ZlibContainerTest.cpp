#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>
#include <zlib.h>

namespace tavrin {
namespace {

using testdata::Bytes;

TEST(Zip, WrapsRawDeflateInTheFixedHeaderAndABigEndianAdler32) {
  const auto zipped = zip(testdata::bytesOf("abc"));
  ASSERT_TRUE(zipped.has_value());
  ASSERT_GE(zipped->size(), 6u);
  EXPECT_EQ((Bytes{(*zipped)[0], (*zipped)[1]}), (Bytes{0x78, 0x5E}));
  EXPECT_EQ(Bytes(zipped->end() - 4, zipped->end()), (Bytes{0x02, 0x4D, 0x01, 0x27}));
  EXPECT_EQ(Bytes(zipped->begin() + 2, zipped->end() - 4), deflate(testdata::bytesOf("abc")));
  EXPECT_EQ(unzip(*zipped, false), testdata::bytesOf("abc"));
  EXPECT_EQ(unzip(*zip(Bytes{}), false), Bytes{});
}

TEST(Unzip, ReadsWhatZlibsOwnCompress2WritesAtEveryLevel) {
  const Bytes input = testdata::jsonLikeBytes(100000);
  for (int level = 0; level <= 9; ++level) {
    uLongf size = compressBound(static_cast<uLong>(input.size()));
    Bytes compressed(size);
    ASSERT_EQ(
        compress2(compressed.data(), &size, input.data(), static_cast<uLong>(input.size()), level),
        Z_OK);
    compressed.resize(size);
    EXPECT_EQ(unzip(compressed, false), input) << "level " << level;
  }
}

TEST(Unzip, ChecksTheTrailerOnlyWhenAsked) {
  const Bytes input = testdata::jsonLikeBytes(5000);
  Bytes zipped = *zip(input);
  zipped.back() ^= 0x40;
  EXPECT_FALSE(unzip(zipped, false).has_value());
  EXPECT_EQ(unzip(zipped, true), input);
}

TEST(Unzip, SixBytesOrFewerAreAbsent) {
  // Two header bytes, the empty stored block's first byte, three trailer bytes.
  const Bytes zipped = *zip(Bytes{});
  for (std::size_t size = 0; size <= 6; ++size) {
    const Bytes prefix(zipped.begin(), zipped.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(unzip(prefix, true).has_value()) << size;
  }
}

struct HeaderCase {
  std::uint8_t cmf;
  std::uint8_t flg;
  bool accepted;
};

class UnzipHeader : public ::testing::TestWithParam<HeaderCase> {};

TEST_P(UnzipHeader, NeedsMethod8AndAMultipleOf31) {
  Bytes zipped = *zip(testdata::bytesOf("abc"));
  zipped[0] = GetParam().cmf;
  zipped[1] = GetParam().flg;
  const auto result = unzip(zipped, false);
  EXPECT_EQ(result.has_value(), GetParam().accepted);
  if (result) {
    EXPECT_EQ(*result, testdata::bytesOf("abc"));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Unzip, UnzipHeader,
    ::testing::Values(HeaderCase{0x78, 0x01, true}, HeaderCase{0x78, 0x9C, true},
                      HeaderCase{0x78, 0xDA, true},
                      // Neither the window size nor the preset-dictionary flag is examined.
                      HeaderCase{0x08, 0x1D, true}, HeaderCase{0x78, 0xBB, true},
                      // Not a multiple of 31, or not method 8.
                      HeaderCase{0x78, 0x5F, false}, HeaderCase{0x78, 0x00, false},
                      HeaderCase{0x79, 0x18, false}, HeaderCase{0x7F, 0x07, false},
                      HeaderCase{0x1F, 0x8B, false}));

TEST(Unzip, CorruptDeflateDataIsAbsentEvenWithoutTheCheck) {
  Bytes zipped = *zip(testdata::jsonLikeBytes(5000));
  zipped[2] |= 0x06;  // the first block becomes the reserved type 3
  EXPECT_FALSE(unzip(zipped, true).has_value());
}

}  // namespace
}  // namespace tavrin
