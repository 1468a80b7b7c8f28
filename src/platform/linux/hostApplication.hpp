#pragma once

#include <string>

namespace tavrin::platform {

// The name of the host application: `identifier`, or the executable's file
// name when it is empty.
std::string hostApplication(std::string identifier);

}  // namespace tavrin::platform
