#pragma once

/// \file
/// MD5 message digests (RFC 1321). Pure functions and an immutable value: they
/// block only while they compute, may run on any thread and never fail.

#include <tavrin/export.hpp>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>
#if __cplusplus >= 202002L
#include <span>
#endif

namespace tavrin {

/// The MD5 digest of a message, computed once when the value is made. Immutable.
class TAVRIN_EXPORT Digest {
 public:
  /// The digest of the bytes of `message` (which may be empty).
  explicit Digest(const std::vector<std::uint8_t>& message);
#if __cplusplus >= 202002L
  /// The digest of `message` (C++20 hosts only).
  explicit Digest(std::span<const std::uint8_t> message);
#endif

  /// The 16 digest bytes: the state words A, B, C, D, each least significant byte first.
  const std::array<std::uint8_t, 16>& digest() const noexcept { return _digest; }
  /// The digest as 32 lower-case hexadecimal digits.
  std::string checksum() const;

 private:
  std::array<std::uint8_t, 16> _digest;
};

/// The 32 lower-case hex digits of the MD5 of `text`'s bytes (UTF-8, taken as they are).
TAVRIN_EXPORT std::string toMd5(std::string_view text);
/// The 16 bytes of the MD5 of `text`'s bytes (UTF-8, taken as they are).
TAVRIN_EXPORT std::array<std::uint8_t, 16> md5Digest(std::string_view text);

}  // namespace tavrin
