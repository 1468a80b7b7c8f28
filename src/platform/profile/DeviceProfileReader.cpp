#include "platform/profile/DeviceProfileReader.hpp"

#include "platform/profile/ProfileEventStore.hpp"
#include "platform/profile/RecurrenceExpander.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <unordered_set>

namespace tavrin::platform {

namespace {

// Failure at a pointer built from tokens, for the checks that run after reading.
[[noreturn]] void failAt(const std::string& file, std::initializer_list<std::string> tokens,
                         const std::string& reason) {
  std::string pointer;
  for (const auto& token : tokens) {
    pointer += '/';
    appendPointerToken(pointer, token);
  }
  throw DeviceProfileError(file, pointer, reason);
}

// Identifiers that something else refers to must be unique, so that the
// reference names one thing. The set views the items' own identifiers.
template <typename Items, typename Identifier>
std::unordered_set<std::string_view> uniqueIdentifiers(const std::string& file, const Items& items,
                                                       const std::string& list,
                                                       const std::string& list2,
                                                       const std::string& member, Identifier id) {
  std::unordered_set<std::string_view> seen;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!seen.insert(id(items[i])).second) {
      failAt(file, {list, list2, std::to_string(i), member}, "duplicate identifier");
    }
  }
  return seen;
}

// A text given whole, as one piece.
ProfileText onePiece(std::string_view text) {
  return [text, given = false]() mutable {
    return std::exchange(given, true) ? std::string_view() : text;
  };
}

// A file descriptor, closed when it goes.
class OpenFile {
 public:
  explicit OpenFile(int descriptor) : _descriptor(descriptor) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() { ::close(_descriptor); }
  int descriptor() const { return _descriptor; }

 private:
  int _descriptor;
};

}  // namespace

// References resolve, every time zone a recurrence is expanded in is one the
// calendar knows, and one event query cannot return more rows than the
// limits allow.
void checkDeviceProfile(const DeviceProfile& profile, const std::string& file,
                        const ProfileLimits& limits) {
  const auto eventCalendars = uniqueIdentifiers(
      file, profile.calendars.events, "calendars", "events", "calendarIdentifier",
      [](const Calendar& c) -> const std::string& { return c.calendarIdentifier; });
  const auto reminderCalendars = uniqueIdentifiers(
      file, profile.calendars.reminders, "calendars", "reminders", "calendarIdentifier",
      [](const Calendar& c) -> const std::string& { return c.calendarIdentifier; });
  const auto assets =
      uniqueIdentifiers(file, profile.photos.assets, "photos", "assets", "localIdentifier",
                        [](const Asset& a) -> const std::string& { return a.localIdentifier; });
  uniqueIdentifiers(file, profile.photos.collections, "photos", "collections", "localIdentifier",
                    [](const ProfileCollection& c) -> const std::string& {
                      return c.collection.localIdentifier;
                    });

  std::uint64_t rows = 0;
  for (std::size_t i = 0; i < profile.events.size(); ++i) {
    const auto& event = profile.events[i];
    if (!eventCalendars.count(event.calendarIdentifier)) {
      failAt(file, {"events", std::to_string(i), "calendarIdentifier"},
             "no calendar in /calendars/events has this identifier");
    }
    rows += event.recurrence
                ? RecurrenceExpander::mostOccurrences(*event.recurrence, *event.event.startDate,
                                                      *event.event.endDate - *event.event.startDate,
                                                      ProfileEventStore::longestRange)
                : 1;
    if (rows > limits.eventRows) {
      failAt(file, {"events", std::to_string(i)},
             "with this event one query can return " + std::to_string(rows) +
                 " events and occurrences; a profile may give at most " +
                 std::to_string(limits.eventRows));
    }
    if (!event.recurrence) continue;
    if (event.event.timeZone) {
      if (!RecurrenceExpander::knowsTimeZone(*event.event.timeZone)) {
        failAt(file, {"events", std::to_string(i), "timeZone"}, "unknown time zone");
      }
    } else if (!RecurrenceExpander::knowsTimeZone(profile.device.timeZone.identifier)) {
      failAt(file, {"device", "timeZone", "identifier"},
             "unknown time zone (a floating recurring event is expanded in it)");
    }
  }
  if (profile.reminders) {
    for (std::size_t i = 0; i < profile.reminders->size(); ++i) {
      if (!reminderCalendars.count((*profile.reminders)[i].calendarIdentifier)) {
        failAt(file, {"reminders", std::to_string(i), "calendarIdentifier"},
               "no calendar in /calendars/reminders has this identifier");
      }
    }
  }
  for (std::size_t i = 0; i < profile.photos.collections.size(); ++i) {
    const auto& ids = profile.photos.collections[i].assetIdentifiers;
    for (std::size_t j = 0; j < ids.size(); ++j) {
      if (!assets.count(ids[j])) {
        failAt(file,
               {"photos", "collections", std::to_string(i), "assetIdentifiers", std::to_string(j)},
               "no asset in /photos/assets has this identifier");
      }
    }
  }
}

DeviceProfile readDeviceProfile(const ProfileText& text, const std::string& file,
                                const ProfileLimits& limits) {
  DeviceProfile profile;
  readProfileJson(text, profile, file, limits);
  checkDeviceProfile(profile, file, limits);
  return profile;
}

bool readDeviceProfileMember(std::string_view name, std::string_view text, DeviceProfile& profile,
                             const std::string& file, const ProfileLimits& limits) {
  bool found = false;
  describe(
      [&](Member member, auto& field) {
        if (found || member.name != name) return;
        found = true;
        std::string at = "/";
        appendPointerToken(at, name);
        readProfileJson(onePiece(text), field, file, limits, std::move(at));
      },
      profile);
  return found;
}

DeviceProfile readDeviceProfile(std::string_view text, const std::string& file,
                                const ProfileLimits& limits) {
  return readDeviceProfile(onePiece(text), file, limits);
}

DeviceProfile readDeviceProfileFile(const std::string& path, const ProfileLimits& limits) {
  const auto unreadable = [&path](const std::string& why) {
    return DeviceProfileError(path, "", "cannot read the file: " + why);
  };
  // Opened without waiting: opening a pipe would otherwise wait for a writer.
  const int descriptor = ::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (descriptor < 0) throw unreadable(std::strerror(errno));
  const OpenFile file(descriptor);
  struct stat status {};
  if (::fstat(descriptor, &status) != 0) throw unreadable(std::strerror(errno));
  if (S_ISDIR(status.st_mode)) throw unreadable("it is a directory");
  if (!S_ISREG(status.st_mode)) throw unreadable("it is not a regular file");
  if (static_cast<std::uint64_t>(status.st_size) > limits.bytes) failTooLarge(path, limits);

  std::vector<char> buffer(std::size_t{1} << 16);
  return readDeviceProfile(
      [&]() {
        ssize_t read = 0;
        do {
          read = ::read(descriptor, buffer.data(), buffer.size());
        } while (read < 0 && errno == EINTR);
        if (read < 0) throw unreadable(std::strerror(errno));
        return std::string_view(buffer.data(), static_cast<std::size_t>(read));
      },
      path, limits);
}

}  // namespace tavrin::platform
