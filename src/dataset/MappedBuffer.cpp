#include "dataset/MappedBuffer.hpp"

#include <algorithm>
#include <utility>

namespace tavrin {

MappedBuffer::MappedBuffer(MappedBuffer&& other) noexcept
    : _block(std::exchange(other._block, {})), _size(std::exchange(other._size, 0)) {}

MappedBuffer& MappedBuffer::operator=(MappedBuffer&& other) noexcept {
  if (this != &other) {
    os::releasePages(std::exchange(_block, std::exchange(other._block, {})));
    _size = std::exchange(other._size, 0);
  }
  return *this;
}

void MappedBuffer::reserve(std::size_t capacity) {
  if (capacity <= _block.size) return;
  const std::size_t grown = std::max(capacity, _block.size * 2);
  _block = _block.data == nullptr ? os::reservePages(grown) : os::growPages(_block, grown);
}

}  // namespace tavrin
