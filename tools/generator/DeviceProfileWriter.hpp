#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <ostream>

namespace tavrin::tool {

// Writes a device profile in the format the loader reads
// (docs/device-profile.md), so that reading the text gives `profile` back.
// Members that hold their default are left out, which keeps a generated phone
// of a hundred thousand photos to a file of tens of megabytes.
void writeDeviceProfile(const platform::DeviceProfile& profile, std::ostream& out);

}  // namespace tavrin::tool
