#include "FuzzSupport.hpp"

using tavrin::CompressionAlgorithm;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> input(data, size);
  const auto encode = [](const auto& bytes) {
    return tavrin::compress(bytes, CompressionAlgorithm::lzma);
  };
  const auto decode = [](const auto& bytes) {
    return tavrin::decompress(bytes, CompressionAlgorithm::lzma);
  };
  tavrin::fuzz::checkDecoder(input, encode, decode);
  // Setting up an xz encoder costs far more than decoding a short stream, so
  // only one input in 16 (chosen by its first byte) is also round-tripped.
  if (size > 0 && data[0] % 16 == 0) tavrin::fuzz::checkRoundTrip(input, encode, decode);
  return 0;
}
