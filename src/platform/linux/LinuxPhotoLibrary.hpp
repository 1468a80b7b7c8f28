#pragma once

#include "platform/linux/StoreConsent.hpp"

#include <tavrin/platform/PhotoLibrary.hpp>

#include <memory>

namespace tavrin::platform {

// The photo library of the Linux machine: the pictures and videos of the
// user's media folders when the library is built with its media readers, else
// a restricted library that holds nothing. The host's `consent` decides access
// to the former.
std::unique_ptr<PhotoLibrary> makeLinuxPhotoLibrary(const std::shared_ptr<HostConsent>& consent);

}  // namespace tavrin::platform
