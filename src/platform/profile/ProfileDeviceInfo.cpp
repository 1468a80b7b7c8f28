#include "platform/profile/ProfileDeviceInfo.hpp"

namespace tavrin::platform {

bool ProfileDeviceInfo::isSystemVersionAtLeast(int major, int minor) {
  const auto& parts = _device.systemVersionParts;
  const int ownMajor = parts.empty() ? 0 : parts[0];
  const int ownMinor = parts.size() < 2 ? 0 : parts[1];
  return ownMajor != major ? ownMajor > major : ownMinor >= minor;
}

std::optional<std::string> ProfileDeviceInfo::libraryBundleString(const std::string& key) {
  const auto found = _device.libraryBundleStrings.find(key);
  if (found == _device.libraryBundleStrings.end()) return {};
  return found->second;
}

}  // namespace tavrin::platform
