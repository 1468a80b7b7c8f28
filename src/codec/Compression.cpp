#include "codec/CompressionDriver.hpp"

#include <tavrin/codec.hpp>

namespace tavrin {

using Bytes = std::vector<std::uint8_t>;
using ByteSpan = std::span<const std::uint8_t>;

std::optional<Bytes> compress(ByteSpan input, CompressionAlgorithm algorithm) {
  return CompressionDriver::run(CodecOperation::encode, algorithm, input);
}

std::optional<Bytes> decompress(ByteSpan input, CompressionAlgorithm algorithm) {
  return CompressionDriver::run(CodecOperation::decode, algorithm, input);
}

std::optional<Bytes> deflate(ByteSpan input) { return compress(input, CompressionAlgorithm::zlib); }

std::optional<Bytes> inflate(ByteSpan input) {
  return decompress(input, CompressionAlgorithm::zlib);
}

std::optional<Bytes> compress(const Bytes& input, CompressionAlgorithm algorithm) {
  return compress(ByteSpan(input), algorithm);
}
std::optional<Bytes> decompress(const Bytes& input, CompressionAlgorithm algorithm) {
  return decompress(ByteSpan(input), algorithm);
}
std::optional<Bytes> deflate(const Bytes& input) { return deflate(ByteSpan(input)); }
std::optional<Bytes> inflate(const Bytes& input) { return inflate(ByteSpan(input)); }

}  // namespace tavrin
