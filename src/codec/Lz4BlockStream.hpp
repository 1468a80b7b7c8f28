#pragma once

#include "codec/CodecStream.hpp"

#include <cstddef>
#include <vector>

namespace tavrin {

// What the LZ4 encoder and decoder share: each turns its input into output one
// block at a time, and hands a block's output out as the destination has room.
class Lz4BlockStream : public CodecStream {
 public:
  StreamStatus process(std::span<const std::uint8_t>& source,
                       std::span<std::uint8_t>& destination) final;

 protected:
  // Consumes the next block of `source` and puts what it yields at the end of
  // _output, from _handedOut on; at the end of the stream also sets _ended.
  // False if the input is malformed.
  virtual bool next(std::span<const std::uint8_t>& source) = 0;

  std::vector<std::uint8_t> _output;  // bytes before _handedOut are already handed out
  std::size_t _handedOut = 0;
  bool _ended = false;
};

}  // namespace tavrin
