#include "dataset/Row.hpp"

#include <algorithm>
#include <bit>

namespace tavrin {

static_assert(std::endian::native == std::endian::little,
              "the value encoding stores payloads in host order");

void Row::appendBytes(const void* data, std::size_t length) { _bytes.append(data, length); }

void Row::appendLength(std::size_t length) {
  while (length >= 0x80) {
    _bytes.pushBack(static_cast<std::uint8_t>(length | 0x80));
    length >>= 7;
  }
  _bytes.pushBack(static_cast<std::uint8_t>(length));
}

void Row::appendSigned(std::int64_t value) {
  // The fewest bytes whose sign extension gives the value back.
  unsigned size = 0;
  if (value != 0) {
    const auto magnitude = static_cast<std::uint64_t>(value < 0 ? ~value : value);
    size = static_cast<unsigned>((std::bit_width(magnitude) + 8) / 8);
  }
  push(static_cast<std::uint8_t>(tape::signedInteger | size));
  appendBytes(&value, size);
}

void Row::appendUnsigned(std::uint64_t value) {
  const auto size = static_cast<unsigned>((std::bit_width(value) + 7) / 8);
  push(static_cast<std::uint8_t>(tape::unsignedInteger | size));
  appendBytes(&value, size);
}

void Row::appendDouble(double value) {
  push(tape::floatingPoint);
  appendBytes(&value, sizeof value);
}

void Row::append(std::string_view text) {
  push(tape::string);
  appendLength(text.size());
  appendBytes(text.data(), text.size());
}

void Row::append(const Row& row) {
  push(tape::row);
  appendLength(row._bytes.size());
  appendBytes(row._bytes.data(), row._bytes.size());
}

Value RowView::Iterator::operator*() const {
  const std::uint8_t tag = *_position;
  const std::uint8_t* payload = _position + 1;
  switch (tape::kindOf(tag)) {
    case tape::signedInteger: return tape::readSigned(payload, tape::payloadSize(tag));
    case tape::unsignedInteger: return tape::readUnsigned(payload, tape::payloadSize(tag));
    case tape::string: {
      const std::size_t length = tape::readLength(payload);
      return std::string_view(reinterpret_cast<const char*>(payload), length);
    }
    case tape::row: {
      const std::size_t length = tape::readLength(payload);
      return RowView({payload, length});
    }
    default: break;
  }
  switch (tag) {
    case tape::falseValue: return false;
    case tape::trueValue: return true;
    case tape::floatingPoint: return tape::readDouble(payload);
    default: return nullptr;
  }
}

RowView::Iterator& RowView::Iterator::operator++() {
  const std::uint8_t tag = *_position++;
  switch (tape::kindOf(tag)) {
    case tape::signedInteger:
    case tape::unsignedInteger: _position += tape::payloadSize(tag); break;
    case tape::string:
    case tape::row: {
      const std::size_t length = tape::readLength(_position);
      _position += length;
      break;
    }
    default:
      if (tag == tape::floatingPoint) _position += sizeof(double);
      break;
  }
  return *this;
}

std::size_t RowView::size() const {
  std::size_t count = 0;
  for (auto it = begin(); it != end(); ++it) ++count;
  return count;
}

std::vector<Value> RowView::values() const { return {begin(), end()}; }

bool operator==(const RowView& left, const RowView& right) {
  const auto a = left.bytes();
  const auto b = right.bytes();
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin());
}

}  // namespace tavrin
