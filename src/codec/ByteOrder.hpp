#pragma once

#include <bit>
#include <cstdint>
#include <cstring>
#include <vector>

namespace tavrin {

// Fixed-width integers read from and written to byte buffers in a stated byte
// order, whatever the machine's own. Reads copy through memcpy, so the bytes
// need no alignment.

inline std::uint32_t loadLittleEndian32(const std::uint8_t* bytes) {
  std::uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
  return value;
}

inline std::uint32_t loadBigEndian32(const std::uint8_t* bytes) {
  return __builtin_bswap32(loadLittleEndian32(bytes));
}

inline void storeLittleEndian32(std::uint8_t* bytes, std::uint32_t value) {
  if constexpr (std::endian::native == std::endian::big) value = __builtin_bswap32(value);
  std::memcpy(bytes, &value, sizeof value);
}

inline std::uint16_t loadLittleEndian16(const std::uint8_t* bytes) {
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

inline void appendLittleEndian32(std::vector<std::uint8_t>& out, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8)
    out.push_back(static_cast<std::uint8_t>(value >> shift));
}

inline void appendBigEndian32(std::vector<std::uint8_t>& out, std::uint32_t value) {
  for (int shift = 24; shift >= 0; shift -= 8)
    out.push_back(static_cast<std::uint8_t>(value >> shift));
}

}  // namespace tavrin
