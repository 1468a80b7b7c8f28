#include "FuzzSupport.hpp"

using tavrin::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> input(data, size);
  tavrin::fuzz::checkCodec(
      input, [](const auto& bytes) { return tavrin::gzip(bytes); },
      [](const auto& bytes) { return tavrin::gunzip(bytes); });
  // What a member gives matches the CRC-32 and the length in its trailer.
  if (const auto decoded = tavrin::gunzip(input)) {
    const auto littleEndian = [&](std::size_t at) {
      return std::uint32_t{data[at]} | std::uint32_t{data[at + 1]} << 8 |
             std::uint32_t{data[at + 2]} << 16 | std::uint32_t{data[at + 3]} << 24;
    };
    require(tavrin::crc32(*decoded).checksum == littleEndian(size - 8));
    require(static_cast<std::uint32_t>(decoded->size()) == littleEndian(size - 4));
  }
  return 0;
}
