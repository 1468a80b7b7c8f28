#pragma once

#include "codec/CodecStream.hpp"

#include <cstddef>
#include <vector>

namespace tavrin {

// Reads LZ4 in the "bv41"/"bv4-"/"bv4$" framing (see Lz4Framing.hpp). A block
// may refer back into the 64 KiB decoded before it, so streams whose blocks
// are chained decode as well as streams of independent blocks.
class Lz4BlockDecoder final : public CodecStream {
 public:
  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) override;

 private:
  // Decodes the next block of `source` onto _window; false if it is malformed.
  bool decodeNext(std::span<const std::uint8_t>& source);
  // Keeps only the history a following block may refer to, to make room.
  void dropOldHistory();

  std::vector<std::uint8_t> _window;  // recent history, then the block being handed out
  std::size_t _handedOut = 0;         // offset in _window of the first byte not handed out
  bool _ended = false;
};

}  // namespace tavrin
