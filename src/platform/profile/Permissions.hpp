#pragma once

#include "platform/profile/CompletionThreads.hpp"
#include "platform/profile/DeviceProfile.hpp"

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <functional>
#include <optional>

namespace tavrin::platform {

// Where the stores of a profile-fed platform learn the four permissions'
// statuses and send their prompts: the profile itself, or a host that answers
// them.
class Permissions {
 public:
  // The status a prompt leaves, and its failure, if any.
  using Delivery = std::function<void(std::int64_t status, std::optional<PlatformError> error)>;

  explicit Permissions(CompletionThreads& threads) : _threads(threads) {}
  Permissions(const Permissions&) = delete;
  Permissions& operator=(const Permissions&) = delete;
  virtual ~Permissions() = default;

  // The current raw status.
  virtual std::int64_t status(Permission permission) const = 0;

  // Shows the prompt; `deliver` runs once, on another thread or later, with
  // the status the user's answer leaves.
  virtual void prompt(Permission permission, Delivery deliver) = 0;

  // `prompt` for a store's access request: `handler` learns whether access
  // is now authorized.
  void requestAccess(Permission permission, AccessHandler handler);

  // Answers an access request for an entity type the store does not have:
  // no prompt, and `handler` gets a refusal with an error, on another thread.
  void refuseEntityType(std::int64_t entityType, AccessHandler handler);

 protected:
  CompletionThreads& threads() { return _threads; }

 private:
  CompletionThreads& _threads;
};

}  // namespace tavrin::platform
