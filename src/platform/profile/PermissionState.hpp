#pragma once

#include "platform/profile/Permissions.hpp"

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

namespace tavrin::platform {

// One permission prompt as the platform saw it, for tests.
struct PromptRecord {
  Permission permission;
  // Prompts made earlier whose answer had not been delivered yet when this
  // one was made: 0 when prompts are made one at a time.
  std::size_t pendingAtRequest = 0;
  // The thread the completion ran on; the default id until it has run.
  std::thread::id completionThread;
};

// The four permissions of a profile platform: their statuses, shared by the
// stores that read them, and the prompts that change them.
class PermissionState final : public Permissions {
 public:
  PermissionState(const PermissionSettings& settings, CompletionThreads& threads)
      : Permissions(threads), _settings(settings) {}

  std::int64_t status(Permission permission) const override;

  // On another thread the user answers: an undecided permission takes the
  // profile's answer (a decided one is not asked, as on a phone), then
  // `deliver` runs with the resulting status.
  void prompt(Permission permission, Delivery deliver) override;

  // Every prompt so far, in the order made.
  std::vector<PromptRecord> log() const;

 private:
  mutable std::mutex _mutex;
  PermissionSettings _settings;
  std::vector<PromptRecord> _log;
  std::size_t _pending = 0;
};

}  // namespace tavrin::platform
