#include "PrintableText.hpp"

#include "codec/Utf8.hpp"

#include <algorithm>
#include <cstdint>

namespace tavrin::sandbox {

namespace {

// The length of the character at the start of `text`; 0 for a byte that
// does not start a well-formed UTF-8 sequence.
std::size_t sequenceLength(std::string_view text) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  return bytes[0] < 0x80 ? 1 : utf8SequenceLength(bytes, bytes + text.size());
}

constexpr char hexDigits[] = "0123456789abcdef";

void appendEscape(std::string& out, std::string_view prefix, std::uint8_t byte) {
  out.append(prefix).append({hexDigits[byte >> 4], hexDigits[byte & 0xF]});
}

// Appends what stands for the character of `length` bytes (0: a stray byte)
// at the start of `text`.
void appendPiece(std::string& out, std::string_view text, std::size_t length) {
  const auto byte = static_cast<std::uint8_t>(text[0]);
  const std::uint8_t second = length > 1 ? static_cast<std::uint8_t>(text[1]) : 0;
  if (byte == '\n') {
    out += "\\n";
  } else if (byte == '\r') {
    out += "\\r";
  } else if (byte == '\t') {
    out += "\\t";
  } else if (length == 0 || byte < 0x20 || byte == 0x7F) {
    appendEscape(out, "\\x", byte);  // a control character, or a byte that is not UTF-8
  } else if (byte == 0xC2 && second < 0xA0) {
    appendEscape(out, "\\u00", second);  // a C1 control
  } else {
    out.append(text.substr(0, length));
  }
}

}  // namespace

std::string printable(std::string_view text, std::size_t limit) {
  std::string result;
  result.reserve(std::min(text.size(), limit) + 3);
  for (std::size_t i = 0; i < text.size();) {
    const std::size_t length = sequenceLength(text.substr(i));
    const std::size_t before = result.size();
    appendPiece(result, text.substr(i), length);
    if (result.size() > limit) {
      result.resize(before);
      result += "...";
      break;
    }
    i += length == 0 ? 1 : length;
  }
  return result;
}

}  // namespace tavrin::sandbox
