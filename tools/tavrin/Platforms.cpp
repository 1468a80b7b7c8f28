#include "Commands.hpp"

namespace tavrin::tool {

std::shared_ptr<platform::Platform> choosePlatform(const std::string& profilePath) {
  if (profilePath.empty()) return platform::makeLinuxPlatform();
  return platform::loadDeviceProfile(profilePath);
}

}  // namespace tavrin::tool
