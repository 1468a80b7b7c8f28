#pragma once

#include <cstdint>

namespace tavrin::platform {

/// The wall clock.
class Clock {
 public:
  virtual ~Clock() = default;
  /// The current time in seconds since 1970-01-01 00:00 UTC, with fraction.
  virtual double now() = 0;
};

/// A source of uniformly distributed random integers, unpredictably seeded.
class RandomSource {
 public:
  virtual ~RandomSource() = default;
  /// A uniform integer in [0, upperBound), without modulo bias; 0 when the bound is 0.
  virtual std::uint32_t uniform(std::uint32_t upperBound) = 0;
};

}  // namespace tavrin::platform
