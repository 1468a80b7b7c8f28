#include "net/TransferWatchdog.hpp"

namespace tavrin {

TransferWatchdog::TransferWatchdog(std::chrono::milliseconds idleLimit, Clock::time_point start)
    : _idleLimit(idleLimit), _lastMovement(start) {}

bool TransferWatchdog::stillMoving(std::int64_t bytesMoved, Clock::time_point now) {
  if (bytesMoved != _bytesMoved) {
    _bytesMoved = bytesMoved;
    _lastMovement = now;
    return true;
  }
  return now - _lastMovement <= _idleLimit;
}

}  // namespace tavrin
