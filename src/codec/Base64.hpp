#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavrin {

// The length of the base64 text of `size` bytes.
constexpr std::size_t base64EncodedSize(std::size_t size) { return (size + 2) / 3 * 4; }

// Writes the base64 text of `bytes` (standard alphabet, "=" padding) to `out`,
// which must have room for base64EncodedSize(bytes.size()) characters.
void base64EncodeTo(char* out, std::span<const std::uint8_t> bytes);

}  // namespace tavrin
