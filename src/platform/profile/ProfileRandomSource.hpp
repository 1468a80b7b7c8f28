#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <random>
#include <vector>

#include <tavrin/platform/Clock.hpp>

namespace tavrin::platform {

// The random draws of a profile, returned in turn and from the start again
// after the last. A draw at or above the bound asked for is reduced modulo
// the bound, so that the result always lies below it. Without draws, uniform
// integers from the operating system's random device.
class ProfileRandomSource final : public RandomSource {
 public:
  explicit ProfileRandomSource(std::optional<std::vector<std::uint32_t>> draws)
      : _draws(std::move(draws)) {}

  std::uint32_t uniform(std::uint32_t upperBound) override;

 private:
  const std::optional<std::vector<std::uint32_t>> _draws;
  std::atomic<std::uint64_t> _next{0};
  std::mutex _deviceMutex;
  std::random_device _device;
};

}  // namespace tavrin::platform
