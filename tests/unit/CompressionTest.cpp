#include "../support/CodecTestData.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>

#include <tuple>

namespace tavrin {
namespace {

using testdata::Bytes;

const char* nameOf(CompressionAlgorithm algorithm) {
  switch (algorithm) {
    case CompressionAlgorithm::zlib: return "zlib";
    case CompressionAlgorithm::lzfse: return "lzfse";
    case CompressionAlgorithm::lzma: return "lzma";
    case CompressionAlgorithm::lz4: return "lz4";
  }
  return "unknown";
}

constexpr CompressionAlgorithm available[] = {
    CompressionAlgorithm::zlib, CompressionAlgorithm::lzma, CompressionAlgorithm::lz4};

// Sizes around the driver's buffer bounds (64 and 65536 bytes) and the lz4
// block size, each as incompressible and as compressible input.
struct Input {
  std::size_t size;
  bool random;
};

class RoundTrip : public ::testing::TestWithParam<std::tuple<CompressionAlgorithm, Input>> {};

TEST_P(RoundTrip, DecompressGivesBackTheInput) {
  const auto [algorithm, shape] = GetParam();
  const Bytes input =
      shape.random ? testdata::randomBytes(shape.size) : testdata::jsonLikeBytes(shape.size);
  const auto compressed = compress(input, algorithm);
  ASSERT_TRUE(compressed.has_value());
  const auto restored = decompress(*compressed, algorithm);
  ASSERT_TRUE(restored.has_value());
  EXPECT_EQ(*restored, input);
  if (!shape.random && shape.size >= 4096) {
    EXPECT_LT(compressed->size(), input.size() / 2);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Codec, RoundTrip,
    ::testing::Combine(::testing::ValuesIn(available),
                       ::testing::Values(Input{0, true}, Input{1, true}, Input{63, true},
                                         Input{64, false}, Input{65, true}, Input{65535, true},
                                         Input{65536, false}, Input{65537, true},
                                         Input{300000, false}, Input{200000, true})),
    [](const auto& test) {
      const Input shape = std::get<1>(test.param);
      return std::string(nameOf(std::get<0>(test.param))) + "_" + std::to_string(shape.size) +
             (shape.random ? "_random" : "_text");
    });

class EveryAlgorithm : public ::testing::TestWithParam<CompressionAlgorithm> {};

TEST_P(EveryAlgorithm, EveryStrictPrefixOfAStreamIsAbsent) {
  const auto compressed = compress(testdata::jsonLikeBytes(3000), GetParam());
  ASSERT_TRUE(compressed.has_value());
  for (std::size_t length = 0; length < compressed->size(); ++length) {
    const Bytes prefix(compressed->begin(), compressed->begin() + static_cast<long>(length));
    EXPECT_FALSE(decompress(prefix, GetParam()).has_value()) << "length " << length;
  }
}

TEST_P(EveryAlgorithm, BytesAfterTheEndOfTheStreamAreNotRead) {
  const Bytes input = testdata::jsonLikeBytes(500);
  auto compressed = compress(input, GetParam());
  ASSERT_TRUE(compressed.has_value());
  compressed->insert(compressed->end(), {0xDE, 0xAD, 0xBE, 0xEF});
  EXPECT_EQ(decompress(*compressed, GetParam()), input);
}

INSTANTIATE_TEST_SUITE_P(Codec, EveryAlgorithm, ::testing::ValuesIn(available),
                         [](const auto& test) { return nameOf(test.param); });

TEST(Compression, DecodingNothingIsAbsentForEveryAlgorithm) {
  for (const auto algorithm : {CompressionAlgorithm::zlib, CompressionAlgorithm::lzfse,
                               CompressionAlgorithm::lzma, CompressionAlgorithm::lz4}) {
    EXPECT_FALSE(decompress(Bytes{}, algorithm).has_value()) << nameOf(algorithm);
  }
  EXPECT_FALSE(inflate(Bytes{}).has_value());
}

TEST(Compression, LzfseIsAbsentBothWays) {
  const Bytes input = testdata::bytesOf("some bytes");
  EXPECT_FALSE(compress(input, CompressionAlgorithm::lzfse).has_value());
  EXPECT_FALSE(decompress(input, CompressionAlgorithm::lzfse).has_value());
}

TEST(Compression, ZlibIsRawDeflateWithoutHeaderOrTrailer) {
  // The empty input gives the single empty final block with fixed codes.
  EXPECT_EQ(compress(Bytes{}, CompressionAlgorithm::zlib), (Bytes{0x03, 0x00}));
  EXPECT_EQ(inflate(Bytes{0x03, 0x00}), Bytes{});
  // A stored block written by hand: BFINAL, type 0, LEN 3, NLEN, "abc".
  const Bytes stored = {0x01, 0x03, 0x00, 0xFC, 0xFF, 'a', 'b', 'c'};
  EXPECT_EQ(inflate(stored), testdata::bytesOf("abc"));
  const Bytes input = testdata::jsonLikeBytes(1000);
  EXPECT_EQ(deflate(input), compress(input, CompressionAlgorithm::zlib));
}

TEST(Compression, CorruptXzStreamsAreRejected) {
  // The xz container checks every part of itself, so no altered byte may pass.
  const auto compressed = compress(testdata::jsonLikeBytes(2000), CompressionAlgorithm::lzma);
  ASSERT_TRUE(compressed.has_value());
  for (std::size_t index = 0; index < compressed->size(); ++index) {
    Bytes altered = *compressed;
    altered[index] ^= 0x01;
    EXPECT_FALSE(decompress(altered, CompressionAlgorithm::lzma).has_value()) << index;
  }
}

TEST(Compression, InvalidDeflateIsAbsent) {
  // Block type 3 is reserved; a stored block's NLEN must complement LEN.
  EXPECT_FALSE(inflate(Bytes{0x07, 0x00}).has_value());
  EXPECT_FALSE(inflate(Bytes{0x01, 0x03, 0x00, 0xFC, 0xFE, 'a', 'b', 'c'}).has_value());
}

}  // namespace
}  // namespace tavrin
