#include "DeviceProfileWriter.hpp"

#include "JsonText.hpp"

#include <concepts>
#include <cstdio>

namespace tavrin::tool {

using namespace platform;

// The writers are found by the JsonText argument, so they live in this
// namespace (with internal linkage) rather than an unnamed one, where that
// lookup does not reach.

static void write(JsonText& json, const std::string& value) { json.string(value); }
static void write(JsonText& json, bool value) { json.boolean(value); }
static void write(JsonText& json, double value) { json.number(value); }
static void write(JsonText& json, float value) { json.number(value); }

template <std::integral Integer>
requires(!std::same_as<Integer, bool>) static void write(JsonText& json, Integer value) {
  if constexpr (std::is_signed_v<Integer>) {
    json.number(static_cast<std::int64_t>(value));
  } else {
    json.number(static_cast<std::uint64_t>(value));
  }
}

template <typename T>
static void write(JsonText& json, const std::optional<T>& value);
template <typename T>
static void write(JsonText& json, const std::vector<T>& values);

namespace {

// The members of one object. `member` leaves out a value equal to its default;
// `always` writes it whatever it is (for the members whose null means
// something other than leaving them out).
class Members {
 public:
  explicit Members(JsonText& json) : _json(json) { _json.beginObject(); }
  Members(const Members&) = delete;
  Members& operator=(const Members&) = delete;
  ~Members() { _json.endObject(); }

  template <typename T>
  Members& member(std::string_view name, const T& value, const T& fallback = T{}) {
    if (!(value == fallback)) always(name, value);
    return *this;
  }
  template <typename T>
  Members& always(std::string_view name, const T& value) {
    _json.key(name);
    write(_json, value);
    return *this;
  }
  // A list of objects, or an optional object: left out when empty or absent.
  template <typename T>
  Members& list(std::string_view name, const std::vector<T>& values) {
    if (!values.empty()) always(name, values);
    return *this;
  }
  template <typename T>
  Members& object(std::string_view name, const std::optional<T>& value) {
    if (value) always(name, *value);
    return *this;
  }

 private:
  JsonText& _json;
};

}  // namespace

static void write(JsonText& json, const SocialProfile& p) {
  Members(json)
      .member("urlString", p.urlString)
      .member("username", p.username)
      .member("userIdentifier", p.userIdentifier)
      .member("service", p.service);
}

static void write(JsonText& json, const InstantMessageAddress& a) {
  Members(json).member("username", a.username).member("service", a.service);
}

static void write(JsonText& json, const PostalAddress& a) {
  Members(json)
      .member("street", a.street)
      .member("city", a.city)
      .member("state", a.state)
      .member("postalCode", a.postalCode)
      .member("country", a.country)
      .member("isoCountryCode", a.isoCountryCode)
      .member("subAdministrativeArea", a.subAdministrativeArea)
      .member("subLocality", a.subLocality);
}

template <typename Value>
static void write(JsonText& json, const LabeledValue<Value>& v) {
  Members(json)
      .always("identifier", v.identifier)
      .always("label", v.label)
      .always("value", v.value);
}

static void write(JsonText& json, const Contact& c) {
  Members(json)
      .always("identifier", c.identifier)
      .member("birthday", c.birthday)
      .member("nonGregorianBirthday", c.nonGregorianBirthday)
      .member("contactType", c.contactType)
      .member("givenName", c.givenName)
      .member("middleName", c.middleName)
      .member("familyName", c.familyName)
      .member("previousFamilyName", c.previousFamilyName)
      .member("nameSuffix", c.nameSuffix)
      .member("namePrefix", c.namePrefix)
      .member("nickname", c.nickname)
      .member("phoneticGivenName", c.phoneticGivenName)
      .member("phoneticMiddleName", c.phoneticMiddleName)
      .member("phoneticFamilyName", c.phoneticFamilyName)
      .member("phoneticOrganizationName", c.phoneticOrganizationName)
      .member("organizationName", c.organizationName)
      .member("departmentName", c.departmentName)
      .member("jobTitle", c.jobTitle)
      .member("note", c.note)
      .member("imageDataAvailable", c.imageDataAvailable)
      .list("socialProfiles", c.socialProfiles)
      .list("phoneNumbers", c.phoneNumbers)
      .list("urlAddresses", c.urlAddresses)
      .list("postalAddresses", c.postalAddresses)
      .list("emailAddresses", c.emailAddresses)
      .list("contactRelations", c.contactRelations)
      .list("instantMessageAddresses", c.instantMessageAddresses);
}

static void write(JsonText& json, const ContactGroup& g) {
  Members(json).always("identifier", g.identifier).member("name", g.name);
}

static void write(JsonText& json, const CalendarSource& s) {
  Members(json)
      .member("sourceIdentifier", s.sourceIdentifier)
      .member("sourceType", s.sourceType)
      .member("title", s.title);
}

static void write(JsonText& json, const Calendar& c) {
  Members(json)
      .always("calendarIdentifier", c.calendarIdentifier)
      .member("colorComponentCount", c.colorComponentCount)
      .member("isImmutable", c.isImmutable)
      .member("type", c.type)
      .object("source", c.source)
      .member("isSubscribed", c.isSubscribed)
      .member("supportedEventAvailabilities", c.supportedEventAvailabilities);
}

static void write(JsonText& json, const Participant& p) {
  Members(json)
      .member("isCurrentUser", p.isCurrentUser)
      .member("name", p.name)
      .member("participantRole", p.participantRole)
      .member("participantStatus", p.participantStatus)
      .member("participantType", p.participantType);
}

static void write(JsonText& json, const Recurrence& r) {
  static constexpr const char* frequencies[] = {"daily", "weekly", "monthly", "yearly"};
  Members(json)
      .always("frequency", std::string(frequencies[static_cast<int>(r.frequency)]))
      .member("interval", r.interval, 1)
      .member("count", r.count)
      .member("until", r.until);
}

// The members events and reminders share as items of a calendar.
template <typename Item>
static void writeCalendarItemFields(Members& members, const Item& item, const std::string& calendar,
                                    bool recurring) {
  members.always("calendarIdentifier", calendar)
      .member("calendarItemIdentifier", item.calendarItemIdentifier)
      .member("hasNotes", item.hasNotes)
      .member("hasAttendees", item.hasAttendees)
      .member("hasAlarms", item.hasAlarms)
      // A recurring event has recurrence rules unless it says otherwise.
      .member("hasRecurrenceRules", item.hasRecurrenceRules, recurring)
      .member("location", item.location)
      .member("creationDate", item.creationDate)
      .member("lastModifiedDate", item.lastModifiedDate)
      .member("timeZone", item.timeZone)
      .member("attendeeCount", item.attendeeCount);
}

static void write(JsonText& json, const ProfileEvent& p) {
  const auto& e = p.event;
  Members members(json);
  writeCalendarItemFields(members, e, p.calendarIdentifier, p.recurrence.has_value());
  members.member("eventIdentifier", e.eventIdentifier)
      .member("availability", e.availability)
      .member("startDate", e.startDate)
      .member("endDate", e.endDate)
      .member("isAllDay", e.isAllDay)
      .member("occurrenceDate", e.occurrenceDate)
      .member("isDetached", e.isDetached)
      .object("organizer", e.organizer)
      .member("status", e.status)
      .object("recurrence", p.recurrence);
}

static void write(JsonText& json, const ProfileReminder& p) {
  const auto& r = p.reminder;
  Members members(json);
  writeCalendarItemFields(members, r, p.calendarIdentifier, false);
  members.member("startDate", r.startDate)
      .member("dueDate", r.dueDate)
      .member("isCompleted", r.isCompleted)
      .member("completionDate", r.completionDate)
      .member("priority", r.priority);
}

static void write(JsonText& json, const Coordinate& c) {
  Members(json).always("latitude", c.latitude).always("longitude", c.longitude);
}

static void write(JsonText& json, const Asset& a) {
  Members(json)
      .always("localIdentifier", a.localIdentifier)
      .member("mediaType", a.mediaType)
      .member("mediaSubtypes", a.mediaSubtypes)
      .member("sourceType", a.sourceType)
      .member("pixelWidth", a.pixelWidth)
      .member("pixelHeight", a.pixelHeight)
      .member("creationDate", a.creationDate)
      .member("modificationDate", a.modificationDate)
      .object("location", a.location)
      .member("duration", a.duration)
      .member("isFavorite", a.isFavorite)
      .member("isHidden", a.isHidden);
}

static void write(JsonText& json, const ProfileCollection& p) {
  const auto& c = p.collection;
  Members(json)
      .always("localIdentifier", c.localIdentifier)
      .member("assetCollectionType", c.assetCollectionType)
      .member("assetCollectionSubtype", c.assetCollectionSubtype)
      .member("startDate", c.startDate)
      .member("endDate", c.endDate)
      .object("approximateLocation", c.approximateLocation)
      .member("localizedLocationNames", c.localizedLocationNames)
      .member("assetIdentifiers", p.assetIdentifiers);
}

static void write(JsonText& json, const MediaTime& t) {
  Members(json)
      .member("value", t.value)
      .member("timescale", t.timescale)
      .member("flags", t.flags)
      .member("epoch", t.epoch);
}

// A four-character code as its characters when they are printable ("vide"),
// else as its number.
static void writeFourCharCode(JsonText& json, std::uint32_t code) {
  std::string text;
  for (int shift = 24; shift >= 0; shift -= 8) {
    const auto c = static_cast<char>((code >> shift) & 0xFF);
    if (c < 0x20 || c >= 0x7F) {
      json.number(static_cast<std::uint64_t>(code));
      return;
    }
    text += c;
  }
  json.string(text);
}

static void write(JsonText& json, const FormatDescription& f) {
  Members members(json);
  members.member("width", f.width)
      .member("height", f.height)
      .always("frameDuration", f.frameDuration)
      .member("frameQuanta", f.frameQuanta);
  json.key("mediaType");
  writeFourCharCode(json, f.mediaType);
  json.key("mediaSubType");
  writeFourCharCode(json, f.mediaSubType);
}

static void write(JsonText& json, const DepthDataFormat& d) {
  Members(json)
      .member("isGlobalToneMappingSupported", d.isGlobalToneMappingSupported)
      .member("isHighestPhotoQualitySupported", d.isHighestPhotoQualitySupported)
      .member("isMultiCamSupported", d.isMultiCamSupported)
      .member("isPortraitEffectsMatteStillImageDeliverySupported",
              d.isPortraitEffectsMatteStillImageDeliverySupported)
      .member("autoFocusSystem", d.autoFocusSystem)
      .member("isVideoBinned", d.isVideoBinned)
      .member("isVideoHDRSupported", d.isVideoHDRSupported);
}

static void write(JsonText& json, const CaptureDevice& d) {
  static const CaptureDevice defaults;
  Members(json)
      .member("deviceType", d.deviceType)
      .member("localizedName", d.localizedName)
      .member("isConnected", d.isConnected)
      .member("isVirtualDevice", d.isVirtualDevice)
      .member("constituentDeviceCount", d.constituentDeviceCount)
      .member("lensAperture", d.lensAperture)
      .member("position", d.position)
      .member("mediaTypes", d.mediaTypes)
      .member("videoZoomFactor", d.videoZoomFactor, defaults.videoZoomFactor)
      .member("minAvailableVideoZoomFactor", d.minAvailableVideoZoomFactor,
              defaults.minAvailableVideoZoomFactor)
      .member("maxAvailableVideoZoomFactor", d.maxAvailableVideoZoomFactor,
              defaults.maxAvailableVideoZoomFactor)
      .member("isFlashAvailable", d.isFlashAvailable)
      .member("isFlashActive", d.isFlashActive)
      .member("isRampingVideoZoom", d.isRampingVideoZoom)
      .member("supportedFocusModes", d.supportedFocusModes)
      .member("isFocusPointOfInterestSupported", d.isFocusPointOfInterestSupported)
      .member("isAdjustingFocus", d.isAdjustingFocus)
      .member("isSmoothAutoFocusEnabled", d.isSmoothAutoFocusEnabled)
      .member("isSmoothAutoFocusSupported", d.isSmoothAutoFocusSupported)
      .member("isAutoFocusRangeRestrictionSupported", d.isAutoFocusRangeRestrictionSupported)
      .member("hasFlash", d.hasFlash)
      .member("hasTorch", d.hasTorch)
      .member("isTorchActive", d.isTorchActive)
      .member("isTorchAvailable", d.isTorchAvailable)
      .member("torchMode", d.torchMode)
      .member("maxWhiteBalanceGain", d.maxWhiteBalanceGain, defaults.maxWhiteBalanceGain)
      .object("activeDepthDataFormat", d.activeDepthDataFormat)
      .always("activeFormat", d.activeFormat);
}

static void write(JsonText& json, const FileSystemSizes& s) {
  Members(json).member("size", s.size).member("freeSize", s.freeSize);
}

static void write(JsonText& json, const LocaleFacts& l) {
  Members(json)
      .member("languageCode", l.languageCode)
      .member("regionCode", l.regionCode)
      .member("currencyCode", l.currencyCode)
      .member("currencySymbol", l.currencySymbol)
      .member("identifier", l.identifier)
      .member("collatorIdentifier", l.collatorIdentifier)
      .member("collationIdentifier", l.collationIdentifier)
      .member("scriptCode", l.scriptCode)
      .member("usesMetricSystem", l.usesMetricSystem);
}

static void write(JsonText& json, const TimeZoneFacts& t) {
  Members(json).member("identifier", t.identifier).member("abbreviation", t.abbreviation);
}

static void write(JsonText& json, const Carrier& c) {
  Members(json)
      .member("allowsVOIP", c.allowsVOIP)
      .member("carrierName", c.carrierName)
      .member("isoCountryCode", c.isoCountryCode)
      .member("mobileCountryCode", c.mobileCountryCode)
      .member("mobileNetworkCode", c.mobileNetworkCode);
}

static void write(JsonText& json, const PermissionSetting& p) {
  Members(json).always("status", p.status).member("answer", p.answer);
}

template <typename T>
static void write(JsonText& json, const std::optional<T>& value) {
  if (value) {
    write(json, *value);
  } else {
    json.null();
  }
}

template <typename T>
static void write(JsonText& json, const std::vector<T>& values) {
  json.beginArray();
  for (const auto& value : values) write(json, value);
  json.endArray();
}

namespace {

std::string uuidText(const Uuid& uuid) {
  std::string text;
  char digits[3];
  for (std::size_t i = 0; i < uuid.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    std::snprintf(digits, sizeof digits, "%02X", uuid[i]);
    text += digits;
  }
  return text;
}

// The machine field up to its last non-zero byte; zeros inside stay as "\u0000".
std::string machineText(const std::array<std::uint8_t, 256>& machine) {
  std::size_t end = machine.size();
  while (end > 0 && machine[end - 1] == 0) --end;
  return std::string(machine.begin(), machine.begin() + static_cast<std::ptrdiff_t>(end));
}

void writeDevice(JsonText& json, const ProfileDevice& d) {
  static const ProfileDevice defaults;
  std::optional<std::string> vendor;
  if (d.identifierForVendor) vendor = uuidText(*d.identifierForVendor);
  Members members(json);
  members.member("model", d.model)
      .member("localizedModel", d.localizedModel)
      .member("systemName", d.systemName)
      .member("systemVersion", d.systemVersion)
      .member("identifierForVendor", vendor)
      .member("machine", machineText(d.machine))
      .member("isBatteryMonitoringEnabled", d.isBatteryMonitoringEnabled)
      .member("isProximityMonitoringEnabled", d.isProximityMonitoringEnabled)
      .member("isGeneratingDeviceOrientationNotifications",
              d.isGeneratingDeviceOrientationNotifications)
      .member("proximityState", d.proximityState)
      .member("isMultitaskingSupported", d.isMultitaskingSupported);
  // Only an explicit null makes the query fail; the default reports no sizes.
  if (!d.fileSystem || d.fileSystem->size || d.fileSystem->freeSize) {
    members.always("fileSystem", d.fileSystem);
  }
  members.member("physicalMemory", d.physicalMemory)
      .always("locale", d.locale)
      .always("timeZone", d.timeZone)
      .object("carrier", d.carrier)
      .member("radioAccessTechnology", d.radioAccessTechnology);
  if (!d.libraryBundleStrings.empty()) {
    json.key("libraryBundle");
    Members bundle(json);
    for (const auto& [key, value] : d.libraryBundleStrings) bundle.always(key, value);
  }
}

}  // namespace

void writeDeviceProfile(const DeviceProfile& profile, std::ostream& out,
                        std::string_view description) {
  static const ProfileContacts defaultContacts = [] {
    ProfileContacts contacts;
    contacts.failureMessage = "The operation couldn't be completed.";
    return contacts;
  }();
  JsonText json(out);
  Members top(json);
  if (!description.empty()) top.always("description", std::string(description));

  json.key("device");
  writeDevice(json, profile.device);

  static constexpr const char* permissionNames[] = {"photoLibrary", "contacts", "calendarEvents",
                                                    "reminders"};
  json.key("permissions");
  {
    Members permissions(json);
    for (std::size_t i = 0; i < profile.permissions.size(); ++i) {
      permissions.always(permissionNames[i], profile.permissions[i]);
    }
  }

  const auto& contacts = profile.contacts;
  json.key("contacts");
  {
    Members members(json);
    members.list("list", contacts.list)
        .member("failAfter", contacts.failAfter)
        .member("failureMessage", contacts.failureMessage, defaultContacts.failureMessage);
    // The group query either answers or fails; the profile says one of the two.
    if (contacts.groupsError) {
      members.always("groupsError", contacts.groupsError);
    } else {
      members.list("groups", contacts.groups);
    }
  }

  json.key("calendars");
  Members(json).list("events", profile.eventCalendars).list("reminders", profile.reminderCalendars);
  top.list("events", profile.events);
  // Null is the fetch that delivers no list; an empty list is an empty answer.
  if (!profile.reminders || !profile.reminders->empty()) top.always("reminders", profile.reminders);

  json.key("photos");
  Members(json).list("assets", profile.assets).list("collections", profile.collections);
  if (!profile.captureDevices || !profile.captureDevices->empty()) {
    top.always("captureDevices", profile.captureDevices);
  }

  const auto& l = profile.location;
  json.key("location");
  Members(json)
      .member("significantLocationChangeMonitoringAvailable",
              l.significantLocationChangeMonitoringAvailable)
      .member("headingAvailable", l.headingAvailable)
      .member("isRangingAvailable", l.isRangingAvailable)
      .member("locationServicesEnabled", l.locationServicesEnabled);

  if (profile.clock) {
    json.key("clock");
    Members(json).always("now", profile.clock->now).member("step", profile.clock->step);
  }
  if (profile.draws) {
    json.key("random");
    Members(json).always("draws", *profile.draws);
  }
}

}  // namespace tavrin::tool
