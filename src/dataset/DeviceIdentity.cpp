#include "dataset/DeviceIdentity.hpp"

namespace tavrin {

std::string modelIdentifier(platform::DeviceInfo& device) {
  std::string identifier;
  for (const std::uint8_t byte : device.machine()) {
    if (byte == 0) continue;
    // Each byte stands for the character with that code. The identifiers are
    // ASCII; a byte above 0x7F is written as its Latin-1 character so that the
    // text stays valid UTF-8 and can always be serialized.
    if (byte < 0x80) {
      identifier.push_back(static_cast<char>(byte));
    } else {
      identifier.push_back(static_cast<char>(0xC0 | (byte >> 6)));
      identifier.push_back(static_cast<char>(0x80 | (byte & 0x3F)));
    }
  }
  return identifier;
}

std::string uuidString(const platform::Uuid& uuid) {
  static constexpr char hex[] = "0123456789ABCDEF";
  std::string text;
  text.reserve(36);
  for (std::size_t i = 0; i < uuid.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
    text.push_back(hex[uuid[i] >> 4]);
    text.push_back(hex[uuid[i] & 0x0F]);
  }
  return text;
}

}  // namespace tavrin
