#include "RandomHex.hpp"

#include <openssl/rand.h>

#include <stdexcept>
#include <vector>

namespace tavrin::sandbox {

std::string randomHex(std::size_t count) {
  std::vector<unsigned char> random(count);
  if (RAND_bytes(random.data(), static_cast<int>(count)) != 1) {
    throw std::runtime_error("no random bytes");
  }
  static constexpr char hex[] = "0123456789abcdef";
  std::string text;
  text.reserve(2 * count);
  for (const unsigned char byte : random) {
    text += hex[byte >> 4];
    text += hex[byte & 0xF];
  }
  return text;
}

}  // namespace tavrin::sandbox
