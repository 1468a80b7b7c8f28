#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>

namespace tavrin {

// A growable byte buffer in its own anonymous memory mapping. Address space is
// reserved generously up front, but a page costs memory only once written, so
// a large reservation is free; the kernel is asked for huge pages, which cuts
// the page faults of writing tens of megabytes. Growing remaps without copying.
class MappedBuffer {
 public:
  MappedBuffer() = default;
  // Reserves at least `capacity` bytes. Throws std::bad_alloc when it cannot.
  explicit MappedBuffer(std::size_t capacity);
  MappedBuffer(MappedBuffer&& other) noexcept;
  MappedBuffer& operator=(MappedBuffer&& other) noexcept;
  MappedBuffer(const MappedBuffer&) = delete;
  MappedBuffer& operator=(const MappedBuffer&) = delete;
  ~MappedBuffer();

  char* data() { return _data; }
  const char* data() const { return _data; }
  std::size_t size() const { return _size; }
  std::size_t capacity() const { return _capacity; }
  bool empty() const { return _size == 0; }

  // Makes room for at least `capacity` bytes, keeping the content.
  void reserve(std::size_t capacity);
  // Sets the size; `size` must not exceed the capacity.
  void setSize(std::size_t size) { _size = size; }

  std::string_view view() const { return {_data, _size}; }
  std::span<const std::uint8_t> bytes() const {
    return {reinterpret_cast<const std::uint8_t*>(_data), _size};
  }
  std::string str() const { return std::string(view()); }

 private:
  char* _data = nullptr;
  std::size_t _size = 0;
  std::size_t _capacity = 0;
};

}  // namespace tavrin
