#pragma once

#include <atomic>
#include <chrono>
#include <stdexcept>

namespace tavrin::sandbox {

// A one-way signal that every wait of the sandbox watches, so that stopping
// ends them at once: waits on sockets poll its descriptor beside theirs.
class StopSignal {
 public:
  using Clock = std::chrono::steady_clock;

  // Throws std::runtime_error when the system has no descriptor to spare.
  StopSignal();
  ~StopSignal();
  StopSignal(const StopSignal&) = delete;
  StopSignal& operator=(const StopSignal&) = delete;

  // Raises the signal; it stays raised.
  void raise();
  bool raised() const { return _raised; }
  // The flag itself, for work that checks it now and then rather than waiting.
  const std::atomic<bool>& flag() const { return _raised; }

  enum class Wait { ready, timedOut, stopped };
  // Waits until `socket` is ready for `events` (poll's POLLIN, POLLOUT, ...),
  // `deadline` passes or the signal is raised.
  Wait wait(int socket, short events, Clock::time_point deadline) const;

 private:
  int _descriptor;
  std::atomic<bool> _raised{false};
};

// Thrown by long work that watches a stop flag (decoding an upload) when the
// flag is raised: the work is abandoned, nothing of it is kept.
class WorkStopped : public std::runtime_error {
 public:
  WorkStopped() : std::runtime_error("the sandbox is stopping") {}
};

}  // namespace tavrin::sandbox
