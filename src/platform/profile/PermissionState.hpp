#pragma once

#include "platform/profile/CompletionThreads.hpp"
#include "platform/profile/DeviceProfile.hpp"

#include <tavrin/platform/AccessHandler.hpp>

#include <cstddef>
#include <cstdint>
#include <functional>
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
class PermissionState {
 public:
  PermissionState(const PermissionSettings& settings, CompletionThreads& threads)
      : _settings(settings), _threads(threads) {}

  // The current raw status.
  std::int64_t status(Permission permission) const;

  // Shows the prompt. On another thread the user answers: an undecided
  // permission takes the profile's answer (a decided one is not asked, as on
  // a phone), then `deliver` runs with the resulting status.
  void prompt(Permission permission, std::function<void(std::int64_t status)> deliver);

  // `prompt` for a store's access request: `handler` learns whether access
  // is now authorized.
  void requestAccess(Permission permission, AccessHandler handler);

  // Answers an access request for an entity type the store does not have:
  // no prompt, and `handler` gets a refusal with an error, on another thread.
  void refuseEntityType(std::int64_t entityType, AccessHandler handler);

  // Every prompt so far, in the order made.
  std::vector<PromptRecord> log() const;

 private:
  mutable std::mutex _mutex;
  PermissionSettings _settings;
  std::vector<PromptRecord> _log;
  std::size_t _pending = 0;
  CompletionThreads& _threads;
};

}  // namespace tavrin::platform
