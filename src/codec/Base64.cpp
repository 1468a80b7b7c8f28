#include "codec/Base64.hpp"

#include <tavrin/codec.hpp>

#include <array>
#include <cstring>

namespace tavrin {
namespace {

constexpr char alphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr char padding = '=';
constexpr std::uint8_t notInAlphabet = 0xFF;

// Two output characters for every 12-bit value: the encoder turns three bytes
// into four characters with two look-ups instead of four.
constexpr std::array<std::array<char, 2>, 4096> characterPairs = [] {
  std::array<std::array<char, 2>, 4096> pairs{};
  for (std::size_t value = 0; value < pairs.size(); ++value) {
    pairs[value] = {alphabet[value >> 6], alphabet[value & 0x3F]};
  }
  return pairs;
}();

constexpr std::array<std::uint8_t, 256> sextets = [] {
  std::array<std::uint8_t, 256> values{};
  values.fill(notInAlphabet);
  for (std::uint8_t value = 0; value < 64; ++value) {
    values[static_cast<unsigned char>(alphabet[value])] = value;
  }
  return values;
}();

void writePair(char* out, std::uint32_t twelveBits) {
  std::memcpy(out, characterPairs[twelveBits].data(), 2);
}

}  // namespace

void base64EncodeTo(char* out, std::span<const std::uint8_t> bytes) {
  const std::uint8_t* in = bytes.data();
  std::size_t left = bytes.size();
  for (; left >= 3; left -= 3, in += 3, out += 4) {
    const std::uint32_t bits = std::uint32_t{in[0]} << 16 | std::uint32_t{in[1]} << 8 | in[2];
    writePair(out, bits >> 12);
    writePair(out + 2, bits & 0xFFF);
  }
  if (left > 0) {
    const std::uint32_t bits =
        std::uint32_t{in[0]} << 16 | (left == 2 ? std::uint32_t{in[1]} << 8 : 0);
    writePair(out, bits >> 12);
    out[2] = left == 2 ? alphabet[(bits >> 6) & 0x3F] : padding;
    out[3] = padding;
  }
}

std::string base64Encode(std::span<const std::uint8_t> input) {
  std::string text(base64EncodedSize(input.size()), '\0');
  base64EncodeTo(text.data(), input);
  return text;
}

std::optional<std::vector<std::uint8_t>> base64Decode(std::string_view text) {
  if (text.size() % 4 != 0) return std::nullopt;
  std::size_t padded = 0;
  if (!text.empty() && text.back() == padding) padded = text[text.size() - 2] == padding ? 2 : 1;
  std::vector<std::uint8_t> bytes(text.size() / 4 * 3 - padded);

  // Every quartet but the last must be four alphabet characters.
  const std::size_t quartets = text.size() / 4;
  const auto sextet = [&](std::size_t index) {
    return sextets[static_cast<unsigned char>(text[index])];
  };
  for (std::size_t quartet = 0; quartet + 1 < quartets; ++quartet) {
    const std::size_t at = 4 * quartet;
    const std::uint8_t s0 = sextet(at), s1 = sextet(at + 1), s2 = sextet(at + 2),
                       s3 = sextet(at + 3);
    if ((s0 | s1 | s2 | s3) > 63) return std::nullopt;
    bytes[3 * quartet] = static_cast<std::uint8_t>(s0 << 2 | s1 >> 4);
    bytes[3 * quartet + 1] = static_cast<std::uint8_t>(s1 << 4 | s2 >> 2);
    bytes[3 * quartet + 2] = static_cast<std::uint8_t>(s2 << 6 | s3);
  }
  if (quartets == 0) return bytes;

  // The last quartet: its padding is already counted, and the bits the
  // padding leaves over must be zero, so each byte string has one encoding.
  const std::size_t at = text.size() - 4;
  const std::size_t characters = 4 - padded;
  std::uint32_t bits = 0;
  for (std::size_t index = 0; index < characters; ++index) {
    const std::uint8_t value = sextet(at + index);
    if (value == notInAlphabet) return std::nullopt;
    bits = bits << 6 | value;
  }
  bits <<= 6 * padded;
  if (padded == 1 && (bits & 0xFF) != 0) return std::nullopt;
  if (padded == 2 && (bits & 0xFFFF) != 0) return std::nullopt;
  std::uint8_t* out = bytes.data() + 3 * (quartets - 1);
  for (std::size_t index = 0; index < 3 - padded; ++index) {
    out[index] = static_cast<std::uint8_t>(bits >> (16 - 8 * index));
  }
  return bytes;
}

std::string base64Encode(const std::vector<std::uint8_t>& input) {
  return base64Encode(std::span<const std::uint8_t>(input));
}

}  // namespace tavrin
