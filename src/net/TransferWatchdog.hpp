#pragma once

#include <chrono>
#include <cstdint>

namespace tavrin {

// Decides when an exchange has stalled: it fails once no byte has moved in
// either direction for longer than the idle limit. A slow transfer that keeps
// moving never fails, however long it takes in total.
class TransferWatchdog {
 public:
  using Clock = std::chrono::steady_clock;

  TransferWatchdog(std::chrono::milliseconds idleLimit, Clock::time_point start);

  // Takes the running total of bytes sent and received at `now`; false once
  // that total has not grown for longer than the idle limit.
  bool stillMoving(std::int64_t bytesMoved, Clock::time_point now);

 private:
  std::chrono::milliseconds _idleLimit;
  Clock::time_point _lastMovement;
  std::int64_t _bytesMoved = 0;
};

}  // namespace tavrin
