#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <vector>

#include "platform/profile/DeviceProfile.hpp"

namespace tavrin::platform {

// The random draws of a profile, returned in turn and from the start again
// after the last. A draw at or above the bound asked for is reduced modulo
// the bound, so that the result always lies below it. Without draws, uniform
// integers from the operating system's random device.
class ProfileRandomSource final : public RandomSource {
 public:
  explicit ProfileRandomSource(std::optional<RandomSetting> setting)
      : _setting(std::move(setting)) {}

  std::uint32_t uniform(std::uint32_t upperBound) override;

 private:
  const std::optional<RandomSetting> _setting;
  std::atomic<std::uint64_t> _next{0};
  std::mutex _deviceMutex;
  std::random_device _device;
};

}  // namespace tavrin::platform
