#include "codec/ByteOrder.hpp"
#include "codec/CompressionDriver.hpp"

#include <tavrin/codec.hpp>

#include <array>

namespace tavrin {
namespace {

// CMF 0x78: DEFLATE with a 32 KiB window. FLG 0x5E: no preset dictionary,
// level field 1, check bits making 0x785E a multiple of 31. Written whatever
// level the encoder uses; readers do not act on the level field.
constexpr std::array<std::uint8_t, 2> header = {0x78, 0x5E};
constexpr std::size_t headerSize = 2;
constexpr std::size_t trailerSize = 4;

}  // namespace

std::optional<std::vector<std::uint8_t>> zip(std::span<const std::uint8_t> input) {
  auto result =
      CompressionDriver::run(CodecOperation::encode, CompressionAlgorithm::zlib, input, header);
  if (!result) return std::nullopt;
  appendBigEndian32(*result, adler32(input).checksum);
  return result;
}

std::optional<std::vector<std::uint8_t>> unzip(std::span<const std::uint8_t> input,
                                               bool skipCheckSumValidation) {
  if (input.size() <= headerSize + trailerSize) return std::nullopt;
  // Method 8 in the low nibble of CMF, and the 16-bit header a multiple of 31.
  // The window size and the preset-dictionary flag are not examined.
  const unsigned headerValue = static_cast<unsigned>(input[0]) << 8 | input[1];
  if ((headerValue & 0x0F00) != 0x0800 || headerValue % 31 != 0) return std::nullopt;

  auto decoded =
      CompressionDriver::run(CodecOperation::decode, CompressionAlgorithm::zlib,
                             input.subspan(headerSize, input.size() - headerSize - trailerSize));
  if (!decoded || skipCheckSumValidation) return decoded;
  const std::uint32_t stored = loadBigEndian32(input.data() + input.size() - trailerSize);
  if (adler32(std::span<const std::uint8_t>(*decoded)).checksum != stored) return std::nullopt;
  return decoded;
}

std::optional<std::vector<std::uint8_t>> zip(const std::vector<std::uint8_t>& input) {
  return zip(std::span<const std::uint8_t>(input));
}
std::optional<std::vector<std::uint8_t>> unzip(const std::vector<std::uint8_t>& input,
                                               bool skipCheckSumValidation) {
  return unzip(std::span<const std::uint8_t>(input), skipCheckSumValidation);
}

}  // namespace tavrin
