#pragma once

#include <tavrin/platform/Platform.hpp>

#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tavrin::platform {

// A device profile after reading, before any platform object exists: plain
// values only, so a profile that fails to read leaves nothing behind. Each
// struct mirrors one object of the profile's JSON (docs/device-profile.md);
// ProfileFields.hpp lists their members.

// The device facts that `DeviceInfo` answers from.
struct ProfileDevice {
  std::string model, localizedModel, systemName, systemVersion;
  std::vector<int> systemVersionParts;  // systemVersion's numbers, for the version gates
  std::optional<Uuid> identifierForVendor;
  std::array<std::uint8_t, 256> machine{};
  bool isBatteryMonitoringEnabled = false, isProximityMonitoringEnabled = false,
       isGeneratingDeviceOrientationNotifications = false, proximityState = false,
       isMultitaskingSupported = false;
  std::optional<FileSystemSizes> fileSystem = FileSystemSizes{};  // absent: the query fails
  std::uint64_t physicalMemory = 0;
  LocaleFacts locale;
  TimeZoneFacts timeZone;
  std::optional<Carrier> carrier;
  std::optional<std::string> radioAccessTechnology;
  std::map<std::string, std::string> libraryBundleStrings;  // the text entries only
};

// One of the four permissions: its status now, and the status the user's
// answer leaves when asked (absent: the answer changes nothing).
struct PermissionSetting {
  std::int64_t status = 0;
  std::optional<std::int64_t> answer;
};

// The four permissions, indexed by `Permission`.
enum class Permission { photoLibrary = 0, contacts = 1, calendarEvents = 2, reminders = 3 };
using PermissionSettings = std::array<PermissionSetting, 4>;

// The address book and how its queries fail.
struct ProfileContacts {
  std::vector<Contact> list;
  std::optional<std::uint64_t> failAfter;  // the enumeration fails after this many contacts
  std::string failureMessage = "The operation couldn't be completed.";
  std::vector<ContactGroup> groups;
  std::optional<std::string> groupsError;  // present: the group query fails with it
};

// How an event repeats. Occurrence k starts k × interval units after the
// first, counted on the Gregorian calendar in the event's time zone.
struct Recurrence {
  enum class Frequency { daily, weekly, monthly, yearly };
  Frequency frequency = Frequency::daily;
  std::int32_t interval = 1;
  std::optional<std::int64_t> count;  // number of occurrences; absent: no limit by count
  std::optional<double> until;        // the last start allowed; absent: no limit by date
};

struct ProfileEvent {
  Event event;
  std::string calendarIdentifier;
  std::optional<Recurrence> recurrence;
};

struct ProfileReminder {
  Reminder reminder;
  std::string calendarIdentifier;
};

// Texts kept one after another in one buffer. The collections of a large
// phone list hundreds of thousands of asset identifiers, which as strings of
// their own would take twice the room.
class IdentifierList {
 public:
  void append(std::string_view identifier) {
    _text += identifier;
    // A profile is far smaller than 4 GiB, so every end fits.
    _ends.push_back(static_cast<std::uint32_t>(_text.size()));
  }
  std::size_t size() const { return _ends.size(); }
  std::string_view operator[](std::size_t i) const {
    const std::uint32_t begin = i == 0 ? 0 : _ends[i - 1];
    return std::string_view(_text).substr(begin, _ends[i] - begin);
  }
  void shrinkToFit() {
    _text.shrink_to_fit();
    _ends.shrink_to_fit();
  }
  bool operator==(const IdentifierList&) const = default;

 private:
  std::string _text;
  std::vector<std::uint32_t> _ends;
};

struct ProfileCollection {
  AssetCollection collection;
  IdentifierList assetIdentifiers;
};

struct ProfileCalendars {
  std::vector<Calendar> events, reminders;  // the calendars of each entity type
};

struct ProfilePhotos {
  std::vector<Asset> assets;
  std::vector<ProfileCollection> collections;
};

struct ProfileLocation {
  bool significantLocationChangeMonitoringAvailable = false, headingAvailable = false,
       isRangingAvailable = false, locationServicesEnabled = false;
};

// A clock that reads `now` first and `step` seconds later at every further reading.
struct ClockSetting {
  double now = 0;
  double step = 0;
};

// The values the random source returns, in turn.
struct RandomSetting {
  std::vector<std::uint32_t> draws;
};

struct DeviceProfile {
  std::string schema, description;  // "$schema" and "description": for people, never read
  ProfileDevice device;
  PermissionSettings permissions;
  ProfileContacts contacts;
  ProfileCalendars calendars;
  std::vector<ProfileEvent> events;
  std::optional<std::vector<ProfileReminder>> reminders =
      std::vector<ProfileReminder>{};  // absent: the fetch delivers no list
  ProfilePhotos photos;
  std::optional<std::vector<std::optional<CaptureDevice>>> captureDevices =
      std::vector<std::optional<CaptureDevice>>{};  // absent: no list
  ProfileLocation location;
  std::optional<ClockSetting> clock;    // absent: the machine's wall clock
  std::optional<RandomSetting> random;  // absent: a real random source
};

}  // namespace tavrin::platform
