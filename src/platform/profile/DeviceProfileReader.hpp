#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <string>
#include <string_view>

namespace tavrin::platform {

// Reads a device profile from its JSON text. `file` names the profile in
// errors. Throws DeviceProfileError at the first problem: malformed JSON, a
// duplicate or unknown member, a wrong type, a value out of range, or a
// reference to something the profile does not hold.
DeviceProfile readDeviceProfile(std::string_view text, const std::string& file);

}  // namespace tavrin::platform
