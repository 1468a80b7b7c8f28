#pragma once

#include "dataset/RunStop.hpp"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

namespace tavrin {

// An answer that a platform completion delivers on a thread of its own, and
// the run's wait for it. Copies share one answer: the completion keeps a copy,
// so a completion that arrives after the run has stopped waiting lands in
// state that is still alive, and touches nothing of the run.
template <typename Answer>
class PendingAnswer {
 public:
  PendingAnswer() : _state(std::make_shared<State>()) {}

  // Hands over the answer; the first delivery counts. Any thread.
  void deliver(Answer answer) const {
    {
      const std::lock_guard lock(_state->mutex);
      if (!_state->answer) _state->answer.emplace(std::move(answer));
    }
    _state->ready.notify_all();
  }

  // Blocks until the answer arrives and returns it, or returns nothing as soon
  // as the run on this thread is cancelled or passes its deadline.
  std::optional<Answer> wait() const {
    RunStop* stop = currentRunStop();
    // cancel() wakes the wait under the answer's lock, so it cannot slip in
    // between the check and the sleep. The wake-up goes only after the lock is
    // let go (declared first, destroyed last): cancel() takes them in the
    // other order.
    std::optional<RunStop::Wake> wake;
    if (stop != nullptr) {
      wake.emplace(*stop, [state = _state] {
        const std::lock_guard lock(state->mutex);
        state->ready.notify_all();
      });
    }
    std::unique_lock lock(_state->mutex);
    while (!_state->answer) {
      if (stop != nullptr && stop->reason()) return std::nullopt;
      if (stop == nullptr || stop->deadline() == RunStop::Clock::time_point::max()) {
        _state->ready.wait(lock);
      } else {
        _state->ready.wait_until(lock, stop->deadline());
      }
    }
    return std::move(_state->answer);
  }

 private:
  struct State {
    std::mutex mutex;
    std::condition_variable ready;
    std::optional<Answer> answer;
  };

  std::shared_ptr<State> _state;
};

}  // namespace tavrin
