#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <atomic>
#include <cstdint>
#include <optional>

namespace tavrin::platform {

// The clock of a profile: the reading k (from 0) is now + k × step, so a run
// is reproducible to the last digit. Without a setting, the machine's wall
// clock.
class ProfileClock final : public Clock {
 public:
  explicit ProfileClock(std::optional<ClockSetting> setting) : _setting(setting) {}

  double now() override;

 private:
  const std::optional<ClockSetting> _setting;
  std::atomic<std::uint64_t> _readings{0};
};

}  // namespace tavrin::platform
