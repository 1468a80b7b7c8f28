#include "../support/CodecTestData.hpp"

#include "codec/Checksum.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>
#include <zlib.h>

namespace tavrin {
namespace {

using testdata::Bytes;

struct KnownValue {
  const char* text;
  std::uint32_t adler;
  std::uint32_t crc;
};

class ChecksumKnownValue : public ::testing::TestWithParam<KnownValue> {};

TEST_P(ChecksumKnownValue, MatchesBothWays) {
  const Bytes input = testdata::bytesOf(GetParam().text);
  EXPECT_EQ(adler32(input).checksum, GetParam().adler);
  EXPECT_EQ(crc32(input).checksum, GetParam().crc);
  EXPECT_EQ(adler32Bytewise(1, input), GetParam().adler);
  EXPECT_EQ(crc32Bytewise(0, input), GetParam().crc);
}

INSTANTIATE_TEST_SUITE_P(Checksum, ChecksumKnownValue,
                         ::testing::Values(KnownValue{"", 0x00000001, 0x00000000},
                                           KnownValue{"a", 0x00620062, 0xe8b7be43},
                                           KnownValue{"abc", 0x024d0127, 0x352441c2},
                                           KnownValue{"123456789", 0x091e01de, 0xcbf43926},
                                           KnownValue{"Wikipedia", 0x11e60398, 0xadaac02e},
                                           KnownValue{"The quick brown fox jumps over the lazy dog",
                                                      0x5bdc0fda, 0x414fa339}));

TEST(Checksum, DescriptionIsEightLowerCaseHexDigits) {
  EXPECT_EQ(adler32(Bytes{}).description(), "00000001");
  EXPECT_EQ(crc32(Bytes{}).description(), "00000000");
  EXPECT_EQ(crc32(testdata::bytesOf("123456789")).description(), "cbf43926");
  EXPECT_EQ(adler32(testdata::bytesOf("a")).description(), "00620062");
  EXPECT_EQ(Crc32{0xABCDEF01}.description(), "abcdef01");
}

TEST(Checksum, ZlibRoutinesAgreeWithTheBytewiseLoops) {
  // Lengths around zlib's 5552-byte Adler-32 batches and its 32-byte CRC strides;
  // bytes of 0xFF push the Adler sums towards their modulus fastest.
  for (const std::size_t size :
       {1u, 15u, 31u, 32u, 33u, 1000u, 5551u, 5552u, 5553u, 20000u, 100003u}) {
    for (const Bytes& input :
         {testdata::randomBytes(size, static_cast<std::uint32_t>(size)), Bytes(size, 0xFF)}) {
      EXPECT_EQ(adler32(input).checksum, adler32Bytewise(1, input)) << size;
      EXPECT_EQ(crc32(input).checksum, crc32Bytewise(0, input)) << size;
    }
  }
}

TEST(Checksum, AdvancingInPartsEqualsAdvancingOverTheWhole) {
  const Bytes input = testdata::randomBytes(7000);
  const Adler32 wholeAdler = adler32(input);
  const Crc32 wholeCrc = crc32(input);
  for (const std::size_t split : {0u, 1u, 63u, 3500u, 5552u, 6999u, 7000u}) {
    const Bytes first(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(split));
    const Bytes second(input.begin() + static_cast<std::ptrdiff_t>(split), input.end());
    Adler32 adler;
    Crc32 crc;
    for (const Bytes* part : {&first, &second}) {
      adler.advance(*part);
      crc.advance(*part);
    }
    EXPECT_EQ(adler.checksum, wholeAdler.checksum) << split;
    EXPECT_EQ(crc.checksum, wholeCrc.checksum) << split;
  }
}

TEST(Checksum, ARunningValueSetByHandIsContinued) {
  const Bytes input = testdata::randomBytes(300);
  const Bytes first(input.begin(), input.begin() + 100);
  const Bytes second(input.begin() + 100, input.end());
  Adler32 adler;
  adler.checksum = adler32(first).checksum;
  adler.advance(second);
  EXPECT_EQ(adler.checksum, adler32(input).checksum);
  Crc32 crc;
  crc.checksum = crc32(first).checksum;
  crc.advance(second);
  EXPECT_EQ(crc.checksum, crc32(input).checksum);
}

TEST(Checksum, FoldingInPiecesGivesTheValueOfOneFold) {
  const Bytes input = testdata::randomBytes(1000);
  const auto zlibCrc = [](std::uint32_t value, std::span<const std::uint8_t> piece) {
    EXPECT_FALSE(piece.empty());
    return static_cast<std::uint32_t>(
        ::crc32(value, piece.data(), static_cast<uInt>(piece.size())));
  };
  for (const std::size_t pieceLimit : {1u, 7u, 999u, 1000u, 5000u}) {
    EXPECT_EQ(foldInPieces(0, input, pieceLimit, zlibCrc), crc32Bytewise(0, input)) << pieceLimit;
  }
  EXPECT_EQ(foldInPieces(12345, {}, 3, zlibCrc), 12345u);
}

TEST(Crc32, LookUpTableIsTheStandardTable) {
  EXPECT_EQ(Crc32::lookUpTable[0], 0x00000000u);
  EXPECT_EQ(Crc32::lookUpTable[1], 0x77073096u);
  EXPECT_EQ(Crc32::lookUpTable[2], 0xEE0E612Cu);
  EXPECT_EQ(Crc32::lookUpTable[3], 0x990951BAu);
  const z_crc_t* zlibTable = get_crc_table();
  for (std::size_t index = 0; index < 256; ++index) {
    EXPECT_EQ(Crc32::lookUpTable[index], zlibTable[index]) << index;
  }
}

}  // namespace
}  // namespace tavrin
