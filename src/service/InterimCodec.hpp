#pragma once

// Stand-ins for the codec's compress(input, CompressionAlgorithm::zlib) and
// base64Encode, used by the collection run until the codec is part of the
// library; they are then removed in favour of <tavrin/codec.hpp>.

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavrin::interim {

// Raw DEFLATE (no header, no trailer); empty when zlib fails.
std::optional<std::vector<std::uint8_t>> compressRawDeflate(std::span<const std::uint8_t> input);
// Standard base64 with "=" padding and no line breaks.
std::string base64Encode(std::span<const std::uint8_t> input);

}  // namespace tavrin::interim
