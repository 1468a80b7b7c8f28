#include "../support/CodecTestData.hpp"

#include "codec/ByteOrder.hpp"
#include "codec/Lz4Framing.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>
#include <lz4.h>

#include <string>

namespace tavrin {
namespace {

using testdata::Bytes;
using namespace std::string_view_literals;
namespace framing = lz4framing;

std::optional<Bytes> decodeLz4(const Bytes& stream) {
  return decompress(stream, CompressionAlgorithm::lz4);
}

void appendMagic(Bytes& out, const framing::Magic& magic) {
  out.insert(out.end(), magic.begin(), magic.end());
}

Bytes rawBlock(const Bytes& bytes) {
  Bytes out;
  appendMagic(out, framing::rawBlock);
  appendLittleEndian32(out, static_cast<std::uint32_t>(bytes.size()));
  out.insert(out.end(), bytes.begin(), bytes.end());
  return out;
}

Bytes compressedBlock(std::uint32_t decodedSize, const Bytes& encoded) {
  Bytes out;
  appendMagic(out, framing::compressedBlock);
  appendLittleEndian32(out, decodedSize);
  appendLittleEndian32(out, static_cast<std::uint32_t>(encoded.size()));
  out.insert(out.end(), encoded.begin(), encoded.end());
  return out;
}

Bytes lz4Block(const Bytes& bytes) {
  Bytes encoded(static_cast<std::size_t>(LZ4_compressBound(static_cast<int>(bytes.size()))));
  const int size = LZ4_compress_default(
      reinterpret_cast<const char*>(bytes.data()), reinterpret_cast<char*>(encoded.data()),
      static_cast<int>(bytes.size()), static_cast<int>(encoded.size()));
  encoded.resize(static_cast<std::size_t>(size));
  return encoded;
}

Bytes closed(Bytes stream) {
  appendMagic(stream, framing::endOfStream);
  return stream;
}

Bytes operator+(Bytes left, const Bytes& right) {
  left.insert(left.end(), right.begin(), right.end());
  return left;
}

// The blocks of a stream, as (magic, decoded size) pairs, checking the framing as it goes.
std::vector<std::pair<std::string, std::size_t>> blocksOf(const Bytes& stream) {
  std::vector<std::pair<std::string, std::size_t>> blocks;
  std::size_t at = 0;
  while (at + 4 <= stream.size()) {
    const std::string magic(stream.begin() + static_cast<std::ptrdiff_t>(at),
                            stream.begin() + static_cast<std::ptrdiff_t>(at + 4));
    if (magic == "bv4$") {
      blocks.emplace_back(magic, 0);
      at += 4;
      break;
    }
    const std::size_t size = loadLittleEndian32(stream.data() + at + 4);
    blocks.emplace_back(magic, size);
    at += magic == "bv41" ? 12 + loadLittleEndian32(stream.data() + at + 8) : 8 + size;
  }
  EXPECT_EQ(at, stream.size()) << "the end marker closes the stream";
  return blocks;
}

TEST(Lz4Framing, CompressibleInputBecomesCompressedBlocksOf64KiB) {
  const Bytes input = testdata::jsonLikeBytes(200000);
  const auto stream = compress(input, CompressionAlgorithm::lz4);
  ASSERT_TRUE(stream.has_value());
  const auto blocks = blocksOf(*stream);
  ASSERT_EQ(blocks.size(), 5u);
  for (std::size_t index = 0; index < 3; ++index) {
    EXPECT_EQ(blocks[index], std::make_pair(std::string("bv41"), std::size_t{65536}));
  }
  EXPECT_EQ(blocks[3], std::make_pair(std::string("bv41"), std::size_t{200000 - 3 * 65536}));
  EXPECT_EQ(blocks[4].first, "bv4$");
}

TEST(Lz4Framing, IncompressibleInputIsStoredRaw) {
  const auto stream = compress(testdata::randomBytes(70000), CompressionAlgorithm::lz4);
  ASSERT_TRUE(stream.has_value());
  const auto blocks = blocksOf(*stream);
  ASSERT_EQ(blocks.size(), 3u);
  EXPECT_EQ(blocks[0], std::make_pair(std::string("bv4-"), std::size_t{65536}));
  EXPECT_EQ(blocks[1], std::make_pair(std::string("bv4-"), std::size_t{70000 - 65536}));
  EXPECT_EQ(compress(Bytes{}, CompressionAlgorithm::lz4), testdata::bytesOf("bv4$"));
}

TEST(Lz4Framing, BlocksMayReferToTheBlocksBeforeThem) {
  // Blocks written by a streaming LZ4 encoder refer back across block bounds.
  const Bytes input = testdata::jsonLikeBytes(150000);
  LZ4_stream_t* lz4 = LZ4_createStream();
  Bytes stream;
  std::vector<char> encoded(static_cast<std::size_t>(LZ4_compressBound(65536)));
  for (std::size_t at = 0; at < input.size(); at += 65536) {
    const int size = static_cast<int>(std::min<std::size_t>(65536, input.size() - at));
    const int written =
        LZ4_compress_fast_continue(lz4, reinterpret_cast<const char*>(input.data() + at),
                                   encoded.data(), size, static_cast<int>(encoded.size()), 1);
    stream = stream + compressedBlock(static_cast<std::uint32_t>(size),
                                      Bytes(encoded.begin(), encoded.begin() + written));
  }
  LZ4_freeStream(lz4);
  EXPECT_EQ(decodeLz4(closed(stream)), input);
}

TEST(Lz4Framing, BlocksOfBothKindsMixInOneStream) {
  const Bytes first = testdata::randomBytes(100);
  const Bytes second = testdata::jsonLikeBytes(5000);
  EXPECT_EQ(
      decodeLz4(closed(rawBlock(first) + compressedBlock(5000, lz4Block(second)) + rawBlock({}))),
      first + second);
}

using Hostile = testdata::NamedBytes;

class Lz4Hostile : public ::testing::TestWithParam<Hostile> {};

TEST_P(Lz4Hostile, IsAbsent) { EXPECT_FALSE(decodeLz4(GetParam().bytes).has_value()); }

const Bytes text = testdata::jsonLikeBytes(1000);
const Bytes textBlock = lz4Block(text);

// One literal, then a match 5 bytes back when only 1 byte exists, then 5 literals.
const Bytes matchBeforeTheStart = {0x10, 'a', 0x05, 0x00, 0x50, 'b', 'c', 'd', 'e', 'f'};

Bytes withEncodedSize(Bytes block, std::uint32_t encodedSize) {
  storeLittleEndian32(block.data() + 8, encodedSize);
  return block;
}

INSTANTIATE_TEST_SUITE_P(
    Lz4Framing, Lz4Hostile,
    ::testing::Values(
        Hostile{"ShortMagic", testdata::bytesOf("bv4")},
        Hostile{"UnknownMagic", closed(testdata::bytesOf("bvx2"))},
        Hostile{"NoEndMarker", compressedBlock(1000, textBlock)},
        Hostile{"TruncatedEndMarker", compressedBlock(1000, textBlock) + testdata::bytesOf("bv4")},
        Hostile{"DecodedSizeTooLarge", closed(compressedBlock(1001, textBlock))},
        Hostile{"DecodedSizeTooSmall", closed(compressedBlock(999, textBlock))},
        Hostile{"DecodedSizeHuge", closed(compressedBlock(0xFFFFFFFF, textBlock))},
        Hostile{"EncodedSizePastTheInput",
                withEncodedSize(closed(compressedBlock(1000, textBlock)),
                                static_cast<std::uint32_t>(textBlock.size() + 5))},
        Hostile{"EncodedSizeShort",
                closed(withEncodedSize(compressedBlock(1000, textBlock),
                                       static_cast<std::uint32_t>(textBlock.size() - 1)))},
        Hostile{"TruncatedCompressedHeader", testdata::bytesOf("bv41\x10\x00\x00"sv)},
        Hostile{"TruncatedRawHeader", testdata::bytesOf("bv4-\x10\x00"sv)},
        Hostile{"RawSizePastTheInput",
                [] {
                  Bytes block = closed(rawBlock(Bytes(10, 1)));
                  storeLittleEndian32(block.data() + 4, 100);
                  return block;
                }()},
        Hostile{"MatchBeforeTheStart", closed(compressedBlock(10, matchBeforeTheStart))},
        Hostile{"RawBlockPastTheBlockLimit",
                closed(rawBlock(Bytes(framing::decoderBlockLimit + 1, 7)))}),
    testdata::caseName);

TEST(Lz4Framing, ARawBlockAtTheBlockLimitIsAccepted) {
  const Bytes bytes(framing::decoderBlockLimit, 7);
  EXPECT_EQ(decodeLz4(closed(rawBlock(bytes))), bytes);
}

}  // namespace
}  // namespace tavrin
