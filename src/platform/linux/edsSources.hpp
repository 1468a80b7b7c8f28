#pragma once

#include "platform/linux/GObjectRef.hpp"

#include <tavrin/platform/AccessHandler.hpp>

#include <libedataserver/libedataserver.h>

#include <variant>
#include <vector>

namespace tavrin::platform {

// A connection does not wait for a remote source to reach its server: what
// the source holds on the machine is what a collection reads.
constexpr auto edsNoWait = static_cast<guint32>(-1);

// The message of a GLib error, or `fallback` when there is none.
PlatformError errorOf(const GErrorRef& error, const char* fallback);

// Evolution Data Server's list of sources, opened at the first read and kept
// by a store: it follows the sources' changes on a thread of its own, and
// opening it costs a round of D-Bus calls.
class SourceRegistry {
 public:
  // The registry, or why it cannot be opened now (tried again at the next call).
  std::variant<ESourceRegistry*, PlatformError> get();

 private:
  GObjectRef<ESourceRegistry> _registry;
};

// The enabled sources that have `extension` (an address book, a calendar, a
// task list), in the order of their UIDs.
std::vector<GObjectRef<ESource>> enabledSources(ESourceRegistry* registry, const char* extension);

}  // namespace tavrin::platform
