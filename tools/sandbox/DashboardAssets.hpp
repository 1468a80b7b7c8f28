#pragma once

#include <string_view>

namespace tavrin::sandbox {

// The dashboard's page, script and style sheet (tools/sandbox/dashboard/),
// built into the binary by tools/CMakeLists.txt.
extern const std::string_view dashboardPage;
extern const std::string_view dashboardScript;
extern const std::string_view dashboardStyle;

}  // namespace tavrin::sandbox
