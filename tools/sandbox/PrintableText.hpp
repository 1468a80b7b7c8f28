#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavrin::sandbox {

// Text from a client made safe to log or print on one line: valid UTF-8 is kept,
// control characters and bytes that are not UTF-8 become escapes (\n, \r, \t,
// \xHH), and text longer than `limit` bytes is cut at a character boundary and
// marked with "...". The result is always valid UTF-8 without control characters.
std::string printable(std::string_view text, std::size_t limit = std::string_view::npos);

}  // namespace tavrin::sandbox
