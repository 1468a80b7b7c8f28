#include "JsonText.hpp"

#include <charconv>
#include <cmath>
#include <stdexcept>

namespace tavrin::tool {

namespace {

constexpr std::size_t flushThreshold = 1 << 20;

template <typename Number>
void appendNumber(std::string& buffer, Number value) {
  char digits[64];
  const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
  buffer.append(digits, end);
}

}  // namespace

void JsonText::item() {
  if (_afterKey) {
    _afterKey = false;
    return;
  }
  if (_needComma) _buffer += ',';
  if (_depth > 0 && _depth <= 2) _buffer += '\n';
  _needComma = true;
}

void JsonText::open(char bracket) {
  item();
  _buffer += bracket;
  ++_depth;
  _needComma = false;
}

void JsonText::close(char bracket) {
  if (_depth <= 2 && _needComma) _buffer += '\n';
  --_depth;
  _buffer += bracket;
  _needComma = true;
  if (_depth == 0) _buffer += '\n';
  if (_buffer.size() >= flushThreshold) flush();
}

void JsonText::key(std::string_view name) {
  item();
  quoted(name);
  _buffer += ':';
  _afterKey = true;
}

void JsonText::string(std::string_view text) {
  item();
  quoted(text);
}

void JsonText::quoted(std::string_view text) {
  static constexpr char hex[] = "0123456789abcdef";
  _buffer += '"';
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    switch (c) {
      case '"': _buffer += "\\\""; break;
      case '\\': _buffer += "\\\\"; break;
      case '\n': _buffer += "\\n"; break;
      case '\t': _buffer += "\\t"; break;
      case '\r': _buffer += "\\r"; break;
      default:
        if (byte < 0x20) {
          _buffer += "\\u00";
          _buffer += hex[byte >> 4];
          _buffer += hex[byte & 15];
        } else {
          _buffer += c;
        }
    }
  }
  _buffer += '"';
}

void JsonText::boolean(bool value) {
  item();
  _buffer += value ? "true" : "false";
}

void JsonText::null() {
  item();
  _buffer += "null";
}

void JsonText::number(std::int64_t value) {
  item();
  appendNumber(_buffer, value);
}

void JsonText::number(std::uint64_t value) {
  item();
  appendNumber(_buffer, value);
}

void JsonText::number(double value) {
  if (!std::isfinite(value))
    throw std::invalid_argument("JSON has no text for a non-finite number");
  item();
  appendNumber(_buffer, value);
}

void JsonText::number(float value) {
  if (!std::isfinite(value))
    throw std::invalid_argument("JSON has no text for a non-finite number");
  item();
  appendNumber(_buffer, value);
}

void JsonText::flush() {
  _out.write(_buffer.data(), static_cast<std::streamsize>(_buffer.size()));
  _buffer.clear();
}

}  // namespace tavrin::tool
