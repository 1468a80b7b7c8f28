#pragma once

#include "codec/Lz4BlockStream.hpp"

namespace tavrin {

// Writes LZ4 in the "bv41"/"bv4-"/"bv4$" framing (see Lz4Framing.hpp). A block
// that LZ4 does not shrink is stored raw.
class Lz4BlockEncoder final : public Lz4BlockStream {
 private:
  // Frames the next block of `source`, or the end marker once it is empty.
  bool next(std::span<const std::uint8_t>& source) override;
};

}  // namespace tavrin
