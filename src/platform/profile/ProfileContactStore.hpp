#pragma once

#include "platform/profile/DeviceProfile.hpp"
#include "platform/profile/Permissions.hpp"

#include <mutex>

namespace tavrin::platform {

// The address book of a profile. As on a phone, its data is readable only
// while the contacts permission is authorized (3); otherwise the queries fail
// with an access error.
class ProfileContactStore final : public ContactStore {
 public:
  ProfileContactStore(ProfileContacts contacts, Permissions& permissions)
      : _contacts(std::move(contacts)), _permissions(permissions) {}

  // Contacts have one entity type, 0; any other is restricted (1).
  std::int64_t authorizationStatus(std::int64_t entityType) override;
  // Prompts for entity type 0; refuses any other with an error, without a prompt.
  void requestAccess(std::int64_t entityType, AccessHandler handler) override;
  // Delivers the profile's contacts in order; with failAfter, stops after
  // that many and returns the failure message.
  std::optional<PlatformError> enumerateContacts(
      const std::vector<std::string>& keysToFetch,
      const std::function<void(const Contact&)>& block) override;
  std::variant<std::vector<ContactGroup>, PlatformError> groups() override;

  // The keys of the last enumeration, as given.
  std::vector<std::string> lastKeysToFetch() const;

 private:
  std::optional<PlatformError> accessError() const;

  const ProfileContacts _contacts;
  Permissions& _permissions;
  mutable std::mutex _mutex;
  std::vector<std::string> _lastKeysToFetch;
};

}  // namespace tavrin::platform
