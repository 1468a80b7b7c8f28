#pragma once

#include "codec/Lz4BlockStream.hpp"

namespace tavrin {

// Reads LZ4 in the "bv41"/"bv4-"/"bv4$" framing (see Lz4Framing.hpp). A block
// may refer back into the 64 KiB decoded before it, so streams whose blocks
// are chained decode as well as streams of independent blocks.
class Lz4BlockDecoder final : public Lz4BlockStream {
 private:
  // Decodes the next block of `source` after the history kept in _output.
  bool next(std::span<const std::uint8_t>& source) override;
  // Keeps only the history a following block may refer to.
  void dropOldHistory();
};

}  // namespace tavrin
