#include "platform/linux/LinuxContactStore.hpp"

#include "platform/linux/RestrictedStore.hpp"

namespace tavrin::platform {
namespace {

// Built without an address-book client, the library has no address book to
// read: access is restricted, and there is nothing to read.
class RestrictedContactStore final : public RestrictedStore<ContactStore> {
 public:
  std::optional<PlatformError> enumerateContacts(
      const std::vector<std::string>&, const std::function<void(const Contact&)>&) override {
    return std::nullopt;
  }
  std::variant<std::vector<ContactGroup>, PlatformError> groups() override {
    return std::vector<ContactGroup>{};
  }
};

}  // namespace

std::unique_ptr<ContactStore> makeLinuxContactStore(std::shared_ptr<HostConsent>) {
  return std::make_unique<RestrictedContactStore>();
}

}  // namespace tavrin::platform
