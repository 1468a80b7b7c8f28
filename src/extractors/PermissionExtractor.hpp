#pragma once

#include "dataset/ExtractorBase.hpp"
#include "dataset/PlatformExtractor.hpp"

#include <tavrin/platform/Platform.hpp>

#include <vector>

namespace tavrin {

// "Permissions": which of the four privacy permissions are granted at the
// moment of the run, so an empty section can be told from a denied one.
class PermissionExtractor : public PlatformExtractor<ExtractorBase> {
 public:
  using PlatformExtractor::PlatformExtractor;

  Element extract() override;

  // The four rows [usage-description key, 1 when granted else 0], in fixed
  // order: calendars, reminders, contacts, photo library. Asks the user nothing.
  static std::vector<Row> permissionRows(platform::Platform& platform);
};

}  // namespace tavrin
