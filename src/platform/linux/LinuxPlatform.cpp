#include "platform/linux/LinuxPlatform.hpp"

namespace tavrin::platform {

std::shared_ptr<Platform> makeLinuxPlatform(std::string applicationIdentifier) {
  return std::make_shared<LinuxPlatform>(std::move(applicationIdentifier));
}

}  // namespace tavrin::platform
