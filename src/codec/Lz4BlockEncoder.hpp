#pragma once

#include "codec/CodecStream.hpp"

#include <cstddef>
#include <vector>

namespace tavrin {

// Writes LZ4 in the "bv41"/"bv4-"/"bv4$" framing (see Lz4Framing.hpp). A block
// that LZ4 does not shrink is stored raw.
class Lz4BlockEncoder final : public CodecStream {
 public:
  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) override;

 private:
  // Frames the next block of `source` (or the end marker) into _pending.
  void frameNext(std::span<const std::uint8_t>& source);

  std::vector<std::uint8_t> _pending;  // framed bytes not yet handed out
  std::size_t _handedOut = 0;
  bool _ended = false;
};

}  // namespace tavrin
