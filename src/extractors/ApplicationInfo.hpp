#pragma once

#include <tavrin/platform/DeviceInfo.hpp>

#include <optional>
#include <string>

namespace tavrin {

// This library's own bundle information, as the platform reports it.
class ApplicationInfo {
 public:
  // The entry for `key` when it is a string; absent otherwise.
  static std::optional<std::string> lookup(platform::DeviceInfo& device, const std::string& key) {
    return device.libraryBundleString(key);
  }
  // The "SDKIdentifier" entry that the dataset header reports.
  static std::optional<std::string> sdkIdentifier(platform::DeviceInfo& device) {
    return lookup(device, "SDKIdentifier");
  }
};

}  // namespace tavrin
