#pragma once

#include "os/PageMemory.hpp"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

// A growable byte buffer in a block of pages of its own (os/PageMemory):
// tens of megabytes of JSON are written into it without the copies and page
// faults of a growing string.
class MappedBuffer {
 public:
  MappedBuffer() = default;
  // Reserves at least `capacity` bytes. Throws std::bad_alloc when it cannot.
  explicit MappedBuffer(std::size_t capacity) : _block(os::reservePages(capacity)) {}
  MappedBuffer(MappedBuffer&& other) noexcept;
  MappedBuffer& operator=(MappedBuffer&& other) noexcept;
  MappedBuffer(const MappedBuffer&) = delete;
  MappedBuffer& operator=(const MappedBuffer&) = delete;
  ~MappedBuffer() { os::releasePages(_block); }

  char* data() { return _block.data; }
  const char* data() const { return _block.data; }
  std::size_t size() const { return _size; }
  std::size_t capacity() const { return _block.size; }
  bool empty() const { return _size == 0; }

  // Makes room for at least `capacity` bytes, keeping the content. Grows at
  // least twofold, so that appending stays linear.
  void reserve(std::size_t capacity);
  // Sets the size; `size` must not exceed the capacity.
  void setSize(std::size_t size) { _size = size; }

  std::string_view view() const { return {_block.data, _size}; }
  std::span<const std::uint8_t> bytes() const {
    return {reinterpret_cast<const std::uint8_t*>(_block.data), _size};
  }
  std::string str() const { return std::string(view()); }

 private:
  os::PageBlock _block;
  std::size_t _size = 0;
};

}  // namespace tavrin
