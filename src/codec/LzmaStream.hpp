#pragma once

#include "codec/CodecStream.hpp"

#include <lzma.h>

#include <cstddef>
#include <memory>

namespace tavrin {

// The xz container (LZMA2 with a CRC-64 check) through liblzma, in either direction.
class LzmaStream final : public CodecStream {
 public:
  // A stream ready to code `inputSize` bytes, or null when liblzma cannot set one up.
  static std::unique_ptr<LzmaStream> open(CodecOperation operation, std::size_t inputSize);

  ~LzmaStream() override;

  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) override;

 private:
  LzmaStream() = default;

  lzma_stream _stream = LZMA_STREAM_INIT;
};

}  // namespace tavrin
