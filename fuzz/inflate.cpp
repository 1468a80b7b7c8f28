#include "FuzzSupport.hpp"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tavrin::fuzz::checkCodec(
      {data, size}, [](const auto& bytes) { return tavrin::deflate(bytes); },
      [](const auto& bytes) { return tavrin::inflate(bytes); });
  return 0;
}
