#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

#include <tuple>

namespace tavrin {
namespace {

using namespace testdata;
using Algorithm = CompressionAlgorithm;

constexpr Algorithm available[] = {Algorithm::zlib, Algorithm::lzma, Algorithm::lz4};

// Sizes around the driver's buffer bounds (64 and 65536 bytes), which are
// also the lz4 block size; odd sizes random, even ones compressible text.
class RoundTrip : public ::testing::TestWithParam<std::tuple<Algorithm, std::size_t>> {};

TEST_P(RoundTrip, DecompressGivesBackTheInput) {
  const auto [algorithm, size] = GetParam();
  const Bytes input = size % 2 ? randomBytes(size) : jsonLikeBytes(size);
  const auto compressed = compress(input, algorithm);
  ASSERT_TRUE(compressed.has_value());
  EXPECT_EQ(decompress(*compressed, algorithm), input);
  if (size % 2 == 0 && size >= 4096) {
    EXPECT_LT(compressed->size(), size / 2);
  }
}

INSTANTIATE_TEST_SUITE_P(Codec, RoundTrip,
                         ::testing::Combine(::testing::ValuesIn(available),
                                            ::testing::Values(0, 1, 63, 64, 65535, 65536, 65537,
                                                              300000, 200001)));

class EveryAlgorithm : public ::testing::TestWithParam<Algorithm> {};

TEST_P(EveryAlgorithm, TruncatedStreamsAreAbsentAndTrailingBytesUnread) {
  const Bytes input = jsonLikeBytes(3000);
  const Bytes compressed = *compress(input, GetParam());
  for (std::size_t length = 0; length < compressed.size(); ++length) {
    const Bytes prefix(compressed.begin(),
                       compressed.begin() + static_cast<std::ptrdiff_t>(length));
    EXPECT_FALSE(decompress(prefix, GetParam()).has_value()) << "length " << length;
  }
  EXPECT_EQ(decompress(compressed + Bytes{0xDE, 0xAD}, GetParam()), input);
}

INSTANTIATE_TEST_SUITE_P(Codec, EveryAlgorithm, ::testing::ValuesIn(available));

// The empty input of the other algorithms is the first of the truncations above.
TEST(Compression, LzfseIsAbsentBothWays) {
  EXPECT_FALSE(compress(bytesOf("text"), Algorithm::lzfse).has_value());
  EXPECT_FALSE(decompress(bytesOf("text"), Algorithm::lzfse).has_value());
}

TEST(Compression, ZlibIsRawDeflateWithoutHeaderOrTrailer) {
  // The empty input gives a lone empty final block: BFINAL set in the first
  // byte, no room for a zlib header (0x78 ...) or an Adler-32 trailer.
  const Bytes empty = *deflate(Bytes{});
  ASSERT_TRUE(!empty.empty() && empty.size() <= 5) << empty.size();
  EXPECT_EQ(empty[0] & 0x01, 1);
  EXPECT_EQ(inflate(empty), Bytes{});
  // A stored block written by hand: BFINAL, type 0, LEN 3, NLEN, "abc".
  EXPECT_EQ(inflate(Bytes{0x01, 0x03, 0x00, 0xFC, 0xFF, 'a', 'b', 'c'}), bytesOf("abc"));
  EXPECT_FALSE(inflate(Bytes{0x01, 0x03, 0x00, 0xFC, 0xFE, 'a', 'b', 'c'}).has_value());
}

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

TEST(Unzip, NeedsMethod8AndAMultipleOf31) {
  for (const auto& [cmf, flg, accepted] :
       {std::tuple(0x78, 0x01, true), std::tuple(0x78, 0x9C, true), std::tuple(0x78, 0xDA, true),
        // Neither the window size nor the preset-dictionary flag is examined.
        std::tuple(0x08, 0x1D, true), std::tuple(0x78, 0xBB, true),
        // Not a multiple of 31; then multiples of 31 with methods 9 and 15.
        std::tuple(0x78, 0x5F, false), std::tuple(0x79, 0x18, false),
        std::tuple(0x7F, 0x07, false)}) {
    Bytes zipped = *zip(bytesOf("abc"));
    zipped[0] = static_cast<std::uint8_t>(cmf);
    zipped[1] = static_cast<std::uint8_t>(flg);
    EXPECT_EQ(unzip(zipped, false), accepted ? std::optional(bytesOf("abc")) : std::nullopt)
        << cmf << ", " << flg;
  }
}

}  // namespace
}  // namespace tavrin
