#include "codec/Lz4BlockEncoder.hpp"

#include "codec/ByteOrder.hpp"
#include "codec/Lz4Framing.hpp"

#include <lz4.h>

#include <algorithm>

namespace tavrin {

using namespace lz4framing;

StreamStatus Lz4BlockEncoder::process(std::span<const std::uint8_t>& source,
                                      std::span<std::uint8_t>& destination) {
  for (;;) {
    _handedOut += copyOut(std::span(_pending).subspan(_handedOut), destination);
    if (_handedOut < _pending.size()) return StreamStatus::ok;
    if (_ended) return StreamStatus::end;
    if (destination.empty()) return StreamStatus::ok;
    frameNext(source);
  }
}

void Lz4BlockEncoder::frameNext(std::span<const std::uint8_t>& source) {
  _pending.clear();
  _handedOut = 0;
  if (source.empty()) {
    _pending.assign(endOfStream.begin(), endOfStream.end());
    _ended = true;
    return;
  }
  const auto block = source.first(std::min(source.size(), encoderBlockSize));
  source = source.subspan(block.size());
  const auto blockSize = static_cast<int>(block.size());

  // A compressed block must save more than its longer header, or it is stored raw.
  const int room = blockSize - static_cast<int>(compressedHeaderSize - rawHeaderSize) - 1;
  if (room > 0) {
    _pending.resize(compressedHeaderSize + static_cast<std::size_t>(room));
    const int encoded = LZ4_compress_default(
        reinterpret_cast<const char*>(block.data()),
        reinterpret_cast<char*>(_pending.data() + compressedHeaderSize), blockSize, room);
    if (encoded > 0) {
      std::copy(compressedBlock.begin(), compressedBlock.end(), _pending.begin());
      storeLittleEndian32(_pending.data() + 4, static_cast<std::uint32_t>(blockSize));
      storeLittleEndian32(_pending.data() + 8, static_cast<std::uint32_t>(encoded));
      _pending.resize(compressedHeaderSize + static_cast<std::size_t>(encoded));
      return;
    }
  }
  _pending.assign(rawBlock.begin(), rawBlock.end());
  appendLittleEndian32(_pending, static_cast<std::uint32_t>(blockSize));
  _pending.insert(_pending.end(), block.begin(), block.end());
}

}  // namespace tavrin
