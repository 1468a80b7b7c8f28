#pragma once

#include <tavrin/platform/LocationServices.hpp>

#include <memory>

namespace tavrin::platform {

// The location services of the Linux machine: GeoClue's when the library is
// built with D-Bus, else none.
std::unique_ptr<LocationServices> makeLinuxLocationServices();

}  // namespace tavrin::platform
