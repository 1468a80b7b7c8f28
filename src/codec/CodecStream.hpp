#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace tavrin {

enum class CodecOperation { encode, decode };

// What one call of CodecStream::process achieved.
enum class StreamStatus {
  ok,     // progress made; more output follows once there is room for it
  end,    // the stream is complete: every byte of output has been given
  error,  // the input is not a valid stream, or the library failed
};

// One encoder or decoder behind the compression driver. The driver hands over
// the whole input at once and then only fresh output space, so a stream may
// treat the end of `source` as the end of the input.
class CodecStream {
 public:
  CodecStream() = default;
  CodecStream(const CodecStream&) = delete;
  CodecStream& operator=(const CodecStream&) = delete;
  virtual ~CodecStream() = default;

  // Codes from `source` into `destination`, narrowing both past the bytes it
  // consumed and produced. Returning `ok` while room is left in `destination`
  // means the input ran out before the stream ended.
  virtual StreamStatus process(std::span<const std::uint8_t>& source,
                               std::span<std::uint8_t>& destination) = 0;
};

// Copies as much of `pending` as `destination` has room for, narrows
// `destination` past it and returns the number of bytes copied.
inline std::size_t copyOut(std::span<const std::uint8_t> pending,
                           std::span<std::uint8_t>& destination) {
  const std::size_t count = std::min(pending.size(), destination.size());
  std::copy_n(pending.begin(), count, destination.begin());
  destination = destination.subspan(count);
  return count;
}

}  // namespace tavrin
