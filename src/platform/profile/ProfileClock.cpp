#include "platform/profile/ProfileClock.hpp"

#include <chrono>

namespace tavrin::platform {

double ProfileClock::now() {
  if (!_setting) {
    const auto sinceEpoch = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration<double>(sinceEpoch).count();
  }
  // Multiplying instead of adding up keeps every reading exact to one rounding.
  const auto reading = _readings.fetch_add(1, std::memory_order_relaxed);
  return _setting->now + static_cast<double>(reading) * _setting->step;
}

}  // namespace tavrin::platform
