#pragma once

#include <tavrin/platform/Clock.hpp>

namespace tavrin::platform {

// Uniform draws from the kernel's random number generator.
class SystemRandomSource final : public RandomSource {
 public:
  std::uint32_t uniform(std::uint32_t upperBound) override;
};

}  // namespace tavrin::platform
