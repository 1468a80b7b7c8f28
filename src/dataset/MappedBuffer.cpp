#include "dataset/MappedBuffer.hpp"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <new>
#include <utility>

namespace tavrin {

namespace {

std::size_t roundToPages(std::size_t bytes) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return (std::max<std::size_t>(bytes, 1) + page - 1) / page * page;
}

char* checked(void* mapping) {
  if (mapping == MAP_FAILED) throw std::bad_alloc();
  return static_cast<char*>(mapping);
}

// Huge pages are a hint; the buffer works the same without them.
void adviseHugePages(char* data, std::size_t length) {
  (void)madvise(data, length, MADV_HUGEPAGE);
}

}  // namespace

MappedBuffer::MappedBuffer(std::size_t capacity) : _capacity(roundToPages(capacity)) {
  _data = checked(mmap(nullptr, _capacity, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS,
                       -1, 0));
  adviseHugePages(_data, _capacity);
}

MappedBuffer::MappedBuffer(MappedBuffer&& other) noexcept
    : _data(std::exchange(other._data, nullptr)),
      _size(std::exchange(other._size, 0)),
      _capacity(std::exchange(other._capacity, 0)) {}

MappedBuffer& MappedBuffer::operator=(MappedBuffer&& other) noexcept {
  if (this != &other) {
    MappedBuffer old(std::move(*this));
    _data = std::exchange(other._data, nullptr);
    _size = std::exchange(other._size, 0);
    _capacity = std::exchange(other._capacity, 0);
  }
  return *this;
}

MappedBuffer::~MappedBuffer() {
  if (_data != nullptr) munmap(_data, _capacity);
}

void MappedBuffer::reserve(std::size_t capacity) {
  if (capacity <= _capacity) return;
  const std::size_t grown = roundToPages(std::max(capacity, _capacity * 2));
  if (_data == nullptr) {
    *this = MappedBuffer(grown);
    return;
  }
  _data = checked(mremap(_data, _capacity, grown, MREMAP_MAYMOVE));
  _capacity = grown;
  adviseHugePages(_data, _capacity);
}

}  // namespace tavrin
