#pragma once

#include <string>
#include <string_view>

namespace tavrin::tool {

// Text that came from a server, made safe to print on a terminal: control
// characters (C0, DEL and the C1 range in UTF-8) become escapes such as "\n"
// or "\x1b", and a backslash is doubled; everything else is kept as it is.
std::string escapeControls(std::string_view text);

}  // namespace tavrin::tool
