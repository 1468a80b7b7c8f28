#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "dataset/ByteArray.hpp"
#include "dataset/Tape.hpp"

namespace tavrin {

class RowView;

// One value of a dataset row, as read back: null, boolean, signed or unsigned
// 64-bit integer, double, text or a nested row.
using Value = std::variant<std::nullptr_t, bool, std::int64_t, std::uint64_t, double,
                           std::string_view, RowView>;

// A read-only view of encoded values; iterating it decodes one value at a time.
class RowView {
 public:
  class Iterator {
   public:
    using iterator_category = std::input_iterator_tag;
    using value_type = Value;
    using difference_type = std::ptrdiff_t;
    using pointer = void;
    using reference = Value;
    Iterator() = default;
    explicit Iterator(const std::uint8_t* position) : _position(position) {}
    Value operator*() const;
    Iterator& operator++();
    Iterator operator++(int) {
      Iterator previous = *this;
      ++*this;
      return previous;
    }
    bool operator==(const Iterator& other) const { return _position == other._position; }

   private:
    const std::uint8_t* _position = nullptr;
  };

  RowView() = default;
  explicit RowView(std::span<const std::uint8_t> bytes) : _bytes(bytes) {}

  Iterator begin() const { return Iterator(_bytes.data()); }
  Iterator end() const { return Iterator(_bytes.data() + _bytes.size()); }
  // The number of values; counts by walking the encoding.
  std::size_t size() const;
  bool empty() const { return _bytes.empty(); }
  // The values decoded into a list, for tests and inspection.
  std::vector<Value> values() const;
  std::span<const std::uint8_t> bytes() const { return _bytes; }

 private:
  std::span<const std::uint8_t> _bytes;
};

bool operator==(const RowView& left, const RowView& right);

// An ordered list of values that only grows. Sources build one per record and
// append it to their element; appending copies the encoded bytes.
class Row {
 public:
  Row() = default;

  void append(std::nullptr_t) { push(tape::null); }
  void append(bool value) { push(value ? tape::trueValue : tape::falseValue); }
  template <std::signed_integral T>
  void append(T value) {
    appendSigned(static_cast<std::int64_t>(value));
  }
  template <std::unsigned_integral T>
  requires(!std::same_as<T, bool>) void append(T value) {
    appendUnsigned(static_cast<std::uint64_t>(value));
  }
  // A 32-bit float is widened to 64 bits.
  template <std::floating_point T>
  void append(T value) {
    appendDouble(static_cast<double>(value));
  }
  void append(std::string_view text);
  void append(const char* text) { append(std::string_view(text)); }
  void append(const std::string& text) { append(std::string_view(text)); }
  void append(const Row& row);
  // An absent value keeps its place as null.
  template <typename T>
  void append(const std::optional<T>& value) {
    if (value) {
      append(*value);
    } else {
      append(nullptr);
    }
  }

  std::size_t size() const { return _count; }
  bool empty() const { return _count == 0; }
  // Forgets the values but keeps the storage, for building the next row.
  void clear() {
    _bytes.clear();
    _count = 0;
  }
  // Gives back storage beyond what the values use.
  void shrinkToFit() { _bytes.shrinkToFit(); }
  // Bytes held in memory, for measuring the cost of a dataset.
  std::size_t capacityBytes() const { return _bytes.capacity(); }

  RowView view() const { return RowView({_bytes.data(), _bytes.size()}); }
  std::vector<Value> values() const { return view().values(); }

 private:
  void push(std::uint8_t tag) {
    _bytes.pushBack(tag);
    ++_count;
  }
  void appendSigned(std::int64_t value);
  void appendUnsigned(std::uint64_t value);
  void appendDouble(double value);
  void appendLength(std::size_t length);
  void appendBytes(const void* data, std::size_t length);

  ByteArray _bytes;
  std::size_t _count = 0;
};

}  // namespace tavrin
