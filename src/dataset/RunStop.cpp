#include "dataset/RunStop.hpp"

#include <tavrin/platform/Platform.hpp>

namespace tavrin {
namespace {

thread_local RunStop* runOnThisThread = nullptr;

}  // namespace

TavrinError stopError(StopReason reason) {
  if (reason == StopReason::cancelled) return TavrinError(ErrorType::cancelled, "Cancelled");
  return TavrinError(ErrorType::connectionFailed, "Deadline exceeded");
}

void RunStop::cancel() {
  _cancelled.store(true);
  const std::lock_guard lock(_wakeMutex);
  if (_wakeUp) _wakeUp();
}

void RunStop::beginRun(std::chrono::milliseconds limit) {
  _deadline = limit.count() > 0 ? Clock::now() + limit : Clock::time_point::max();
}

void RunStop::endRun() {
  _deadline = Clock::time_point::max();
  _cancelled.store(false);
}

std::optional<StopReason> RunStop::reason() const {
  if (_cancelled.load()) return StopReason::cancelled;
  if (_deadline != Clock::time_point::max() && Clock::now() >= _deadline) {
    return StopReason::deadline;
  }
  return std::nullopt;
}

void RunStop::check() const {
  if (const auto why = reason()) throw stopError(*why);
}

RunStop::Wake::Wake(RunStop& stop, std::function<void()> wakeUp) : _stop(stop) {
  const std::lock_guard lock(_stop._wakeMutex);
  _stop._wakeUp = std::move(wakeUp);
}

RunStop::Wake::~Wake() {
  const std::lock_guard lock(_stop._wakeMutex);
  _stop._wakeUp = nullptr;
}

RunScope::RunScope(RunStop& stop) : _previous(runOnThisThread) { runOnThisThread = &stop; }

RunScope::~RunScope() { runOnThisThread = _previous; }

RunStop* currentRunStop() noexcept { return runOnThisThread; }

bool runStopping() noexcept { return runOnThisThread != nullptr && runOnThisThread->reason(); }

void checkRunStop() {
  if (runOnThisThread != nullptr) runOnThisThread->check();
}

namespace platform {

bool stopRequested() noexcept { return runStopping(); }

}  // namespace platform
}  // namespace tavrin
