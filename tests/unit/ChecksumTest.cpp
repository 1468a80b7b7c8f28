#include "../support/CodecTestData.hpp"

#include "codec/Checksum.hpp"

#include <tavrin/codec.hpp>

#include <gtest/gtest.h>
#include <zlib.h>

namespace tavrin {
namespace {

using namespace testdata;

struct KnownValue {
  const char* text;
  const char* adler;
  const char* crc;
};

class ChecksumKnownValue : public ::testing::TestWithParam<KnownValue> {};

TEST_P(ChecksumKnownValue, MatchesInEveryForm) {
  const auto [text, adler, crc] = GetParam();
  const Bytes input = bytesOf(text);
  EXPECT_EQ(adler32(input).description(), adler);
  EXPECT_EQ(crc32(input).description(), crc);
  EXPECT_EQ(adler32Bytewise(1, input), std::stoul(adler, nullptr, 16));
  EXPECT_EQ(crc32Bytewise(0, input), std::stoul(crc, nullptr, 16));
}

INSTANTIATE_TEST_SUITE_P(Checksum, ChecksumKnownValue,
                         ::testing::Values(KnownValue{"", "00000001", "00000000"},
                                           KnownValue{"a", "00620062", "e8b7be43"},
                                           KnownValue{"123456789", "091e01de", "cbf43926"},
                                           KnownValue{"Wikipedia", "11e60398", "adaac02e"}));

TEST(Checksum, ZlibRoutinesAgreeWithTheBytewiseLoops) {
  // Lengths around zlib's 5552-byte Adler-32 batches and its CRC strides;
  // bytes of 0xFF push the Adler sums towards their modulus fastest.
  for (const std::size_t size : {1u, 31u, 33u, 5551u, 5552u, 5553u, 100003u}) {
    for (const Bytes& input :
         {randomBytes(size, static_cast<std::uint32_t>(size)), Bytes(size, 0xFF)}) {
      EXPECT_EQ(adler32(input).checksum, adler32Bytewise(1, input)) << size;
      EXPECT_EQ(crc32(input).checksum, crc32Bytewise(0, input)) << size;
    }
  }
}

TEST(Checksum, AdvancingInPartsEqualsAdvancingOverTheWhole) {
  const Bytes input = randomBytes(7000);
  for (const std::size_t split : {0u, 1u, 5552u, 7000u}) {
    Adler32 adler;
    Crc32 crc;
    for (const Bytes& part :
         {Bytes(input.begin(), input.begin() + static_cast<std::ptrdiff_t>(split)),
          Bytes(input.begin() + static_cast<std::ptrdiff_t>(split), input.end())}) {
      adler.advance(part);
      crc.advance(part);
    }
    EXPECT_EQ(adler.checksum, adler32(input).checksum) << split;
    EXPECT_EQ(crc.checksum, crc32(input).checksum) << split;
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
