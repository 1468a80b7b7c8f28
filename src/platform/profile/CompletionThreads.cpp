#include "platform/profile/CompletionThreads.hpp"

#include <algorithm>
#include <system_error>

namespace tavrin::platform {

void CompletionThreads::run(std::function<void()> work) {
  auto finished = std::make_shared<std::atomic<bool>>(false);
  const auto task = [work = std::move(work), finished] {
    work();
    finished->store(true, std::memory_order_release);
  };
  std::thread thread;
  try {
    thread = std::thread(task);  // a copy, so that `task` survives a failed start
  } catch (const std::system_error&) {
    task();
    return;
  }
  const std::lock_guard lock(_mutex);
  // A finished thread joins at once; a running one stays until it is done.
  const auto self = std::this_thread::get_id();
  const auto done = std::partition(_workers.begin(), _workers.end(), [&](const Worker& w) {
    return !w.finished->load(std::memory_order_acquire) || w.thread.get_id() == self;
  });
  for (auto it = done; it != _workers.end(); ++it) it->thread.join();
  _workers.erase(done, _workers.end());
  _workers.push_back({std::move(thread), std::move(finished)});
}

void CompletionThreads::joinAll() {
  // A completion may start another one before it ends; keep going until no
  // thread is left.
  for (;;) {
    std::vector<Worker> workers;
    {
      const std::lock_guard lock(_mutex);
      workers.swap(_workers);
    }
    if (workers.empty()) return;
    for (auto& worker : workers) worker.thread.join();
  }
}

}  // namespace tavrin::platform
