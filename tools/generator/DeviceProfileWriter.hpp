#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <ostream>
#include <string_view>

namespace tavrin::tool {

// Writes a device profile in the format the loader reads
// (docs/device-profile.md), so that reading the text gives `profile` back.
// Members that hold their default are left out, which keeps a generated phone
// of a hundred thousand photos to a file of tens of megabytes. `description`
// becomes the top-level "description" when it is not empty.
void writeDeviceProfile(const platform::DeviceProfile& profile, std::ostream& out,
                        std::string_view description = {});

}  // namespace tavrin::tool
