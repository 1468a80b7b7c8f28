#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// The compact encoding of dataset values. A value is one tag byte and its
// payload: integers keep only their significant bytes, texts and nested rows
// are prefixed by their byte length. A phone's dataset runs to tens of
// megabytes, so its form in memory stays smaller than the JSON it becomes.
namespace tavrin::tape {

enum Tag : std::uint8_t {
  null = 0x00,
  falseValue = 0x01,
  trueValue = 0x02,
  floatingPoint = 0x03,    // followed by the 8 bytes of the double
  signedInteger = 0x10,    // low nibble: number of payload bytes (0 to 8)
  unsignedInteger = 0x20,  // low nibble: number of payload bytes (0 to 8)
  string = 0x30,           // followed by the byte length as a LEB128 number
  row = 0x40,              // followed by the byte length as a LEB128 number
};

inline std::uint8_t kindOf(std::uint8_t tag) { return tag & 0xF0; }
inline unsigned payloadSize(std::uint8_t tag) { return tag & 0x0F; }

// Reads a LEB128 length and advances the position past it.
inline std::size_t readLength(const std::uint8_t*& position) {
  std::size_t length = 0;
  unsigned shift = 0;
  std::uint8_t byte = 0;
  do {
    byte = *position++;
    length |= static_cast<std::size_t>(byte & 0x7F) << shift;
    shift += 7;
  } while ((byte & 0x80) != 0);
  return length;
}

// Reads `size` little-endian payload bytes.
inline std::uint64_t readUnsigned(const std::uint8_t* position, unsigned size) {
  std::uint64_t value = 0;
  std::memcpy(&value, position, size);  // the host is little-endian
  return value;
}

// Reads `size` little-endian bytes of a two's-complement number and extends its sign.
inline std::int64_t readSigned(const std::uint8_t* position, unsigned size) {
  if (size == 0) return 0;
  const std::uint64_t raw = readUnsigned(position, size);
  const unsigned unused = 64 - 8 * size;
  return static_cast<std::int64_t>(raw << unused) >> unused;
}

inline double readDouble(const std::uint8_t* position) {
  double value = 0;
  std::memcpy(&value, position, sizeof value);
  return value;
}

}  // namespace tavrin::tape
