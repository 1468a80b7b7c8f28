#pragma once

#include <cstdint>
#include <functional>
#include <span>

namespace tavrin {

// The two encoders of raw DEFLATE (RFC 1951) here. Both write streams that any
// inflater reads; they differ in speed and in how many bytes they write.
enum class DeflateEngine {
  libdeflate,  // every whole-buffer encoding: compress(), deflate(), zip(), gzip()
  zlib,        // zlib at level 6 through the streaming driver: what libdeflate replaced,
               // kept as the reference the benchmarks measure it against
};

// Encodes all of `input` as raw DEFLATE and hands the encoded bytes to `take`
// in the buffer the encoder wrote them to, which is freed once `take` returns.
// `input` is no longer read by then, so `take` may release it. False, without
// calling `take`, when the encoder cannot be set up.
bool withRawDeflate(std::span<const std::uint8_t> input, DeflateEngine engine,
                    const std::function<void(std::span<const std::uint8_t>)>& take);

}  // namespace tavrin
