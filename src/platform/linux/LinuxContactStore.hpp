#pragma once

#include "platform/linux/HostConsent.hpp"

#include <tavrin/platform/ContactStore.hpp>

#include <memory>

namespace tavrin::platform {

// The address book of the Linux machine: Evolution Data Server's address books
// when the library is built with its client, else a restricted store that holds
// nothing. The host's `consent` decides access to the former.
std::unique_ptr<ContactStore> makeLinuxContactStore(std::shared_ptr<HostConsent> consent);

}  // namespace tavrin::platform
