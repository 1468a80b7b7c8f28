#include "FuzzSupport.hpp"

using tavrin::CompressionAlgorithm;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tavrin::fuzz::checkCodec(
      {data, size},
      [](const auto& bytes) { return tavrin::compress(bytes, CompressionAlgorithm::lz4); },
      [](const auto& bytes) { return tavrin::decompress(bytes, CompressionAlgorithm::lz4); });
  return 0;
}
