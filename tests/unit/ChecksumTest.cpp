#include "../support/CodecTestData.hpp"

#include "codec/Checksum.hpp"

#include <tavrin/codec.hpp>

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

}  // namespace
}  // namespace tavrin
