#include "../support/CodecTestData.hpp"

#include "codec/Checksum.hpp"

#include <tavrin/codec.hpp>
#include <tavrin/digest.hpp>

#include <gtest/gtest.h>
#include <zlib.h>

#include <tuple>

namespace tavrin {
namespace {

using namespace testdata;

TEST(Checksum, KnownValues) {
  for (const auto& [text, adler, crc] :
       {std::tuple{"", "00000001", "00000000"}, std::tuple{"a", "00620062", "e8b7be43"},
        std::tuple{"123456789", "091e01de", "cbf43926"},
        std::tuple{"Wikipedia", "11e60398", "adaac02e"}}) {
    EXPECT_EQ(adler32(bytesOf(text)).description(), adler) << text;
    EXPECT_EQ(crc32(bytesOf(text)).description(), crc) << text;
  }
}

TEST(Checksum, ZlibRoutinesWholeOrInPartsAgreeWithTheBytewiseLoops) {
  // Lengths around zlib's 5552-byte Adler-32 batches and its CRC strides;
  // bytes of 0xFF push the Adler sums towards their modulus fastest.
  for (const std::size_t size : {1u, 31u, 33u, 5551u, 5552u, 5553u, 100003u}) {
    for (const Bytes& input :
         {randomBytes(size, static_cast<std::uint32_t>(size)), Bytes(size, 0xFF)}) {
      const std::uint32_t adler = adler32Bytewise(1, input), crc = crc32Bytewise(0, input);
      EXPECT_EQ(adler32(input).checksum, adler) << size;
      EXPECT_EQ(crc32(input).checksum, crc) << size;
      // Advancing over two parts, either possibly empty, equals advancing over the whole.
      for (const std::size_t split : {std::size_t{0}, std::size_t{1}, size / 2, size}) {
        Adler32 adlerParts;
        Crc32 crcParts;
        for (const auto part : {std::span(input).first(split), std::span(input).subspan(split)}) {
          adlerParts.advance(part);
          crcParts.advance(part);
        }
        EXPECT_EQ(adlerParts.checksum, adler) << size << " split at " << split;
        EXPECT_EQ(crcParts.checksum, crc) << size << " split at " << split;
      }
    }
  }
}

TEST(Checksum, LongInputsGoToZlibInNonEmptyPieces) {
  const Bytes input = randomBytes(1000);
  const auto zlibCrc = [](std::uint32_t value, std::span<const std::uint8_t> piece) {
    EXPECT_FALSE(piece.empty());
    return static_cast<std::uint32_t>(
        ::crc32(value, piece.data(), static_cast<uInt>(piece.size())));
  };
  for (const std::size_t pieceLimit : {1u, 7u, 1000u, 5000u}) {
    EXPECT_EQ(foldInPieces(0, input, pieceLimit, zlibCrc), crc32Bytewise(0, input)) << pieceLimit;
  }
}

class Md5KnownDigest : public ::testing::TestWithParam<std::pair<std::string, const char*>> {};

TEST_P(Md5KnownDigest, AllViewsAgree) {
  const auto& [message, md5] = GetParam();
  EXPECT_EQ(toMd5(message), md5);
  const Digest digest(bytesOf(message));
  EXPECT_EQ(digest.checksum(), md5);
  EXPECT_EQ(digest.digest(), md5Digest(message));
}

// From RFC 1321's suite: the empty message, a short one, and 62 bytes, whose
// padding takes a block of its own; then a message of many blocks. Every
// length to 200 bytes is compared with md5sum in CodecToolsTest.
INSTANTIATE_TEST_SUITE_P(
    Rfc1321, Md5KnownDigest,
    ::testing::Values(
        std::pair{std::string(), "d41d8cd98f00b204e9800998ecf8427e"},
        std::pair{std::string("abc"), "900150983cd24fb0d6963f7d28e17f72"},
        std::pair{std::string("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789"),
                  "d174ab98d277d9f5a5611c2c9f419d9f"},
        std::pair{std::string(1000000, 'a'), "7707d6ae4e027c70eea2a935c2296f21"}));

TEST(Md5, HashesTextAsItsUtf8BytesWithoutNormalising) {
  EXPECT_EQ(toMd5("\u00e9"), "66ddcd97cfdeabb2f6fb8a999b4bc76f");  // the bytes C3 A9
  EXPECT_NE(toMd5("e\u0301"), toMd5("\u00e9"));                    // e + combining acute
}

}  // namespace
}  // namespace tavrin
