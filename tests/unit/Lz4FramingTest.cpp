#include "../support/CodecTestData.hpp"

#include "codec/ByteOrder.hpp"
#include "codec/Lz4Framing.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>
#include <lz4.h>

#include <memory>

namespace tavrin {
namespace {

using namespace testdata;

constexpr auto lz4 = CompressionAlgorithm::lz4;

Bytes rawBlock(const Bytes& bytes) {
  Bytes out = bytesOf("bv4-");
  appendLittleEndian32(out, static_cast<std::uint32_t>(bytes.size()));
  return out + bytes;
}

Bytes compressedBlock(std::uint32_t decodedSize, const Bytes& encoded) {
  Bytes out = bytesOf("bv41");
  appendLittleEndian32(out, decodedSize);
  appendLittleEndian32(out, static_cast<std::uint32_t>(encoded.size()));
  return out + encoded;
}

Bytes closed(const Bytes& stream) { return stream + bytesOf("bv4$"); }

Bytes lz4Block(const Bytes& bytes) {
  Bytes encoded(static_cast<std::size_t>(LZ4_compressBound(static_cast<int>(bytes.size()))));
  encoded.resize(static_cast<std::size_t>(LZ4_compress_default(
      reinterpret_cast<const char*>(bytes.data()), reinterpret_cast<char*>(encoded.data()),
      static_cast<int>(bytes.size()), static_cast<int>(encoded.size()))));
  return encoded;
}

TEST(Lz4Framing, WritesCompressedBlocksOf64KiBOrRawOnesAndAnEndMarker) {
  const Bytes text = *compress(jsonLikeBytes(200000), lz4);
  EXPECT_EQ(Bytes(text.begin(), text.begin() + 4), bytesOf("bv41"));
  EXPECT_EQ(loadLittleEndian32(text.data() + 4), 65536u);
  EXPECT_EQ(Bytes(text.end() - 4, text.end()), bytesOf("bv4$"));

  const Bytes noise = randomBytes(70000);
  const Bytes raw = closed(rawBlock(Bytes(noise.begin(), noise.begin() + 65536)) +
                           rawBlock(Bytes(noise.begin() + 65536, noise.end())));
  EXPECT_EQ(compress(noise, lz4), raw);
  EXPECT_EQ(compress(Bytes{}, lz4), bytesOf("bv4$"));
}

TEST(Lz4Framing, ReadsBlocksThatReferToTheBlocksBeforeThem) {
  // A streaming LZ4 encoder's blocks refer back across block bounds.
  const Bytes input = jsonLikeBytes(150000);
  const std::unique_ptr<LZ4_stream_t, decltype(&LZ4_freeStream)> encoder(LZ4_createStream(),
                                                                         &LZ4_freeStream);
  Bytes stream = rawBlock({});
  std::vector<char> encoded(static_cast<std::size_t>(LZ4_compressBound(65536)));
  for (std::size_t at = 0; at < input.size(); at += 65536) {
    const int size = static_cast<int>(std::min<std::size_t>(65536, input.size() - at));
    const int written =
        LZ4_compress_fast_continue(encoder.get(), reinterpret_cast<const char*>(input.data() + at),
                                   encoded.data(), size, static_cast<int>(encoded.size()), 1);
    stream = stream + compressedBlock(static_cast<std::uint32_t>(size),
                                      Bytes(encoded.begin(), encoded.begin() + written));
  }
  EXPECT_EQ(decompress(closed(stream), lz4), input);
}

// A raw block whose size runs past the end of the input, though not past
// readable memory: the bytes that follow the input must not be taken.
TEST(Lz4Framing, RawBlockLongerThanTheInputIsAbsent) {
  const Bytes memory = closed(rawBlock(bytesOf("abcd")));
  EXPECT_FALSE(decompress(std::span(memory).first(10), lz4).has_value());
}

// Other streams cut short are left to the truncation cases of CompressionTest
// and to the lz4 fuzz target.
class Lz4Hostile : public ::testing::TestWithParam<NamedBytes> {};

TEST_P(Lz4Hostile, IsAbsent) { EXPECT_FALSE(decompress(GetParam().bytes, lz4).has_value()); }

const Bytes textBlock = lz4Block(jsonLikeBytes(1000));

INSTANTIATE_TEST_SUITE_P(
    Lz4Framing, Lz4Hostile,
    ::testing::Values(NamedBytes{"UnknownMagic", closed(bytesOf("bvx2"))},
                      NamedBytes{"DecodedSizeTooLarge", closed(compressedBlock(1001, textBlock))},
                      NamedBytes{"DecodedSizeTooSmall", closed(compressedBlock(999, textBlock))},
                      NamedBytes{"DecodedSizeHuge", closed(compressedBlock(0xFFFFFFFF, textBlock))},
                      // One literal, then a match 5 bytes back when 1 byte exists, then 5 literals.
                      NamedBytes{"MatchBeforeTheStart",
                                 closed(compressedBlock(10, {0x10, 'a', 0x05, 0x00, 0x50, 'b', 'c',
                                                             'd', 'e', 'f'}))},
                      NamedBytes{"RawBlockPastTheBlockLimit",
                                 closed(rawBlock(Bytes(lz4framing::decoderBlockLimit + 1, 7)))}),
    caseName);

}  // namespace
}  // namespace tavrin
