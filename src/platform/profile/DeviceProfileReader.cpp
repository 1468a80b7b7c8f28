#include "platform/profile/DeviceProfileReader.hpp"

#include "platform/profile/ProfileObject.hpp"
#include "platform/profile/ProfileStructReaders.hpp"
#include "platform/profile/RecurrenceExpander.hpp"

#include <algorithm>
#include <charconv>
#include <set>
#include <unordered_set>

namespace tavrin::platform {

namespace {

int hexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

// UUID text, 8-4-4-4-12 hexadecimal digits in either case, as bytes.
std::optional<Uuid> parseUuid(std::string_view text) {
  if (text.size() != 36) return {};
  Uuid bytes{};
  std::size_t byte = 0;
  for (std::size_t i = 0; i < text.size();) {
    if (i == 8 || i == 13 || i == 18 || i == 23) {
      if (text[i++] != '-') return {};
      continue;
    }
    const int high = hexDigit(text[i]), low = hexDigit(text[i + 1]);
    if (high < 0 || low < 0) return {};
    bytes[byte++] = static_cast<std::uint8_t>(high * 16 + low);
    i += 2;
  }
  return bytes;
}

// "14.2.1" as {14, 2, 1}; absent unless it is numbers (of up to nine digits)
// joined by single dots. The empty text has no parts.
std::optional<std::vector<int>> parseVersion(std::string_view text) {
  std::vector<int> parts;
  if (text.empty()) return parts;
  for (std::size_t start = 0;;) {
    const auto dot = std::min(text.find('.', start), text.size());
    int part = 0;
    const auto* first = text.data() + start;
    const auto* last = text.data() + dot;
    const auto [end, error] = std::from_chars(first, last, part);
    // Up to nine digits a part: every such number fits an int.
    if (first == last || last - first > 9 || end != last || error != std::errc() || *first == '-') {
      return {};
    }
    parts.push_back(part);
    if (dot == text.size()) return parts;
    start = dot + 1;
  }
}

void readDevice(const ProfileValue& value, ProfileDevice& out) {
  ProfileObject object(value);
  object.read("model", out.model)
      .read("localizedModel", out.localizedModel)
      .read("systemName", out.systemName)
      .read("systemVersion", out.systemVersion);
  const auto parts = parseVersion(out.systemVersion);
  if (!parts) object["systemVersion"].fail(R"(expected a version such as "14.2")");
  out.systemVersionParts = *parts;

  std::optional<std::string> vendor;
  object.read("identifierForVendor", vendor);
  if (vendor) {
    out.identifierForVendor = parseUuid(*vendor);
    if (!out.identifierForVendor) {
      object["identifierForVendor"].fail(
          R"(expected UUID text such as "E621E1F8-C36C-495A-93FC-0C247A3E6E5F")");
    }
  }

  std::string machine;
  object.read("machine", machine);
  if (machine.size() >= out.machine.size()) object["machine"].fail("expected at most 255 bytes");
  std::copy(machine.begin(), machine.end(), out.machine.begin());

  object.read("isBatteryMonitoringEnabled", out.isBatteryMonitoringEnabled)
      .read("isProximityMonitoringEnabled", out.isProximityMonitoringEnabled)
      .read("isGeneratingDeviceOrientationNotifications",
            out.isGeneratingDeviceOrientationNotifications)
      .read("proximityState", out.proximityState)
      .read("isMultitaskingSupported", out.isMultitaskingSupported);

  // Only an explicit null makes the file-system query fail: left out, it keeps
  // the default, a file system that reports no sizes.
  object.read("fileSystem", out.fileSystem)
      .read("physicalMemory", out.physicalMemory)
      .read("locale", out.locale)
      .read("timeZone", out.timeZone)
      .read("carrier", out.carrier)
      .read("radioAccessTechnology", out.radioAccessTechnology);

  // Any entry is allowed; only texts are ever asked for.
  const auto bundle = object["libraryBundle"];
  if (!bundle.isNull()) {
    if (!bundle.json().is_object()) bundle.expected("an object", true);
    for (const auto& [key, entry] : bundle.json().items()) {
      if (entry.is_string()) out.libraryBundleStrings[key] = entry.template get<std::string>();
    }
  }
  object.finish();
}

void readPermissions(const ProfileValue& value, PermissionSettings& out) {
  ProfileObject object(value);
  object.read("photoLibrary", out[static_cast<std::size_t>(Permission::photoLibrary)])
      .read("contacts", out[static_cast<std::size_t>(Permission::contacts)])
      .read("calendarEvents", out[static_cast<std::size_t>(Permission::calendarEvents)])
      .read("reminders", out[static_cast<std::size_t>(Permission::reminders)])
      .finish();
}

void readContacts(const ProfileValue& value, ProfileContacts& out) {
  ProfileObject object(value);
  out.failureMessage = "The operation couldn't be completed.";
  object.read("list", out.list)
      .read("failAfter", out.failAfter)
      .read("failureMessage", out.failureMessage)
      .read("groups", out.groups)
      .read("groupsError", out.groupsError);
  if (out.groupsError && !object["groups"].missing()) {
    object["groupsError"].fail("give either groups or groupsError, not both");
  }
  object.finish();
}

void readCalendars(const ProfileValue& value, DeviceProfile& out) {
  ProfileObject object(value);
  object.read("events", out.eventCalendars).read("reminders", out.reminderCalendars).finish();
}

void readPhotos(const ProfileValue& value, DeviceProfile& out) {
  ProfileObject object(value);
  object.read("assets", out.assets).read("collections", out.collections).finish();
}

void readLocation(const ProfileValue& value, ProfileLocation& out) {
  ProfileObject object(value);
  object
      .read("significantLocationChangeMonitoringAvailable",
            out.significantLocationChangeMonitoringAvailable)
      .read("headingAvailable", out.headingAvailable)
      .read("isRangingAvailable", out.isRangingAvailable)
      .read("locationServicesEnabled", out.locationServicesEnabled)
      .finish();
}

void readClock(const ProfileValue& value, std::optional<ClockSetting>& out) {
  ProfileObject object(value);
  out.emplace();
  object.require("now", out->now).read("step", out->step).finish();
}

void readRandom(const ProfileValue& value, std::optional<std::vector<std::uint32_t>>& out) {
  ProfileObject object(value);
  object.read("draws", out);
  if (out && out->empty()) object["draws"].fail("expected at least one draw");
  object.finish();
}

// Reads the member `name` with `read` when it is there.
template <typename Read>
void readSection(ProfileObject& object, std::string_view name, Read read) {
  const auto member = object[name];
  if (!member.missing()) read(member);
}

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
// reference names one thing.
template <typename Items, typename Identifier>
std::unordered_set<std::string> uniqueIdentifiers(const std::string& file, const Items& items,
                                                  const std::string& list, const std::string& list2,
                                                  const std::string& member, Identifier id) {
  std::unordered_set<std::string> seen;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (!seen.insert(id(items[i])).second) {
      failAt(file, {list, list2, std::to_string(i), member}, "duplicate identifier");
    }
  }
  return seen;
}

// The checks across sections: references resolve, and every time zone a
// recurrence is expanded in is one the calendar knows.
void checkReferences(const DeviceProfile& profile, const std::string& file) {
  const auto eventCalendars =
      uniqueIdentifiers(file, profile.eventCalendars, "calendars", "events", "calendarIdentifier",
                        [](const Calendar& c) { return c.calendarIdentifier; });
  const auto reminderCalendars = uniqueIdentifiers(
      file, profile.reminderCalendars, "calendars", "reminders", "calendarIdentifier",
      [](const Calendar& c) { return c.calendarIdentifier; });
  const auto assets = uniqueIdentifiers(file, profile.assets, "photos", "assets", "localIdentifier",
                                        [](const Asset& a) { return a.localIdentifier; });
  uniqueIdentifiers(file, profile.collections, "photos", "collections", "localIdentifier",
                    [](const ProfileCollection& c) { return c.collection.localIdentifier; });

  for (std::size_t i = 0; i < profile.events.size(); ++i) {
    const auto& event = profile.events[i];
    if (!eventCalendars.count(event.calendarIdentifier)) {
      failAt(file, {"events", std::to_string(i), "calendarIdentifier"},
             "no calendar in /calendars/events has this identifier");
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
  for (std::size_t i = 0; i < profile.collections.size(); ++i) {
    const auto& ids = profile.collections[i].assetIdentifiers;
    for (std::size_t j = 0; j < ids.size(); ++j) {
      if (!assets.count(ids[j])) {
        failAt(file,
               {"photos", "collections", std::to_string(i), "assetIdentifiers", std::to_string(j)},
               "no asset in /photos/assets has this identifier");
      }
    }
  }
}

// Parses the text, rejecting a member that appears twice in one object (JSON
// readers differ in which of the two they keep, so the profile is ambiguous).
nlohmann::json parseStrict(std::string_view text, const std::string& file) {
  struct Frame {
    bool array = false;
    std::size_t index = 0;
    std::string name;
    std::set<std::string> names;
  };
  std::vector<Frame> frames;
  const auto pointerTo = [&frames] {
    std::string pointer;
    for (const auto& frame : frames) {
      pointer += '/';
      if (frame.array) {
        pointer += std::to_string(frame.index);
      } else {
        appendPointerToken(pointer, frame.name);
      }
    }
    return pointer;
  };
  const auto elementDone = [&frames] {
    if (!frames.empty() && frames.back().array) ++frames.back().index;
  };
  using ParseEvent = nlohmann::json::parse_event_t;
  const nlohmann::json::parser_callback_t callback = [&](int, ParseEvent event,
                                                         nlohmann::json& parsed) {
    switch (event) {
      case ParseEvent::object_start: frames.emplace_back().array = false; break;
      case ParseEvent::array_start: frames.emplace_back().array = true; break;
      case ParseEvent::key: {
        auto& frame = frames.back();
        frame.name = parsed.get<std::string>();
        if (!frame.names.insert(frame.name).second) {
          throw DeviceProfileError(file, pointerTo(), "duplicate member");
        }
        break;
      }
      case ParseEvent::object_end:
      case ParseEvent::array_end:
        frames.pop_back();
        elementDone();
        break;
      case ParseEvent::value: elementDone(); break;
    }
    return true;
  };
  try {
    return nlohmann::json::parse(text.begin(), text.end(), callback);
  } catch (const nlohmann::json::exception& error) {
    // "[json.exception.parse_error.101] parse error at line 1, column 2: ..."
    std::string reason = error.what();
    if (const auto end = reason.find("] ");
        reason.rfind("[json.exception", 0) == 0 && end != std::string::npos) {
      reason.erase(0, end + 2);
    }
    throw DeviceProfileError(file, "", reason);
  }
}

}  // namespace

DeviceProfile readDeviceProfile(std::string_view text, const std::string& file) {
  const auto json = parseStrict(text, file);
  const ProfileValue root(json, file);
  ProfileObject object(root);
  DeviceProfile profile;
  std::string ignored;
  object.read("$schema", ignored).read("description", ignored);
  readSection(object, "device", [&](auto& v) { readDevice(v, profile.device); });
  readSection(object, "permissions", [&](auto& v) { readPermissions(v, profile.permissions); });
  readSection(object, "contacts", [&](auto& v) { readContacts(v, profile.contacts); });
  readSection(object, "calendars", [&](auto& v) { readCalendars(v, profile); });
  object.read("events", profile.events);
  object.read("reminders", profile.reminders);
  readSection(object, "photos", [&](auto& v) { readPhotos(v, profile); });
  object.read("captureDevices", profile.captureDevices);
  readSection(object, "location", [&](auto& v) { readLocation(v, profile.location); });
  readSection(object, "clock", [&](auto& v) { readClock(v, profile.clock); });
  readSection(object, "random", [&](auto& v) { readRandom(v, profile.draws); });
  object.finish();
  checkReferences(profile, file);
  return profile;
}

}  // namespace tavrin::platform
