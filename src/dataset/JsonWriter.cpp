#include "dataset/JsonWriter.hpp"

#include "codec/Utf8.hpp"
#include "dataset/Tape.hpp"

#include <tavrin/error.hpp>

#include <array>
#include <charconv>
#include <cmath>
#include <cstring>

namespace tavrin {
namespace {

// How each byte of a text is written: copied as it is, escaped, or checked as
// the lead byte of a multi-byte UTF-8 sequence.
enum ByteClass : std::uint8_t { plain = 0, escaped = 1, multiByte = 2 };

constexpr std::array<std::uint8_t, 256> byteClasses = [] {
  std::array<std::uint8_t, 256> classes{};
  for (unsigned byte = 0; byte < 0x20; ++byte) classes[byte] = escaped;
  classes['"'] = escaped;
  classes['\\'] = escaped;
  for (unsigned byte = 0x80; byte < 0x100; ++byte) classes[byte] = multiByte;
  return classes;
}();

class Writer {
 public:
  explicit Writer(std::size_t expectedSize) : _buffer(expectedSize + numberRoom) {
    _out = _buffer.data();
    _end = _out + _buffer.capacity();
    put('[');
  }

  // The document is one list of sections, each {NAME:[VALUES]}.
  void writeSection(const Element& section) {
    reserve(2);
    put('{');
    const std::string& name = section.Name();
    writeString(reinterpret_cast<const std::uint8_t*>(name.data()), name.size());
    put(':');
    const auto values = section.ChildElements().view().bytes();
    writeValues(values.data(), values.data() + values.size());
    reserve(2);
    put('}');
    put(',');
  }

  MappedBuffer finish() {
    closeList(']');
    _buffer.setSize(static_cast<std::size_t>(_out - _buffer.data()));
    return std::move(_buffer);
  }

 private:
  // Numbers need at most 24 characters; one more for the comma.
  static constexpr std::size_t numberRoom = 32;

  void put(char c) { *_out++ = c; }

  void reserve(std::size_t bytes) {
    if (static_cast<std::size_t>(_end - _out) < bytes) grow(bytes);
  }

  void grow(std::size_t bytes) {
    const auto used = static_cast<std::size_t>(_out - _buffer.data());
    _buffer.reserve(used + bytes + numberRoom);
    _out = _buffer.data() + used;
    _end = _buffer.data() + _buffer.capacity();
  }

  // Every value is followed by a comma; the last one is turned into the bracket.
  void closeList(char bracket) {
    reserve(2);
    if (_out[-1] == ',') {
      _out[-1] = bracket;
    } else {
      put(bracket);
    }
  }

  void writeValues(const std::uint8_t* position, const std::uint8_t* end) {
    reserve(1);
    put('[');
    while (position < end) {
      const std::uint8_t tag = *position++;
      reserve(numberRoom);
      switch (tape::kindOf(tag)) {
        case tape::signedInteger: {
          const unsigned size = tape::payloadSize(tag);
          _out = std::to_chars(_out, _end, tape::readSigned(position, size)).ptr;
          position += size;
          break;
        }
        case tape::unsignedInteger: {
          const unsigned size = tape::payloadSize(tag);
          _out = std::to_chars(_out, _end, tape::readUnsigned(position, size)).ptr;
          position += size;
          break;
        }
        case tape::string: {
          const std::size_t length = tape::readLength(position);
          writeString(position, length);
          position += length;
          break;
        }
        case tape::row: {
          const std::size_t length = tape::readLength(position);
          writeValues(position, position + length);
          position += length;
          break;
        }
        default: position = writeScalar(tag, position); break;
      }
      put(',');
    }
    closeList(']');
  }

  const std::uint8_t* writeScalar(std::uint8_t tag, const std::uint8_t* payload) {
    switch (tag) {
      case tape::falseValue: append("false", 5); return payload;
      case tape::trueValue: append("true", 4); return payload;
      case tape::floatingPoint: {
        const double value = tape::readDouble(payload);
        if (!std::isfinite(value)) throw JsonWriteError("number is not finite");
        _out = std::to_chars(_out, _end, value).ptr;
        return payload + sizeof(double);
      }
      default: append("null", 4); return payload;
    }
  }

  void append(const char* text, std::size_t length) {
    std::memcpy(_out, text, length);
    _out += length;
  }

  void writeString(const std::uint8_t* text, std::size_t length) {
    // Worst case: every byte becomes a six-character escape.
    reserve(length * 6 + 3);
    put('"');
    const std::uint8_t* end = text + length;
    while (text < end) {
      // Most text is plain ASCII: copy it eight bytes at a time.
      while (end - text >= 8 && isPlainWord(text)) {
        std::memcpy(_out, text, 8);
        _out += 8;
        text += 8;
      }
      if (text == end) break;
      const std::uint8_t byte = *text;
      if (byteClasses[byte] == plain) {
        put(static_cast<char>(byte));
        ++text;
      } else if (byteClasses[byte] == escaped) {
        writeEscape(byte);
        ++text;
      } else {
        const std::size_t sequence = utf8SequenceLength(text, end);
        if (sequence == 0) throw JsonWriteError("text is not valid UTF-8");
        append(reinterpret_cast<const char*>(text), sequence);
        text += sequence;
      }
    }
    put('"');
  }

  // True when none of the eight bytes is a control character, a quotation
  // mark, a reverse solidus or outside ASCII.
  static bool isPlainWord(const std::uint8_t* text) {
    constexpr std::uint64_t ones = 0x0101010101010101;
    constexpr std::uint64_t highs = 0x8080808080808080;
    std::uint64_t word = 0;
    std::memcpy(&word, text, sizeof word);
    const auto hasZeroByte = [](std::uint64_t v) { return (v - ones) & ~v & highs; };
    const std::uint64_t control = (word - ones * 0x20) & ~word & highs;
    const std::uint64_t special = control | hasZeroByte(word ^ (ones * '"')) |
                                  hasZeroByte(word ^ (ones * '\\')) | (word & highs);
    return special == 0;
  }

  void writeEscape(std::uint8_t byte) {
    static constexpr char hex[] = "0123456789abcdef";
    put('\\');
    switch (byte) {
      case '"': put('"'); return;
      case '\\': put('\\'); return;
      case '\b': put('b'); return;
      case '\f': put('f'); return;
      case '\n': put('n'); return;
      case '\r': put('r'); return;
      case '\t': put('t'); return;
      default:
        append("u00", 3);
        put(hex[byte >> 4]);
        put(hex[byte & 0x0F]);
    }
  }

  MappedBuffer _buffer;
  char* _out = nullptr;
  char* _end = nullptr;
};

// Values take more room as JSON text than in their encoded form. Reserving
// twice as much costs only address space: pages are paid for when written.
std::size_t expectedSize(const DatasetDocument& document) {
  std::size_t encoded = 0;
  for (const Element& section : document) {
    encoded += section.ChildElements().view().bytes().size() + section.Name().size() + 8;
  }
  return encoded * 2;
}

}  // namespace

MappedBuffer writeJson(const DatasetDocument& document) {
  Writer writer(expectedSize(document));
  for (const Element& section : document) writer.writeSection(section);
  return writer.finish();
}

MappedBuffer writeJson(DatasetDocument&& document) {
  Writer writer(expectedSize(document));
  for (Element& section : document) {
    writer.writeSection(section);
    Element written = std::move(section);  // its values are freed here
  }
  return writer.finish();
}

}  // namespace tavrin
