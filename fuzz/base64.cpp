#include "FuzzSupport.hpp"

#include <string>
#include <string_view>

using tavrin::fuzz::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  // Any text the decoder accepts is exactly the encoding of what it decodes to.
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  if (const auto decoded = tavrin::base64Decode(text)) {
    require(tavrin::base64Encode(*decoded) == text);
  }
  // Any bytes encode to text that decodes back to them.
  const tavrin::fuzz::Bytes bytes(data, data + size);
  const std::string encoded = tavrin::base64Encode(bytes);
  require(encoded.size() == (size + 2) / 3 * 4);
  require(tavrin::base64Decode(encoded) == bytes);
  return 0;
}
