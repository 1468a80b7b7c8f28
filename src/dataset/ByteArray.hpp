#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <utility>

namespace tavrin {

// A growable array of bytes: the storage of encoded values. Up to 256 KiB it
// lives on the heap, as one record's row does. A larger section's storage
// moves to a block of pages of its own (os/PageMemory), which grows in place
// where the system allows, without a copy, and goes back to the system the
// moment it is freed, where the heap would keep it.
class ByteArray {
 public:
  ByteArray() = default;
  ByteArray(const ByteArray& other) { append(other._data, other._size); }
  ByteArray(ByteArray&& other) noexcept
      : _data(std::exchange(other._data, nullptr)),
        _size(std::exchange(other._size, 0)),
        _capacity(std::exchange(other._capacity, 0)) {}
  ByteArray& operator=(ByteArray other) noexcept {
    std::swap(_data, other._data);
    std::swap(_size, other._size);
    std::swap(_capacity, other._capacity);
    return *this;
  }
  ~ByteArray() { release(); }

  const std::uint8_t* data() const { return _data; }
  std::size_t size() const { return _size; }
  std::size_t capacity() const { return _capacity; }

  void pushBack(std::uint8_t byte) {
    if (_size == _capacity) grow(_size + 1);
    _data[_size++] = byte;
  }
  void append(const void* bytes, std::size_t count) {
    if (count == 0) return;
    if (count > _capacity - _size) grow(_size + count);
    std::memcpy(_data + _size, bytes, count);
    _size += count;
  }
  // Forgets the bytes but keeps the storage.
  void clear() { _size = 0; }
  // Gives back heap storage beyond the bytes. A block of pages stays as it is:
  // the pages past the bytes were never written, so they cost nothing.
  void shrinkToFit();

 private:
  static constexpr std::size_t pageBlockBytes = std::size_t{256} << 10;

  bool onPages() const { return _capacity >= pageBlockBytes; }
  void grow(std::size_t needed);
  void release() noexcept;

  std::uint8_t* _data = nullptr;
  std::size_t _size = 0;
  std::size_t _capacity = 0;
};

}  // namespace tavrin
