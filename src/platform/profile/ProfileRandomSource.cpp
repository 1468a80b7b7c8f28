#include "platform/profile/ProfileRandomSource.hpp"

namespace tavrin::platform {

std::uint32_t ProfileRandomSource::uniform(std::uint32_t upperBound) {
  if (upperBound == 0) return 0;
  if (_setting) {
    const auto& draws = _setting->draws;
    const auto index = _next.fetch_add(1, std::memory_order_relaxed) % draws.size();
    return draws[index] % upperBound;
  }
  // The distribution rejects values that would bias the result.
  std::uniform_int_distribution<std::uint32_t> distribution(0, upperBound - 1);
  const std::lock_guard lock(_deviceMutex);
  return distribution(_device);
}

}  // namespace tavrin::platform
