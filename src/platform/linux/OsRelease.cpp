#include "platform/linux/OsRelease.hpp"

#include "platform/linux/readTextFile.hpp"

namespace tavrin::platform {

namespace {

bool isKey(std::string_view key) {
  if (key.empty()) return false;
  for (const char c : key) {
    const bool allowed =
        (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
    if (!allowed) return false;
  }
  return true;
}

// Undoes the shell quoting the format allows: double quotes with backslash
// escapes, single quotes taken literally, or a bare word with backslash
// escapes. Absent when a quote is left open.
std::optional<std::string> unquote(std::string_view raw) {
  std::string value;
  char quote = 0;
  for (std::size_t i = 0; i < raw.size(); ++i) {
    const char c = raw[i];
    if (quote == '\'') {
      if (c == '\'')
        quote = 0;
      else
        value += c;
    } else if (c == '\\' && i + 1 < raw.size()) {
      value += raw[++i];
    } else if (quote == '"' && c == '"') {
      quote = 0;
    } else if (quote == 0 && (c == '"' || c == '\'')) {
      quote = c;
    } else {
      value += c;
    }
  }
  if (quote != 0) return std::nullopt;
  return value;
}

std::string_view trim(std::string_view text) {
  constexpr std::string_view blank = " \t\r";
  const auto first = text.find_first_not_of(blank);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(blank) - first + 1);
}

}  // namespace

std::optional<OsRelease> OsRelease::read(const std::string& path) {
  const auto text = readTextFile(path);
  if (!text) return std::nullopt;
  return parse(*text);
}

OsRelease OsRelease::parse(std::string_view text) {
  OsRelease release;
  while (!text.empty()) {
    const auto end = text.find('\n');
    const auto line = trim(text.substr(0, end));
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    if (line.empty() || line.front() == '#') continue;
    const auto equals = line.find('=');
    if (equals == std::string_view::npos || !isKey(line.substr(0, equals))) continue;
    if (auto value = unquote(line.substr(equals + 1))) {
      release._values.insert_or_assign(std::string(line.substr(0, equals)), std::move(*value));
    }
  }
  return release;
}

std::optional<std::string> OsRelease::value(const std::string& key) const {
  const auto found = _values.find(key);
  if (found == _values.end()) return std::nullopt;
  return found->second;
}

}  // namespace tavrin::platform
