#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tavrin::platform {

// `text` made safe to print on a terminal or in a log line: valid UTF-8 is
// kept, control characters become \u00XX and bytes that are not UTF-8 \xXX.
// Beyond `limit` bytes of the result, it is cut at a character and ends
// in "…".
std::string printableExcerpt(std::string_view text, std::size_t limit);

}  // namespace tavrin::platform
