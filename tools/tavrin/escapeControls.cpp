#include "escapeControls.hpp"

#include <cstdio>

namespace tavrin::tool {
namespace {

void appendHex(std::string& out, unsigned char byte) {
  char escape[5];
  std::snprintf(escape, sizeof escape, "\\x%02x", byte);
  out += escape;
}

}  // namespace

std::string escapeControls(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : 0);
    if (byte == '\\') {
      out += "\\\\";
    } else if (byte == '\n') {
      out += "\\n";
    } else if (byte == '\r') {
      out += "\\r";
    } else if (byte == '\t') {
      out += "\\t";
    } else if (byte < 0x20 || byte == 0x7F) {
      appendHex(out, byte);
    } else if (byte == 0xC2 && next >= 0x80 && next <= 0x9F) {
      // U+0080 to U+009F: terminals take some of them as commands (U+009B: CSI).
      appendHex(out, byte);
      appendHex(out, next);
      ++i;
    } else {
      out += static_cast<char>(byte);
    }
  }
  return out;
}

}  // namespace tavrin::tool
