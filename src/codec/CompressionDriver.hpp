#pragma once

#include "codec/CodecStream.hpp"

#include <tavrin/codec.hpp>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace tavrin {

// The one routine every compressing and decompressing operation goes through.
// Raw DEFLATE is encoded whole by libdeflate (see RawDeflate.hpp); everything
// else, decoding raw DEFLATE included, runs through the streaming loop of
// drive(). Inflating stays with zlib because the size of its output is not
// known beforehand: zlib fills one fixed buffer after another and stops at the
// decoding limit, where a whole-buffer decoder would have to guess a size and
// start again whenever the guess was short.
class CompressionDriver {
 public:
  // Codes all of `source` with `algorithm` and returns `prefix` followed by the
  // output. Absent for an empty source to decode, a stream that cannot be set
  // up, any coding failure, or decoded output beyond maximumDecompressedSize.
  static std::optional<std::vector<std::uint8_t>> run(CodecOperation operation,
                                                      CompressionAlgorithm algorithm,
                                                      std::span<const std::uint8_t> source,
                                                      std::span<const std::uint8_t> prefix = {});

  // A stream for the operation and algorithm that will be given `inputSize`
  // bytes, or null when none can be set up (always for lzfse, which no library
  // here provides).
  static std::unique_ptr<CodecStream> openStream(CodecOperation operation,
                                                 CompressionAlgorithm algorithm,
                                                 std::size_t inputSize);

  // The driver's loop over an open stream: `prefix`, then everything the
  // stream produces from `source`, or absent on failure or once the output
  // would pass `outputLimit` bytes.
  static std::optional<std::vector<std::uint8_t>> drive(
      CodecStream& stream, std::span<const std::uint8_t> source,
      std::span<const std::uint8_t> prefix,
      std::size_t outputLimit = std::numeric_limits<std::size_t>::max());

  // The size of the one output buffer the loop reuses, for a source of `length` bytes.
  static constexpr std::size_t bufferSize(std::size_t length) {
    return length < 64 ? 64 : length > 65536 ? 65536 : length;
  }
};

}  // namespace tavrin
