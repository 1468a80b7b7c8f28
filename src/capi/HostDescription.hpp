#pragma once

// The host's C platform, seen as the host platform of the library sees it.

#include "platform/profile/HostPlatform.hpp"

#include <tavrin/tavrin.h>

namespace tavrin::capi {

// Calls the C platform's callbacks that are not null; a null one denies the
// permission, answers the prompt with the status unchanged, or describes
// nothing.
class CHostDescription final : public platform::HostDescription {
 public:
  explicit CHostDescription(const tavrin_platform& host) : _host(host) {}

  std::int64_t status(platform::Permission permission) override;
  void prompt(platform::Permission permission, platform::Permissions::Delivery deliver) override;
  std::optional<std::string> describe(const std::string& section) override;

 private:
  tavrin_platform _host;
};

}  // namespace tavrin::capi
