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

// Reads the top-level member `name` of a device profile (for example
// "contacts") from its own JSON text into `profile`, as a whole profile's
// reader reads it, with errors pointing into the whole profile. Returns false,
// reading nothing, for a name the profile does not have. The checks across
// members are checkDeviceProfile's.
bool readDeviceProfileMember(std::string_view name, std::string_view text, DeviceProfile& profile,
                             const std::string& file, const ProfileLimits& limits = {});

// The checks across a profile's members: identifiers that others refer to are
// unique, references resolve, recurring events can be expanded, and one event
// query stays within `limits`. Throws DeviceProfileError.
void checkDeviceProfile(const DeviceProfile& profile, const std::string& file,
                        const ProfileLimits& limits = {});

// Reads the profile in the file at `path`, which must be a regular file (a
// device or a pipe could be endless or never answer). Throws
// DeviceProfileError as readDeviceProfile does, and when the file cannot be
// read.
DeviceProfile readDeviceProfileFile(const std::string& path, const ProfileLimits& limits = {});

}  // namespace tavrin::platform
