#include "codec/CompressionDriver.hpp"

#include "codec/Lz4BlockDecoder.hpp"
#include "codec/Lz4BlockEncoder.hpp"
#include "codec/LzmaStream.hpp"
#include "codec/RawDeflate.hpp"
#include "codec/ZlibStream.hpp"

namespace tavrin {

std::optional<std::vector<std::uint8_t>> CompressionDriver::run(
    CodecOperation operation, CompressionAlgorithm algorithm, std::span<const std::uint8_t> source,
    std::span<const std::uint8_t> prefix) {
  if (operation == CodecOperation::decode && source.empty()) return std::nullopt;
  // The whole input is at hand, so raw DEFLATE is encoded in one pass by
  // libdeflate; the loop below serves every stream that is coded in pieces.
  if (operation == CodecOperation::encode && algorithm == CompressionAlgorithm::zlib) {
    std::optional<std::vector<std::uint8_t>> result;
    withRawDeflate(source, DeflateEngine::libdeflate, [&](std::span<const std::uint8_t> encoded) {
      result.emplace();
      result->reserve(prefix.size() + encoded.size());
      result->assign(prefix.begin(), prefix.end());
      result->insert(result->end(), encoded.begin(), encoded.end());
    });
    return result;
  }
  const auto stream = openStream(operation, algorithm, source.size());
  if (!stream) return std::nullopt;
  // Encoded output cannot run away: only decoding is bounded.
  return operation == CodecOperation::decode
             ? drive(*stream, source, prefix, maximumDecompressedSize)
             : drive(*stream, source, prefix);
}

std::unique_ptr<CodecStream> CompressionDriver::openStream(CodecOperation operation,
                                                           CompressionAlgorithm algorithm,
                                                           std::size_t inputSize) {
  switch (algorithm) {
    case CompressionAlgorithm::zlib: return ZlibStream::open(operation);
    case CompressionAlgorithm::lzma: return LzmaStream::open(operation, inputSize);
    case CompressionAlgorithm::lz4:
      if (operation == CodecOperation::encode) return std::make_unique<Lz4BlockEncoder>();
      return std::make_unique<Lz4BlockDecoder>();
    case CompressionAlgorithm::lzfse: break;
  }
  return nullptr;
}

std::optional<std::vector<std::uint8_t>> CompressionDriver::drive(
    CodecStream& stream, std::span<const std::uint8_t> source, std::span<const std::uint8_t> prefix,
    std::size_t outputLimit) {
  // The whole input is present, so every call finalizes; the one buffer is
  // reused for every pass and the result grows by whole buffers.
  const std::size_t capacity = bufferSize(source.size());
  const auto buffer = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
  std::vector<std::uint8_t> result(prefix.begin(), prefix.end());
  std::size_t produced = 0;
  for (;;) {
    std::span<std::uint8_t> destination(buffer.get(), capacity);
    const StreamStatus status = stream.process(source, destination);
    if (status == StreamStatus::error) return std::nullopt;
    // The stream stopped short of filling the buffer without ending: its input ran out.
    if (status == StreamStatus::ok && !destination.empty()) return std::nullopt;
    const std::size_t filled = capacity - destination.size();
    if (filled > outputLimit - produced) return std::nullopt;
    produced += filled;
    result.insert(result.end(), buffer.get(), buffer.get() + filled);
    if (status == StreamStatus::end) return result;
  }
}

}  // namespace tavrin
