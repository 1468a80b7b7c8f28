#pragma once

#include "codec/CodecStream.hpp"

#include <cstddef>
#include <memory>

struct z_stream_s;

namespace tavrin {

// Raw DEFLATE (RFC 1951, no header or trailer) through zlib, in either direction.
class ZlibStream final : public CodecStream {
 public:
  // The level of the zlib encoder (DeflateEngine::zlib, the reference the
  // benchmarks measure libdeflate against): 6, zlib's own default.
  static constexpr int compressionLevel = 6;
  // zlib counts its buffers in 32-bit lengths: input longer than this is handed
  // over in slices, and the stream is only finished with the last one.
  static constexpr std::size_t defaultSliceLimit = std::size_t{1} << 30;

  // A stream ready to code, or null when zlib cannot set one up. `sliceLimit`
  // is there so tests can exercise slicing on small inputs.
  static std::unique_ptr<ZlibStream> open(CodecOperation operation,
                                          std::size_t sliceLimit = defaultSliceLimit);

  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) override;

 private:
  struct Release {
    CodecOperation operation;
    void operator()(z_stream_s* stream) const;
  };

  ZlibStream(std::unique_ptr<z_stream_s, Release> stream, std::size_t sliceLimit);

  std::unique_ptr<z_stream_s, Release> _stream;
  std::size_t _sliceLimit;
};

}  // namespace tavrin
