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

// libdeflate's level 5, chosen by measurement on the JSON of generated phones
// (typical 2.1 MB, large 30 MB) against zlib's level 6, the encoder it
// replaced: 0.926 to 0.929 of zlib's bytes in 0.36 to 0.39 of its time, which
// brings a large phone's whole run to under half of its processor time with
// zlib. Level 6 writes 1 % fewer bytes (0.918) for 15 % more time (0.40 to
// 0.44), and leaves that run just above half; level 4 writes 2 % more
// (0.944 to 0.951 of zlib's); from level 8 on libdeflate is slower than zlib.
// The whole-run benchmark repeats the measurement (BM_LibdeflateLevel).
inline constexpr int libdeflateLevel = 5;

// Encodes all of `input` as raw DEFLATE and hands the encoded bytes to `take`
// in the buffer the encoder wrote them to, which is freed once `take` returns.
// `input` is no longer read by then, so `take` may release it. False, without
// calling `take`, when the encoder cannot be set up.
bool withRawDeflate(std::span<const std::uint8_t> input, DeflateEngine engine,
                    const std::function<void(std::span<const std::uint8_t>)>& take);

}  // namespace tavrin
