#include "platform/linux/VendorIdentifier.hpp"

#include "platform/linux/readTextFile.hpp"

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <algorithm>
#include <string>

namespace tavrin::platform {

namespace {

// Changing this text changes every identifier ever handed out.
constexpr std::string_view context = "tavrin vendor identifier v1";

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

std::optional<Uuid> machineIdBytes(std::string_view text) {
  const auto line = firstLine(text);
  Uuid bytes{};
  if (line.size() != 2 * bytes.size()) return std::nullopt;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const int high = hexDigit(line[2 * i]);
    const int low = hexDigit(line[2 * i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes[i] = static_cast<std::uint8_t>(high << 4 | low);
  }
  if (std::all_of(bytes.begin(), bytes.end(), [](std::uint8_t b) { return b == 0; })) {
    return std::nullopt;
  }
  return bytes;
}

}  // namespace

std::optional<Uuid> VendorIdentifier::derive(std::string_view machineIdText,
                                             std::string_view applicationIdentifier) {
  const auto key = machineIdBytes(machineIdText);
  if (!key) return std::nullopt;

  // The NUL keeps "context" + "x" apart from any context ending in "x".
  std::string message(context);
  message += '\0';
  message += applicationIdentifier;

  std::uint8_t digest[EVP_MAX_MD_SIZE];
  unsigned int digestLength = 0;
  if (HMAC(EVP_sha256(), key->data(), static_cast<int>(key->size()),
           reinterpret_cast<const unsigned char*>(message.data()), message.size(), digest,
           &digestLength) == nullptr ||
      digestLength < 16) {
    return std::nullopt;
  }

  Uuid uuid{};
  std::copy_n(digest, uuid.size(), uuid.begin());
  uuid[6] = static_cast<std::uint8_t>((uuid[6] & 0x0F) | 0x40);  // version 4
  uuid[8] = static_cast<std::uint8_t>((uuid[8] & 0x3F) | 0x80);  // RFC 4122 variant
  return uuid;
}

}  // namespace tavrin::platform
