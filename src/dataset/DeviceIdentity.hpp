#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <string>

namespace tavrin {

// The hardware model identifier, for example "iPhone12,1": the bytes of the
// `uname` machine field with the zero padding left out.
std::string modelIdentifier(platform::DeviceInfo& device);

// The standard 36-character upper-case text of an identifier, for example
// "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A11".
std::string uuidString(const platform::Uuid& uuid);

}  // namespace tavrin
