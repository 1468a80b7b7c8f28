#include "platform/profile/PermissionState.hpp"

namespace tavrin::platform {

std::int64_t PermissionState::status(Permission permission) const {
  const std::lock_guard lock(_mutex);
  return _settings[static_cast<std::size_t>(permission)].status;
}

void PermissionState::prompt(Permission permission, Delivery deliver) {
  std::size_t entry = 0;
  {
    const std::lock_guard lock(_mutex);
    entry = _log.size();
    _log.push_back({permission, _pending, {}});
    ++_pending;
  }
  threads().run([this, permission, entry, deliver = std::move(deliver)] {
    std::int64_t status = 0;
    {
      const std::lock_guard lock(_mutex);
      auto& setting = _settings[static_cast<std::size_t>(permission)];
      if (setting.status == AuthorizationStatus::notDetermined && setting.answer) {
        setting.status = *setting.answer;
      }
      status = setting.status;
      _log[entry].completionThread = std::this_thread::get_id();
      // Answered before the handler runs: a caller woken by the handler may
      // prompt again at once, and that prompt does not overlap this one.
      --_pending;
    }
    deliver(status, std::nullopt);
  });
}

std::vector<PromptRecord> PermissionState::log() const {
  const std::lock_guard lock(_mutex);
  return _log;
}

}  // namespace tavrin::platform
