#include "service/InterimCodec.hpp"

#include <zlib.h>

#include <limits>
#include <memory>

namespace tavrin::interim {

std::optional<std::vector<std::uint8_t>> compressRawDeflate(std::span<const std::uint8_t> input) {
  if (input.size() > std::numeric_limits<uInt>::max()) return std::nullopt;
  z_stream stream{};
  if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) !=
      Z_OK) {
    return std::nullopt;
  }
  const std::unique_ptr<z_stream, int (*)(z_streamp)> end(&stream, &deflateEnd);
  std::vector<std::uint8_t> output(deflateBound(&stream, static_cast<uLong>(input.size())));
  stream.next_in = const_cast<Bytef*>(input.data());
  stream.avail_in = static_cast<uInt>(input.size());
  stream.next_out = output.data();
  stream.avail_out = static_cast<uInt>(output.size());
  if (deflate(&stream, Z_FINISH) != Z_STREAM_END) return std::nullopt;
  output.resize(stream.total_out);
  return output;
}

std::string base64Encode(std::span<const std::uint8_t> input) {
  static constexpr char alphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((input.size() + 2) / 3 * 4);
  std::size_t i = 0;
  for (; i + 3 <= input.size(); i += 3) {
    const std::uint32_t group = std::uint32_t{input[i]} << 16 | std::uint32_t{input[i + 1]} << 8 |
                                std::uint32_t{input[i + 2]};
    for (int shift = 18; shift >= 0; shift -= 6) text += alphabet[(group >> shift) & 63];
  }
  if (const std::size_t rest = input.size() - i; rest > 0) {
    std::uint32_t group = std::uint32_t{input[i]} << 16;
    if (rest == 2) group |= std::uint32_t{input[i + 1]} << 8;
    text += alphabet[(group >> 18) & 63];
    text += alphabet[(group >> 12) & 63];
    text += rest == 2 ? alphabet[(group >> 6) & 63] : '=';
    text += '=';
  }
  return text;
}

}  // namespace tavrin::interim
