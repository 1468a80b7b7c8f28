#include "platform/linux/readTextFile.hpp"

#include <fstream>

namespace tavrin::platform {

std::optional<std::string> readTextFile(const std::string& path, std::size_t limit) {
  std::ifstream in(path, std::ios::binary);
  if (!in) return std::nullopt;
  std::string text(limit, '\0');
  in.read(text.data(), static_cast<std::streamsize>(limit));
  // A short read sets failbit; badbit means the read itself failed (a directory, an I/O error).
  if (in.bad()) return std::nullopt;
  text.resize(static_cast<std::size_t>(in.gcount()));
  return text;
}

std::string_view firstLine(std::string_view text) {
  text = text.substr(0, text.find('\n'));
  constexpr std::string_view blank(" \t\r\0", 4);
  const auto first = text.find_first_not_of(blank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

}  // namespace tavrin::platform
