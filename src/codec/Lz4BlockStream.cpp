#include "codec/Lz4BlockStream.hpp"

namespace tavrin {

StreamStatus Lz4BlockStream::process(std::span<const std::uint8_t>& source,
                                     std::span<std::uint8_t>& destination) {
  for (;;) {
    _handedOut += copyOut(std::span(_output).subspan(_handedOut), destination);
    if (_handedOut < _output.size()) return StreamStatus::ok;
    if (_ended) return StreamStatus::end;
    if (destination.empty()) return StreamStatus::ok;
    if (!next(source)) return StreamStatus::error;
  }
}

}  // namespace tavrin
