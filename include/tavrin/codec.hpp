#pragma once

/// \file
/// Byte-buffer compression, the zlib and gzip containers, their checksums and
/// base64.
///
/// Every operation here is a pure function of its arguments: it blocks its
/// caller only for the time it computes, may run on any thread, and never
/// throws except std::bad_alloc when memory runs out. A failure of any other
/// kind gives an absent result, never a partial one.
///
/// Each byte operation takes a `const std::vector<std::uint8_t>&`. A C++20 host
/// also gets the same operation for `std::span<const std::uint8_t>`, so it can
/// pass bytes it does not hold in a vector without a copy; a C++17 host sees the
/// vector form only. Both forms give the same results.

#include <tavrin/export.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>
#if __cplusplus >= 202002L
#include <span>
#endif

namespace tavrin {

/// The stream formats of compress() and decompress(). The raw values are part of the contract.
enum class CompressionAlgorithm {
  zlib = 0,   ///< Raw DEFLATE (RFC 1951): no header, no trailer.
  lzfse = 1,  ///< LZFSE. No library provides it here: both directions always give absent.
  lzma = 2,   ///< The xz container (LZMA2, CRC-64 check), as `xz` reads and writes it.
  lz4 = 3,    ///< LZ4 blocks framed "bv41" / "bv4-" and closed by "bv4$".
};

/// The most bytes any decoder here produces. A stream that would decode to more
/// stops there and gives absent, so hostile input cannot exhaust memory.
inline constexpr std::size_t maximumDecompressedSize = std::size_t{1} << 30;  // 1 GiB

/// Encodes `input` in `algorithm`'s stream format, all at once. Absent if the stream cannot
/// be set up (always for lzfse).
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> compress(
    const std::vector<std::uint8_t>& input, CompressionAlgorithm algorithm);
/// Decodes one stream of `algorithm`; bytes after its end are not read. Absent for empty,
/// malformed, truncated or over-limit input (see maximumDecompressedSize), an xz stream
/// that needs more than 128 MiB to decode, or an lz4 block that decodes to over 4 MiB.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> decompress(
    const std::vector<std::uint8_t>& input, CompressionAlgorithm algorithm);
/// compress() with CompressionAlgorithm::zlib: raw DEFLATE.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> deflate(
    const std::vector<std::uint8_t>& input);
/// decompress() with CompressionAlgorithm::zlib.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> inflate(
    const std::vector<std::uint8_t>& input);
/// Raw DEFLATE in the zlib container (RFC 1950): header 0x78 0x5E, Adler-32 trailer.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> zip(const std::vector<std::uint8_t>& input);
/// Reads the zlib container. Absent for input of 6 bytes or fewer, a header that is not
/// DEFLATE or fails its check bits, bad DEFLATE data, or (unless `skipCheckSumValidation`)
/// an Adler-32 trailer that does not match. The preset-dictionary flag is not examined.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> unzip(const std::vector<std::uint8_t>& input,
                                                             bool skipCheckSumValidation);
/// Raw DEFLATE in one gzip member (RFC 1952) stamped with the current time; MTIME is 0
/// ("no time") when the clock is before 1970 or past what 32 bits hold.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> gzip(const std::vector<std::uint8_t>& input);
/// Reads the first gzip member, skipping FEXTRA, FNAME, FCOMMENT and FHCRC (not checked).
/// Absent for input shorter than 18 bytes, a bad magic or method, bad DEFLATE data, or an
/// ISIZE or CRC-32 in the last 8 bytes that does not match the decoded bytes.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> gunzip(
    const std::vector<std::uint8_t>& input);

/// A running Adler-32 (RFC 1950). A plain value: not synchronised, copy it freely.
struct TAVRIN_EXPORT Adler32 {
  /// The running value, s2 in the high 16 bits and s1 in the low; 1 for no bytes.
  std::uint32_t checksum = 1;
  /// Folds `chunk` into checksum; advancing over A then B equals advancing over A+B.
  void advance(const std::vector<std::uint8_t>& chunk);
  /// checksum as exactly eight lower-case hex digits, for example "00000001".
  std::string description() const;
#if __cplusplus >= 202002L
  /// advance() for a span of bytes (C++20 hosts only).
  void advance(std::span<const std::uint8_t> chunk);
#endif
};

/// A running CRC-32 (ISO 3309, as gzip and zlib use it). A plain value: not synchronised.
struct TAVRIN_EXPORT Crc32 {
  /// The running value in its final (complemented) form; 0 for no bytes.
  std::uint32_t checksum = 0;
  /// Entry i is the CRC-32 remainder of byte i for the reflected polynomial 0xEDB88320.
  /// One immutable table shared by all instances; safe to read from any thread.
  static const std::array<std::uint32_t, 256> lookUpTable;
  /// Folds `chunk` into checksum; advancing over A then B equals advancing over A+B.
  void advance(const std::vector<std::uint8_t>& chunk);
  /// checksum as exactly eight lower-case hex digits, for example "cbf43926".
  std::string description() const;
#if __cplusplus >= 202002L
  /// advance() for a span of bytes (C++20 hosts only).
  void advance(std::span<const std::uint8_t> chunk);
#endif
};

/// A new Adler32 advanced over the whole input.
TAVRIN_EXPORT Adler32 adler32(const std::vector<std::uint8_t>& input);
/// A new Crc32 advanced over the whole input.
TAVRIN_EXPORT Crc32 crc32(const std::vector<std::uint8_t>& input);

/// Base64 of `input` (RFC 4648 standard alphabet, "=" padding, no line breaks).
TAVRIN_EXPORT std::string base64Encode(const std::vector<std::uint8_t>& input);
/// The bytes `text` encodes, or absent unless it is exactly what base64Encode writes:
/// length a multiple of 4, standard alphabet only, "=" only as final padding, unused bits
/// zero, no whitespace. The empty text gives no bytes.
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> base64Decode(std::string_view text);

#if __cplusplus >= 202002L
///@{
/// The same operation over a span of bytes (C++20 hosts only).
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> compress(std::span<const std::uint8_t> input,
                                                                CompressionAlgorithm algorithm);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> decompress(
    std::span<const std::uint8_t> input, CompressionAlgorithm algorithm);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> deflate(std::span<const std::uint8_t> input);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> inflate(std::span<const std::uint8_t> input);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> zip(std::span<const std::uint8_t> input);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> unzip(std::span<const std::uint8_t> input,
                                                             bool skipCheckSumValidation);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> gzip(std::span<const std::uint8_t> input);
TAVRIN_EXPORT std::optional<std::vector<std::uint8_t>> gunzip(std::span<const std::uint8_t> input);
TAVRIN_EXPORT Adler32 adler32(std::span<const std::uint8_t> input);
TAVRIN_EXPORT Crc32 crc32(std::span<const std::uint8_t> input);
TAVRIN_EXPORT std::string base64Encode(std::span<const std::uint8_t> input);
///@}
#endif

}  // namespace tavrin
