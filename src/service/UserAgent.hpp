#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <string>

namespace tavrin {

// The User-Agent of every request: the host's product token when there is one,
// then "tavrinsdk/MAJOR.MINOR.PATCH (SYSTEM VERSION; MACHINE)" with the device's
// facts, of which only printable ASCII is kept. Throws TavrinError invalidInput
// when the host's token is not printable ASCII.
std::string userAgent(const std::string& hostProduct, platform::DeviceInfo& device);

}  // namespace tavrin
