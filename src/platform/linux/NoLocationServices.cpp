#include "platform/linux/LinuxLocationServices.hpp"

namespace tavrin::platform {
namespace {

// Built without D-Bus, the library reaches no location service.
class NoLocationServices final : public LocationServices {
 public:
  bool significantLocationChangeMonitoringAvailable() override { return false; }
  bool headingAvailable() override { return false; }
  bool isRangingAvailable() override { return false; }
  bool locationServicesEnabled() override { return false; }
};

}  // namespace

std::unique_ptr<LocationServices> makeLinuxLocationServices() {
  return std::make_unique<NoLocationServices>();
}

}  // namespace tavrin::platform
