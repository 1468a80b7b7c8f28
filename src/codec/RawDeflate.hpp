#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace tavrin {

// The two encoders of raw DEFLATE (RFC 1951) here. Both write streams that any
// inflater reads; they differ in speed and in how many bytes they write.
enum class DeflateEngine {
  libdeflate,  // every whole-buffer encoding: compress(), deflate(), zip(), gzip()
  zlib,        // zlib at level 6 through the streaming driver: what libdeflate replaced,
               // kept as the reference the benchmarks measure it against
};

// `prefix` followed by the raw DEFLATE of all of `input`, or absent when the
// encoder cannot be set up.
std::optional<std::vector<std::uint8_t>> rawDeflate(std::span<const std::uint8_t> input,
                                                    DeflateEngine engine,
                                                    std::span<const std::uint8_t> prefix = {});

}  // namespace tavrin
