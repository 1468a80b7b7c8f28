#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace tavrin::platform {

// The start of a small system file (at most `limit` bytes), or absent when it
// cannot be opened or read. Files under /proc and /sys report no size, so the
// file is read rather than sized.
std::optional<std::string> readTextFile(const std::string& path,
                                        std::size_t limit = std::size_t{64} * 1024);

// The first line of `text` without surrounding spaces, tabs, carriage returns
// and NUL bytes (device-tree strings end in one).
std::string_view firstLine(std::string_view text);

}  // namespace tavrin::platform
