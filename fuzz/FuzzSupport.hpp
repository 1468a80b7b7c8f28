#pragma once

// What every decoder target checks. A failed check aborts, which libFuzzer
// reports as a crash with the input that caused it.

#include <tavrin/codec.hpp>

#include <cstdint>
#include <cstdlib>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavrin::fuzz {

using Bytes = std::vector<std::uint8_t>;

inline void require(bool condition) {
  if (!condition) std::abort();
}

// Text like a dataset's JSON, to make a valid stream that the fuzzer then alters.
inline Bytes sampleText() {
  std::string text = "[{\"Contacts\":[";
  for (unsigned row = 0; row < 60; ++row) {
    text += "[\"" + std::to_string(row * 2654435761u) + ":ABPerson\"," + std::to_string(row % 7) +
            (row % 3 ? ",null," : ",true,") + std::to_string(1600000000 + row * 977) + ".5],";
  }
  text += "[]]}]";
  return Bytes(text.begin(), text.end());
}

// Checks a decoder against hostile input, with its encoder to hand:
// - the input itself decodes or not, never past the output limit, and what it
//   decodes to encodes and decodes back to itself;
// - a valid stream altered by the input (byte triples: where, low and high,
//   and what to flip; a last lone byte: where to cut) still decodes safely.
//   Random bytes rarely get past a header; this reaches the inner paths.
template <typename Encode, typename Decode>
void checkDecoder(std::span<const std::uint8_t> input, Encode encode, Decode decode) {
  if (const std::optional<Bytes> decoded = decode(input)) {
    require(decoded->size() <= maximumDecompressedSize);
    const std::optional<Bytes> encoded = encode(*decoded);
    require(encoded.has_value() && decode(*encoded) == decoded);
  }

  static const Bytes sample = *encode(sampleText());
  Bytes altered = sample;
  std::size_t at = 0;
  for (; at + 3 <= input.size(); at += 3) {
    altered[(input[at] | std::size_t{input[at + 1]} << 8) % altered.size()] ^= input[at + 2] | 1;
  }
  if (at < input.size()) altered.resize(altered.size() * input[at] / 256);
  if (const std::optional<Bytes> decoded = decode(altered)) {
    require(decoded->size() <= maximumDecompressedSize);
  }
}

// Checks that the input survives encoding and decoding unchanged.
template <typename Encode, typename Decode>
void checkRoundTrip(std::span<const std::uint8_t> input, Encode encode, Decode decode) {
  const std::optional<Bytes> encoded = encode(input);
  require(encoded.has_value());
  require(decode(*encoded) == Bytes(input.begin(), input.end()));
}

// Both checks, for codecs cheap enough to encode on every input.
template <typename Encode, typename Decode>
void checkCodec(std::span<const std::uint8_t> input, Encode encode, Decode decode) {
  checkDecoder(input, encode, decode);
  checkRoundTrip(input, encode, decode);
}

}  // namespace tavrin::fuzz
