#pragma once

#include <tavrin/platform/Clock.hpp>

#include <chrono>

namespace tavrin::platform {

// The system's wall clock.
class SystemClock final : public Clock {
 public:
  double now() override {
    return std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
        .count();
  }
};

}  // namespace tavrin::platform
