#pragma once

#include "platform/linux/HostConsent.hpp"

#include <tavrin/platform/EventStore.hpp>

#include <memory>

namespace tavrin::platform {

// The calendars and task lists of the Linux machine: Evolution Data Server's
// when the library is built with its calendar client, else a restricted store
// that holds nothing. The host's `consent` decides access to the former.
std::unique_ptr<EventStore> makeLinuxEventStore(std::shared_ptr<HostConsent> consent);

}  // namespace tavrin::platform
