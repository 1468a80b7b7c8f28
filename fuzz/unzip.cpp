#include "FuzzSupport.hpp"

using tavrin::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> input(data, size);
  tavrin::fuzz::checkCodec(
      input, [](const auto& bytes) { return tavrin::zip(bytes); },
      [](const auto& bytes) { return tavrin::unzip(bytes, false); });
  // A checked container also reads unchecked, to the same bytes, and its
  // trailer is the Adler-32 of what it holds.
  if (const auto checked = tavrin::unzip(input, false)) {
    require(tavrin::unzip(input, true) == checked);
    const std::uint32_t trailer = std::uint32_t{data[size - 4]} << 24 |
                                  std::uint32_t{data[size - 3]} << 16 |
                                  std::uint32_t{data[size - 2]} << 8 | data[size - 1];
    require(tavrin::adler32(*checked).checksum == trailer);
  }
  return 0;
}
