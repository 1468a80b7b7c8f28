#include "platform/profile/ProfileContactStore.hpp"

#include <algorithm>

namespace tavrin::platform {

std::int64_t ProfileContactStore::authorizationStatus(std::int64_t entityType) {
  if (entityType != ContactEntityType::contacts) return AuthorizationStatus::restricted;
  return _permissions.status(Permission::contacts);
}

void ProfileContactStore::requestAccess(std::int64_t entityType, AccessHandler handler) {
  if (entityType != ContactEntityType::contacts) {
    _permissions.refuseEntityType(entityType, std::move(handler));
  } else {
    _permissions.requestAccess(Permission::contacts, std::move(handler));
  }
}

std::optional<PlatformError> ProfileContactStore::accessError() const {
  if (_permissions.status(Permission::contacts) == AuthorizationStatus::authorized) return {};
  return PlatformError{"Access to the contacts is not authorized."};
}

std::optional<PlatformError> ProfileContactStore::enumerateContacts(
    const std::vector<std::string>& keysToFetch, const std::function<void(const Contact&)>& block) {
  {
    const std::lock_guard lock(_mutex);
    _lastKeysToFetch = keysToFetch;
  }
  if (auto error = accessError()) return error;
  const auto& list = _contacts.list;
  const auto delivered =
      std::min<std::uint64_t>(list.size(), _contacts.failAfter.value_or(list.size()));
  // A run that stops discards what it gets, so the rest need not come.
  for (std::size_t i = 0; i < delivered && !stopRequested(); ++i) block(list[i]);
  if (_contacts.failAfter) return PlatformError{_contacts.failureMessage};
  return {};
}

std::variant<std::vector<ContactGroup>, PlatformError> ProfileContactStore::groups() {
  if (auto error = accessError()) return *error;
  if (_contacts.groupsError) return PlatformError{*_contacts.groupsError};
  return _contacts.groups;
}

std::vector<std::string> ProfileContactStore::lastKeysToFetch() const {
  const std::lock_guard lock(_mutex);
  return _lastKeysToFetch;
}

}  // namespace tavrin::platform
