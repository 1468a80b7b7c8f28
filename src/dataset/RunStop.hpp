#pragma once

#include <tavrin/error.hpp>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <optional>

namespace tavrin {

// Why a run stops before its end.
enum class StopReason { cancelled, deadline };

// The error a run stopped for `reason` ends with: cancelled "Cancelled", or
// connectionFailed "Deadline exceeded".
TavrinError stopError(StopReason reason);

// When the runs of one service object stop early: a cancel flag that any thread
// may raise, and the deadline of the run in progress. Every wait of a run
// consults it, and a wait that sleeps registers a wake-up, so that cancel()
// reaches it at once and the deadline when it passes.
class RunStop {
 public:
  using Clock = std::chrono::steady_clock;

  // Raises the cancel flag and wakes the registered wait. The flag stays raised
  // until endRun(), so a cancel between runs stops the next one at its start.
  // Any thread.
  void cancel();
  // Starts a run on this thread: its deadline is `limit` from now (zero: none).
  void beginRun(std::chrono::milliseconds limit);
  // Ends the run: lowers the flag and drops the deadline.
  void endRun();

  // Why the run is to stop; empty while it may go on.
  std::optional<StopReason> reason() const;
  // Throws stopError() when the run is to stop: a point where a run may stop.
  void check() const;
  // The run's deadline; Clock::time_point::max() for none. The run's thread only.
  Clock::time_point deadline() const { return _deadline; }

  // Lets cancel() wake one sleeping wait, for as long as the object lives: it
  // calls `wakeUp` (which must not throw) from the cancelling thread, and never
  // once the destructor has returned.
  class Wake {
   public:
    Wake(RunStop& stop, std::function<void()> wakeUp);
    ~Wake();
    Wake(const Wake&) = delete;
    Wake& operator=(const Wake&) = delete;

   private:
    RunStop& _stop;
  };

 private:
  std::atomic<bool> _cancelled{false};
  Clock::time_point _deadline = Clock::time_point::max();
  std::mutex _wakeMutex;
  std::function<void()> _wakeUp;  // one run, so at most one wait sleeps at a time
};

// Makes `stop` the stop state of the run on this thread while it lives, for
// the waits and the sources, which do not see the service object, and for
// platform::stopRequested().
class RunScope {
 public:
  explicit RunScope(RunStop& stop);
  ~RunScope();
  RunScope(const RunScope&) = delete;
  RunScope& operator=(const RunScope&) = delete;

 private:
  RunStop* _previous;
};

// The stop state of the run on this thread; null outside a run.
RunStop* currentRunStop() noexcept;

// Whether the run on this thread is to stop; false outside a run. For the loops
// of the sources, which end early rather than throw.
bool runStopping() noexcept;

// Throws the stop error of the run on this thread when it is to stop.
void checkRunStop();

}  // namespace tavrin
