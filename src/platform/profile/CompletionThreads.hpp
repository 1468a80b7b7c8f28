#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace tavrin::platform {

// The threads on which a profile platform delivers asynchronous completions,
// as a phone delivers them on threads of its own. Each completion gets a new
// thread; threads that have finished are joined when the next one starts, and
// all of them when the owner is destroyed. None is ever detached.
class CompletionThreads {
 public:
  CompletionThreads() = default;
  CompletionThreads(const CompletionThreads&) = delete;
  CompletionThreads& operator=(const CompletionThreads&) = delete;
  // Joins every thread. Must not run on one of them.
  ~CompletionThreads() { joinAll(); }

  // Runs `work` on a new thread. When no thread can be started, runs it on
  // the calling thread rather than never.
  void run(std::function<void()> work);

  // Waits for every completion started so far. Must not run on one of them.
  void joinAll();

 private:
  struct Worker {
    std::thread thread;
    std::shared_ptr<std::atomic<bool>> finished;
  };
  std::mutex _mutex;
  std::vector<Worker> _workers;
};

}  // namespace tavrin::platform
