#include "codec/Lz4BlockEncoder.hpp"

#include "codec/ByteOrder.hpp"
#include "codec/Lz4Framing.hpp"

#include <lz4.h>

#include <algorithm>

namespace tavrin {

using namespace lz4framing;

bool Lz4BlockEncoder::next(std::span<const std::uint8_t>& source) {
  _output.clear();
  _handedOut = 0;
  if (source.empty()) {
    _output.assign(endOfStream.begin(), endOfStream.end());
    _ended = true;
    return true;
  }
  const auto block = source.first(std::min(source.size(), encoderBlockSize));
  source = source.subspan(block.size());
  const auto blockSize = static_cast<int>(block.size());

  // A compressed block must save more than its longer header, or it is stored raw.
  const int room = blockSize - static_cast<int>(compressedHeaderSize - rawHeaderSize) - 1;
  if (room > 0) {
    _output.resize(compressedHeaderSize + static_cast<std::size_t>(room));
    const int encoded = LZ4_compress_default(
        reinterpret_cast<const char*>(block.data()),
        reinterpret_cast<char*>(_output.data() + compressedHeaderSize), blockSize, room);
    if (encoded > 0) {
      std::copy(compressedBlock.begin(), compressedBlock.end(), _output.begin());
      storeLittleEndian32(_output.data() + 4, static_cast<std::uint32_t>(blockSize));
      storeLittleEndian32(_output.data() + 8, static_cast<std::uint32_t>(encoded));
      _output.resize(compressedHeaderSize + static_cast<std::size_t>(encoded));
      return true;
    }
  }
  _output.assign(rawBlock.begin(), rawBlock.end());
  appendLittleEndian32(_output, static_cast<std::uint32_t>(blockSize));
  _output.insert(_output.end(), block.begin(), block.end());
  return true;
}

}  // namespace tavrin
