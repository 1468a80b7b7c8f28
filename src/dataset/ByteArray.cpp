#include "dataset/ByteArray.hpp"

#include "os/PageMemory.hpp"

#include <algorithm>
#include <memory>

namespace tavrin {

void ByteArray::grow(std::size_t needed) {
  const std::size_t capacity = std::max({needed, 2 * _capacity, std::size_t{64}});
  if (capacity < pageBlockBytes) {
    auto larger = std::make_unique_for_overwrite<std::uint8_t[]>(capacity);
    if (_size > 0) std::memcpy(larger.get(), _data, _size);
    release();
    _data = larger.release();
    _capacity = capacity;
    return;
  }
  os::PageBlock block;
  if (onPages()) {
    block = os::growPages({reinterpret_cast<char*>(_data), _capacity}, capacity);
  } else {
    block = os::reservePages(capacity);
    if (_size > 0) std::memcpy(block.data, _data, _size);
    release();
  }
  _data = reinterpret_cast<std::uint8_t*>(block.data);
  _capacity = block.size;
}

void ByteArray::shrinkToFit() {
  if (onPages() || _size == _capacity) return;
  if (_size == 0) {
    release();
    _data = nullptr;
    _capacity = 0;
    return;
  }
  auto exact = std::make_unique_for_overwrite<std::uint8_t[]>(_size);
  std::memcpy(exact.get(), _data, _size);
  release();
  _data = exact.release();
  _capacity = _size;
}

void ByteArray::release() noexcept {
  if (onPages()) {
    os::releasePages({reinterpret_cast<char*>(_data), _capacity});
  } else {
    delete[] _data;
  }
}

}  // namespace tavrin
