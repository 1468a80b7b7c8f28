#include "codec/Checksum.hpp"

#include <tavrin/codec.hpp>

#include <zlib.h>

namespace tavrin {

std::uint32_t adler32Bytewise(std::uint32_t checksum, std::span<const std::uint8_t> bytes) {
  constexpr std::uint32_t modulus = 65521;
  std::uint32_t s1 = checksum & 0xFFFF;
  std::uint32_t s2 = checksum >> 16;
  for (const std::uint8_t byte : bytes) {
    s1 = (s1 + byte) % modulus;
    s2 = (s2 + s1) % modulus;
  }
  return s2 << 16 | s1;
}

void Adler32::advance(std::span<const std::uint8_t> chunk) {
  checksum = foldWithZlib(checksum, chunk, ::adler32);
}

void Adler32::advance(const std::vector<std::uint8_t>& chunk) {
  advance(std::span<const std::uint8_t>(chunk));
}

std::string Adler32::description() const { return hexDigits(checksum); }

Adler32 adler32(std::span<const std::uint8_t> input) { return checksumOf<Adler32>(input); }

Adler32 adler32(const std::vector<std::uint8_t>& input) {
  return adler32(std::span<const std::uint8_t>(input));
}

}  // namespace tavrin
