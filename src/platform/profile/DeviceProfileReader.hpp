#pragma once

#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/ProfileJsonReader.hpp"

#include <string>
#include <string_view>

namespace tavrin::platform {

// Reads a device profile from its JSON text. `file` names the profile in
// errors. Throws DeviceProfileError at the first problem: text that is not
// JSON, a duplicate or unknown member, a wrong type, a value out of range, a
// reference to something the profile does not hold, or more than `limits`
// allow.
DeviceProfile readDeviceProfile(const ProfileText& text, const std::string& file,
                                const ProfileLimits& limits = {});
DeviceProfile readDeviceProfile(std::string_view text, const std::string& file,
                                const ProfileLimits& limits = {});

// Reads the profile in the file at `path`, which must be a regular file (a
// device or a pipe could be endless or never answer). Throws
// DeviceProfileError as readDeviceProfile does, and when the file cannot be
// read.
DeviceProfile readDeviceProfileFile(const std::string& path, const ProfileLimits& limits = {});

}  // namespace tavrin::platform
