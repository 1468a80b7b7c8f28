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

TEST(Compression, NothingDecodesAndLzfseIsAbsentBothWays) {
  for (const auto algorithm :
       {Algorithm::zlib, Algorithm::lzfse, Algorithm::lzma, Algorithm::lz4}) {
    EXPECT_FALSE(decompress(Bytes{}, algorithm).has_value());
  }
  EXPECT_FALSE(compress(bytesOf("text"), Algorithm::lzfse).has_value());
  EXPECT_FALSE(decompress(bytesOf("text"), Algorithm::lzfse).has_value());
}

TEST(Compression, ZlibIsRawDeflateWithoutHeaderOrTrailer) {
  // The empty input gives the single empty final block with fixed codes.
  EXPECT_EQ(deflate(Bytes{}), (Bytes{0x03, 0x00}));
  // A stored block written by hand: BFINAL, type 0, LEN 3, NLEN, "abc".
  EXPECT_EQ(inflate(Bytes{0x01, 0x03, 0x00, 0xFC, 0xFF, 'a', 'b', 'c'}), bytesOf("abc"));
  EXPECT_FALSE(inflate(Bytes{0x01, 0x03, 0x00, 0xFC, 0xFE, 'a', 'b', 'c'}).has_value());
}

}  // namespace
}  // namespace tavrin
