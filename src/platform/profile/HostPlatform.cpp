#include "platform/profile/HostPlatform.hpp"

#include <utility>

namespace tavrin::platform {

HostPlatform::HostPlatform(std::unique_ptr<HostDescription> host)
    : _host(std::move(host)),
      _permissions(*_host, _threads),
      _contacts(*this),
      _events(*this),
      _photos(*this) {
  beginRun();
}

HostPlatform::~HostPlatform() {
  // The completions use the stores; they finish before any store goes.
  _threads.joinAll();
}

void HostPlatform::beginRun() {
  _threads.joinAll();
  {
    const std::lock_guard lock(_failureMutex);
    _failure.reset();
  }
  _run = std::make_unique<HostRun>(*_host, _permissions, _threads,
                                   [this](const DeviceProfileError& error) { failed(error); });
}

void HostPlatform::setFailureHook(std::function<void()> hook) { _failureHook = std::move(hook); }

std::optional<DeviceProfileError> HostPlatform::takeFailure() {
  const std::lock_guard lock(_failureMutex);
  return std::exchange(_failure, std::nullopt);
}

void HostPlatform::failed(const DeviceProfileError& error) {
  {
    const std::lock_guard lock(_failureMutex);
    if (_failure) return;
    _failure = error;
  }
  if (_failureHook) _failureHook();
}

// Statuses and prompts go to a store without data, which answers them as the
// loaded store would; data is asked of the host only when it is read.

HostPlatform::Contacts::Contacts(HostPlatform& platform)
    : _platform(platform), _gate({}, platform._permissions) {}

std::int64_t HostPlatform::Contacts::authorizationStatus(std::int64_t entityType) {
  return _gate.authorizationStatus(entityType);
}

void HostPlatform::Contacts::requestAccess(std::int64_t entityType, AccessHandler handler) {
  _gate.requestAccess(entityType, std::move(handler));
}

std::optional<PlatformError> HostPlatform::Contacts::enumerateContacts(
    const std::vector<std::string>& keysToFetch, const std::function<void(const Contact&)>& block) {
  return _platform._run->contacts().enumerateContacts(keysToFetch, block);
}

std::variant<std::vector<ContactGroup>, PlatformError> HostPlatform::Contacts::groups() {
  return _platform._run->contacts().groups();
}

HostPlatform::Events::Events(HostPlatform& platform)
    : _platform(platform), _gate({}, {}, {}, {}, platform._permissions, platform._threads) {}

std::int64_t HostPlatform::Events::authorizationStatus(std::int64_t entityType) {
  return _gate.authorizationStatus(entityType);
}

void HostPlatform::Events::requestAccess(std::int64_t entityType, AccessHandler handler) {
  _gate.requestAccess(entityType, std::move(handler));
}

std::vector<Calendar> HostPlatform::Events::calendars(std::int64_t entityType) {
  return _platform._run->events().calendars(entityType);
}

std::vector<Event> HostPlatform::Events::events(
    double start, double end, const std::vector<std::string>& calendarIdentifiers) {
  return _platform._run->events().events(start, end, calendarIdentifiers);
}

void HostPlatform::Events::fetchReminders(const std::vector<std::string>& calendarIdentifiers,
                                          RemindersHandler completion) {
  _platform._run->events().fetchReminders(calendarIdentifiers, std::move(completion));
}

HostPlatform::Photos::Photos(HostPlatform& platform)
    : _platform(platform), _gate({}, platform._permissions) {}

std::int64_t HostPlatform::Photos::authorizationStatus() { return _gate.authorizationStatus(); }

void HostPlatform::Photos::requestAuthorization(std::function<void(std::int64_t status)> handler) {
  _gate.requestAuthorization(std::move(handler));
}

void HostPlatform::Photos::enumerateAssets(std::int64_t mediaType,
                                           const std::function<void(const Asset&)>& visit) {
  _platform._run->photos().enumerateAssets(mediaType, visit);
}

void HostPlatform::Photos::enumerateCollections(
    std::int64_t type, std::int64_t subtype,
    const std::function<void(const AssetCollection&)>& visit) {
  _platform._run->photos().enumerateCollections(type, subtype, visit);
}

std::int64_t HostPlatform::Photos::assetCount(const AssetCollection& collection) {
  return _platform._run->photos().assetCount(collection);
}

}  // namespace tavrin::platform
