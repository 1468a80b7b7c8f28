#include "codec/Lz4BlockDecoder.hpp"

#include "codec/ByteOrder.hpp"
#include "codec/Lz4Framing.hpp"

#include <lz4.h>

#include <algorithm>

namespace tavrin {

using namespace lz4framing;

bool Lz4BlockDecoder::next(std::span<const std::uint8_t>& source) {
  // Every size is checked against the bytes actually present before anything
  // is reserved; the end of `source` is the end of the stream.
  if (source.size() < endOfStream.size()) return false;
  Magic magic;
  std::copy_n(source.begin(), magic.size(), magic.begin());
  if (magic == endOfStream) {
    source = source.subspan(endOfStream.size());
    _ended = true;
    return true;
  }
  dropOldHistory();
  const std::size_t history = _output.size();

  if (magic == rawBlock) {
    if (source.size() < rawHeaderSize) return false;
    const std::size_t size = loadLittleEndian32(source.data() + 4);
    if (size > decoderBlockLimit || size > source.size() - rawHeaderSize) return false;
    const auto bytes = source.subspan(rawHeaderSize, size);
    _output.insert(_output.end(), bytes.begin(), bytes.end());
    source = source.subspan(rawHeaderSize + size);
    return true;
  }

  if (magic != compressedBlock || source.size() < compressedHeaderSize) return false;
  const std::size_t decodedSize = loadLittleEndian32(source.data() + 4);
  const std::size_t encodedSize = loadLittleEndian32(source.data() + 8);
  const auto largestEncoding =
      static_cast<std::size_t>(LZ4_compressBound(static_cast<int>(decoderBlockLimit)));
  if (decodedSize > decoderBlockLimit || encodedSize > largestEncoding ||
      encodedSize > source.size() - compressedHeaderSize) {
    return false;
  }
  _output.resize(history + decodedSize);
  const int written = LZ4_decompress_safe_usingDict(
      reinterpret_cast<const char*>(source.data() + compressedHeaderSize),
      reinterpret_cast<char*>(_output.data() + history), static_cast<int>(encodedSize),
      static_cast<int>(decodedSize), reinterpret_cast<const char*>(_output.data()),
      static_cast<int>(history));
  if (written < 0 || static_cast<std::size_t>(written) != decodedSize) return false;
  source = source.subspan(compressedHeaderSize + encodedSize);
  return true;
}

void Lz4BlockDecoder::dropOldHistory() {
  if (_output.size() > historySize) {
    _output.erase(_output.begin(), _output.end() - static_cast<std::ptrdiff_t>(historySize));
  }
  _handedOut = _output.size();
}

}  // namespace tavrin
