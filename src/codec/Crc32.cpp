#include "codec/Checksum.hpp"

#include <tavrin/codec.hpp>

#include <zlib.h>

namespace tavrin {
namespace {

constexpr std::array<std::uint32_t, 256> makeLookUpTable() {
  constexpr std::uint32_t reflectedPolynomial = 0xEDB88320;
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t byte = 0; byte < 256; ++byte) {
    std::uint32_t remainder = byte;
    for (int bit = 0; bit < 8; ++bit) {
      remainder = (remainder & 1) ? (remainder >> 1) ^ reflectedPolynomial : remainder >> 1;
    }
    table[byte] = remainder;
  }
  return table;
}

}  // namespace

constinit const std::array<std::uint32_t, 256> Crc32::lookUpTable = makeLookUpTable();

std::uint32_t crc32Bytewise(std::uint32_t checksum, std::span<const std::uint8_t> bytes) {
  std::uint32_t remainder = ~checksum;
  for (const std::uint8_t byte : bytes) {
    remainder = Crc32::lookUpTable[(remainder ^ byte) & 0xFF] ^ (remainder >> 8);
  }
  return ~remainder;
}

void Crc32::advance(std::span<const std::uint8_t> chunk) {
  checksum = foldWithZlib(checksum, chunk, ::crc32);
}

void Crc32::advance(const std::vector<std::uint8_t>& chunk) {
  advance(std::span<const std::uint8_t>(chunk));
}

std::string Crc32::description() const { return hexDigits(checksum); }

Crc32 crc32(std::span<const std::uint8_t> input) { return checksumOf<Crc32>(input); }

Crc32 crc32(const std::vector<std::uint8_t>& input) {
  return crc32(std::span<const std::uint8_t>(input));
}

}  // namespace tavrin
