#pragma once

#include "platform/profile/HostRun.hpp"

#include <functional>
#include <memory>
#include <mutex>
#include <optional>

namespace tavrin::platform {

// A phone that its host application describes while a run goes: the host
// answers the permissions and the prompts, and gives each member of a device
// profile when a run first needs it, read by the profile's own reader. The
// permission-guarded stores ask for their data only when it is read, after
// the prompts. A member the host does not give is empty; a malformed one is
// replaced by an empty one, recorded, and reported to the failure hook so
// that the run can stop.
//
// The port references stay valid until the next beginRun(), which must come
// only between runs.
class HostPlatform final : public Platform {
 public:
  explicit HostPlatform(std::unique_ptr<HostDescription> host);
  // Waits for every completion still running. Must not be called from one.
  ~HostPlatform() override;

  // Forgets what the host said in the last run, so that the next asks again.
  void beginRun();
  // Called, on the run's thread, at the first malformed answer of a run.
  void setFailureHook(std::function<void()> hook);
  // The first malformed answer since beginRun(), taken away.
  std::optional<DeviceProfileError> takeFailure();

  DeviceInfo& device() override { return _run->device(); }
  ContactStore& contacts() override { return _contacts; }
  EventStore& events() override { return _events; }
  PhotoLibrary& photos() override { return _photos; }
  CaptureDeviceSource& captureDevices() override { return _run->captureDevices(); }
  LocationServices& location() override { return _run->location(); }
  Clock& clock() override { return _run->clock(); }
  RandomSource& random() override { return _run->random(); }

 private:
  // The address book: statuses and prompts at once, contacts when read.
  class Contacts final : public ContactStore {
   public:
    explicit Contacts(HostPlatform& platform);
    std::int64_t authorizationStatus(std::int64_t entityType) override;
    void requestAccess(std::int64_t entityType, AccessHandler handler) override;
    std::optional<PlatformError> enumerateContacts(
        const std::vector<std::string>& keysToFetch,
        const std::function<void(const Contact&)>& block) override;
    std::variant<std::vector<ContactGroup>, PlatformError> groups() override;

   private:
    HostPlatform& _platform;
    ProfileContactStore _gate;  // no contacts: answers statuses and prompts only
  };

  // The calendars: statuses and prompts at once, calendars and items when read.
  class Events final : public EventStore {
   public:
    explicit Events(HostPlatform& platform);
    std::int64_t authorizationStatus(std::int64_t entityType) override;
    void requestAccess(std::int64_t entityType, AccessHandler handler) override;
    std::vector<Calendar> calendars(std::int64_t entityType) override;
    std::vector<Event> events(double start, double end,
                              const std::vector<std::string>& calendarIdentifiers) override;
    void fetchReminders(const std::vector<std::string>& calendarIdentifiers,
                        RemindersHandler completion) override;

   private:
    HostPlatform& _platform;
    ProfileEventStore _gate;  // no calendars: answers statuses and prompts only
  };

  // The photo library: status and prompt at once, assets when read.
  class Photos final : public PhotoLibrary {
   public:
    explicit Photos(HostPlatform& platform);
    std::int64_t authorizationStatus() override;
    void requestAuthorization(std::function<void(std::int64_t status)> handler) override;
    void enumerateAssets(std::int64_t mediaType,
                         const std::function<void(const Asset&)>& visit) override;
    void enumerateCollections(std::int64_t type, std::int64_t subtype,
                              const std::function<void(const AssetCollection&)>& visit) override;
    std::int64_t assetCount(const AssetCollection& collection) override;

   private:
    HostPlatform& _platform;
    ProfilePhotoLibrary _gate;  // no assets: answers status and prompt only
  };

  void failed(const DeviceProfileError& error);

  std::unique_ptr<HostDescription> _host;
  CompletionThreads _threads;
  HostPermissions _permissions;
  std::mutex _failureMutex;
  std::optional<DeviceProfileError> _failure;
  std::function<void()> _failureHook;
  std::unique_ptr<HostRun> _run;
  Contacts _contacts;
  Events _events;
  Photos _photos;
};

}  // namespace tavrin::platform
