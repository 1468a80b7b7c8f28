#include "platform/profile/printableExcerpt.hpp"

#include <unicode/utf8.h>

#include <cstdint>
#include <cstdio>

namespace tavrin::platform {

std::string printableExcerpt(std::string_view text, std::size_t limit) {
  std::string out;
  const auto append = [&](std::string_view piece) {
    if (out.size() + piece.size() > limit) return false;
    out += piece;
    return true;
  };
  char escape[16];
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  // Every byte read gives at least one byte out: the rest cannot fit. (Written
  // so that a limit of SIZE_MAX, "no limit", does not wrap to zero.)
  const auto length = static_cast<std::int32_t>(text.size() > limit ? limit + 1 : text.size());
  for (std::int32_t at = 0; at < length;) {
    const std::int32_t start = at;
    UChar32 code = 0;
    U8_NEXT(bytes, at, length, code);
    bool fits = true;
    if (code < 0) {
      // Not UTF-8: each byte of the ill-formed sequence as \xXX.
      for (auto i = static_cast<std::size_t>(start); fits && i < static_cast<std::size_t>(at);
           ++i) {
        std::snprintf(escape, sizeof escape, "\\x%02X", static_cast<unsigned>(bytes[i]));
        fits = append(escape);
      }
    } else if (code < 0x20 || (code >= 0x7F && code < 0xA0)) {
      // C0 and C1 controls, and DEL: a terminal would act on them.
      std::snprintf(escape, sizeof escape, "\\u%04X", static_cast<unsigned>(code));
      fits = append(escape);
    } else {
      fits = append(
          text.substr(static_cast<std::size_t>(start), static_cast<std::size_t>(at - start)));
    }
    if (!fits) return out + "…";
  }
  return out;
}

}  // namespace tavrin::platform
