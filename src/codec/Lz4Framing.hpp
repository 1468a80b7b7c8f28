#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace tavrin::lz4framing {

// The block framing the phone's compression library wraps LZ4 in. A stream is
// a run of blocks closed by an end marker:
//   "bv41" decoded size (u32 LE) encoded size (u32 LE) LZ4 block bytes
//   "bv4-" size (u32 LE) raw bytes
//   "bv4$"
using Magic = std::array<std::uint8_t, 4>;
inline constexpr Magic compressedBlock = {'b', 'v', '4', '1'};
inline constexpr Magic rawBlock = {'b', 'v', '4', '-'};
inline constexpr Magic endOfStream = {'b', 'v', '4', '$'};
inline constexpr std::size_t compressedHeaderSize = 12;
inline constexpr std::size_t rawHeaderSize = 8;

// Input bytes per block written. Each block is compressed on its own, so any
// reader of the framing can decode it.
inline constexpr std::size_t encoderBlockSize = std::size_t{64} << 10;
// The most bytes one block may decode to. Far above what encoders write, and
// it caps what a hostile header can make the decoder reserve.
inline constexpr std::size_t decoderBlockLimit = std::size_t{4} << 20;
// LZ4's match distance: a block may refer back this far into earlier output.
inline constexpr std::size_t historySize = std::size_t{64} << 10;

}  // namespace tavrin::lz4framing
