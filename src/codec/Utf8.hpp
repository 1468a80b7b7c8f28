#pragma once

#include <cstddef>
#include <cstdint>

namespace tavrin {

// The length of the well-formed UTF-8 sequence of two to four bytes that
// starts at `text`, or 0 when the bytes there are not one (a lone continuation
// byte, overlong forms, surrogates, values past U+10FFFF, a sequence cut short
// by `end`). Single bytes below 0x80 are not looked at: the result is 0.
inline std::size_t utf8SequenceLength(const std::uint8_t* text, const std::uint8_t* end) {
  const std::uint8_t lead = text[0];
  std::size_t length = 0;
  std::uint8_t low = 0x80;
  std::uint8_t high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (static_cast<std::size_t>(end - text) < length) return 0;
  if (text[1] < low || text[1] > high) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (text[i] < 0x80 || text[i] > 0xBF) return 0;
  }
  return length;
}

}  // namespace tavrin
