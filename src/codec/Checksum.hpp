#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace tavrin {

// zlib's checksum routines take a 32-bit length: longer inputs go to them in
// pieces of at most this many bytes.
inline constexpr std::size_t checksumPieceLimit = std::size_t{1} << 30;

// Folds `bytes` into `value` with `fold(value, piece)`, one piece of at most
// `pieceLimit` bytes at a time. Never calls `fold` with an empty piece: zlib's
// routines take a null buffer as a request for their initial value.
template <typename Fold>
std::uint32_t foldInPieces(std::uint32_t value, std::span<const std::uint8_t> bytes,
                           std::size_t pieceLimit, Fold fold) {
  while (!bytes.empty()) {
    const auto piece = bytes.first(std::min(bytes.size(), pieceLimit));
    value = fold(value, piece);
    bytes = bytes.subspan(piece.size());
  }
  return value;
}

// Folds `bytes` into `value` with one of zlib's checksum routines
// (adler32 or crc32), in pieces it can take.
template <typename ZlibRoutine>
std::uint32_t foldWithZlib(std::uint32_t value, std::span<const std::uint8_t> bytes,
                           ZlibRoutine routine) {
  return foldInPieces(value, bytes, checksumPieceLimit,
                      [routine](std::uint32_t running, std::span<const std::uint8_t> piece) {
                        return static_cast<std::uint32_t>(
                            routine(running, piece.data(), static_cast<unsigned>(piece.size())));
                      });
}

// A new checksum of type Sum advanced over `bytes`.
template <typename Sum>
Sum checksumOf(std::span<const std::uint8_t> bytes) {
  Sum sum;
  sum.advance(bytes);
  return sum;
}

// The byte-at-a-time definitions (RFC 1950 and ISO 3309). The library uses
// zlib's routines; these are the reference those routines are tested against.
std::uint32_t adler32Bytewise(std::uint32_t checksum, std::span<const std::uint8_t> bytes);
std::uint32_t crc32Bytewise(std::uint32_t checksum, std::span<const std::uint8_t> bytes);

// `value` as exactly eight lower-case hexadecimal digits.
inline std::string hexDigits(std::uint32_t value) {
  std::string text(8, '0');
  for (std::size_t index = 8; index-- > 0; value >>= 4)
    text[index] = "0123456789abcdef"[value & 0xF];
  return text;
}

}  // namespace tavrin
