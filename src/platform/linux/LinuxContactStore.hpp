#pragma once

#include "platform/linux/RestrictedStore.hpp"

#include <tavrin/platform/ContactStore.hpp>

namespace tavrin::platform {

// Linux has no system address book: access is restricted, and there is nothing to read.
class LinuxContactStore final : public RestrictedStore<ContactStore> {
 public:
  std::optional<PlatformError> enumerateContacts(
      const std::vector<std::string>&, const std::function<void(const Contact&)>&) override {
    return std::nullopt;
  }
  std::variant<std::vector<ContactGroup>, PlatformError> groups() override {
    return std::vector<ContactGroup>{};
  }
};

}  // namespace tavrin::platform
