#pragma once

#include <string_view>

namespace tavrin::tool {

// The text of examples/profiles/iphone-realistic.json, built into the tool
// (see tools/CMakeLists.txt) so that the demonstration runs from any directory.
extern const std::string_view realisticPhoneProfile;

}  // namespace tavrin::tool
