#pragma once

#include "dataset/Row.hpp"

#include <tavrin/platform/Platform.hpp>

#include <vector>

namespace tavrin {

// Asks for the privacy permissions before a run and reports which are granted.
class PermissionHeplper {
 public:
  // Prompts, one at a time, for each permission still undecided (photo library,
  // contacts, calendar events, reminders) and blocks until each is answered.
  // Throws the stop error when the run on this thread stops while it waits.
  static void requestPermissions(platform::Platform& platform);

  // The four rows [usage-description key, 1 when granted else 0], in fixed order.
  // Asks the user nothing.
  static std::vector<Row> getPermissionStatuses(platform::Platform& platform);
};

}  // namespace tavrin
