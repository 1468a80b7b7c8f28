#pragma once

#include "platform/profile/DeviceProfile.hpp"

#include <concepts>
#include <string_view>
#include <type_traits>

namespace tavrin::platform {

// The members of every object of a device profile, listed once per struct:
// the profile reader reads by these lists, the generator's writer writes by
// them and a test holds the published JSON Schema to them.
//
// `describe(visit, s...)` calls `visit(member, s.field...)` for each member in
// the order a profile is written. It takes one object (to read or write it)
// or several of the same type in step (to compare a value with its defaults).

// A member's name and how it is treated beyond its value's type.
struct Member {
  // Implicit: most members are just a name.
  constexpr Member(const char* memberName) : name(memberName) {}
  constexpr Member(std::string_view memberName, bool isRequired, bool isAlways)
      : name(memberName), required(isRequired), always(isAlways) {}

  std::string_view name;
  bool required = false;  // a profile must give it
  bool always = false;    // written even when it holds its default
};

// A member a profile must give (and so is always written).
constexpr Member required(std::string_view name) { return {name, true, true}; }
// A member written even when it holds its default, because a reader of the
// file would otherwise have to know that default.
constexpr Member always(std::string_view name) { return {name, false, true}; }

// Members whose JSON form is not their C++ type's: each wraps a reference to
// the field (const or not) and names the form.

// A four-character code: its number, or its four printable characters
// ("vide"), the first in the highest byte.
template <typename U>
struct FourCharCode {
  static constexpr bool isCodec = true;
  U& value;
};
// A vendor identifier as UUID text, 8-4-4-4-12 hexadecimal digits, or null.
template <typename U>
struct UuidText {
  static constexpr bool isCodec = true;
  U& value;
};
// uname's zero-padded machine field as text of at most 255 bytes.
template <typename U>
struct MachineText {
  static constexpr bool isCodec = true;
  U& value;
};
// A recurrence's frequency by name: "daily", "weekly", "monthly", "yearly".
template <typename U>
struct FrequencyName {
  static constexpr bool isCodec = true;
  U& value;
};
// The library's information dictionary: any members with any values, of
// which only the texts are kept (only texts are ever asked for); or null.
template <typename U>
struct BundleStrings {
  static constexpr bool isCodec = true;
  U& value;
};
template <typename U>
FourCharCode(U&) -> FourCharCode<U>;
template <typename U>
UuidText(U&) -> UuidText<U>;
template <typename U>
MachineText(U&) -> MachineText<U>;
template <typename U>
FrequencyName(U&) -> FrequencyName<U>;
template <typename U>
BundleStrings(U&) -> BundleStrings<U>;

template <typename T>
concept ProfileCodec = std::remove_cvref_t<T>::isCodec;

// Every one of `S...` is a (possibly const) T.
template <typename T, typename... S>
concept AllOf = sizeof...(S) > 0 && (std::same_as<std::remove_const_t<S>, T> && ...);

template <typename Visit, typename... S>
requires AllOf<SocialProfile, S...>
void describe(Visit&& visit, S&... s) {
  visit("urlString", s.urlString...);
  visit("username", s.username...);
  visit("userIdentifier", s.userIdentifier...);
  visit("service", s.service...);
}

template <typename Visit, typename... S>
requires AllOf<InstantMessageAddress, S...>
void describe(Visit&& visit, S&... s) {
  visit("username", s.username...);
  visit("service", s.service...);
}

template <typename Visit, typename... S>
requires AllOf<PostalAddress, S...>
void describe(Visit&& visit, S&... s) {
  visit("street", s.street...);
  visit("city", s.city...);
  visit("state", s.state...);
  visit("postalCode", s.postalCode...);
  visit("country", s.country...);
  visit("isoCountryCode", s.isoCountryCode...);
  visit("subAdministrativeArea", s.subAdministrativeArea...);
  visit("subLocality", s.subLocality...);
}

template <typename T>
inline constexpr bool isLabeledValue = false;
template <typename Value>
inline constexpr bool isLabeledValue<LabeledValue<Value>> = true;

template <typename Visit, typename... S>
requires(sizeof...(S) > 0 &&
         (isLabeledValue<std::remove_const_t<S>> && ...)) void describe(Visit&& visit, S&... s) {
  visit(always("identifier"), s.identifier...);
  visit(always("label"), s.label...);
  visit(always("value"), s.value...);
}

template <typename Visit, typename... S>
requires AllOf<Contact, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("identifier"), s.identifier...);
  visit("birthday", s.birthday...);
  visit("nonGregorianBirthday", s.nonGregorianBirthday...);
  visit("contactType", s.contactType...);
  visit("givenName", s.givenName...);
  visit("middleName", s.middleName...);
  visit("familyName", s.familyName...);
  visit("previousFamilyName", s.previousFamilyName...);
  visit("nameSuffix", s.nameSuffix...);
  visit("namePrefix", s.namePrefix...);
  visit("nickname", s.nickname...);
  visit("phoneticGivenName", s.phoneticGivenName...);
  visit("phoneticMiddleName", s.phoneticMiddleName...);
  visit("phoneticFamilyName", s.phoneticFamilyName...);
  visit("phoneticOrganizationName", s.phoneticOrganizationName...);
  visit("organizationName", s.organizationName...);
  visit("departmentName", s.departmentName...);
  visit("jobTitle", s.jobTitle...);
  visit("note", s.note...);
  visit("imageDataAvailable", s.imageDataAvailable...);
  visit("socialProfiles", s.socialProfiles...);
  visit("phoneNumbers", s.phoneNumbers...);
  visit("urlAddresses", s.urlAddresses...);
  visit("postalAddresses", s.postalAddresses...);
  visit("emailAddresses", s.emailAddresses...);
  visit("contactRelations", s.contactRelations...);
  visit("instantMessageAddresses", s.instantMessageAddresses...);
}

template <typename Visit, typename... S>
requires AllOf<ContactGroup, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("identifier"), s.identifier...);
  visit("name", s.name...);
}

template <typename Visit, typename... S>
requires AllOf<ProfileContacts, S...>
void describe(Visit&& visit, S&... s) {
  visit("list", s.list...);
  visit("failAfter", s.failAfter...);
  visit("failureMessage", s.failureMessage...);
  visit("groups", s.groups...);
  visit("groupsError", s.groupsError...);
}

template <typename Visit, typename... S>
requires AllOf<CalendarSource, S...>
void describe(Visit&& visit, S&... s) {
  visit("sourceIdentifier", s.sourceIdentifier...);
  visit("sourceType", s.sourceType...);
  visit("title", s.title...);
}

template <typename Visit, typename... S>
requires AllOf<Calendar, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("calendarIdentifier"), s.calendarIdentifier...);
  visit("colorComponentCount", s.colorComponentCount...);
  visit("isImmutable", s.isImmutable...);
  visit("type", s.type...);
  visit("source", s.source...);
  visit("isSubscribed", s.isSubscribed...);
  visit("supportedEventAvailabilities", s.supportedEventAvailabilities...);
}

template <typename Visit, typename... S>
requires AllOf<ProfileCalendars, S...>
void describe(Visit&& visit, S&... s) {
  visit("events", s.events...);
  visit("reminders", s.reminders...);
}

template <typename Visit, typename... S>
requires AllOf<Participant, S...>
void describe(Visit&& visit, S&... s) {
  visit("isCurrentUser", s.isCurrentUser...);
  visit("name", s.name...);
  visit("participantRole", s.participantRole...);
  visit("participantStatus", s.participantStatus...);
  visit("participantType", s.participantType...);
}

template <typename Visit, typename... S>
requires AllOf<Recurrence, S...>
void describe(Visit&& visit, S&... s) {
  visit(required("frequency"), FrequencyName{s.frequency}...);
  visit("interval", s.interval...);
  visit("count", s.count...);
  visit("until", s.until...);
}

// The members events and reminders share as items of a calendar, after the
// calendar they are in.
template <typename Visit, typename... Item>
void describeCalendarItem(Visit&& visit, Item&... item) {
  visit("calendarItemIdentifier", item.calendarItemIdentifier...);
  visit("hasNotes", item.hasNotes...);
  visit("hasAttendees", item.hasAttendees...);
  visit("hasAlarms", item.hasAlarms...);
  visit("hasRecurrenceRules", item.hasRecurrenceRules...);
  visit("location", item.location...);
  visit("creationDate", item.creationDate...);
  visit("lastModifiedDate", item.lastModifiedDate...);
  visit("timeZone", item.timeZone...);
  visit("attendeeCount", item.attendeeCount...);
}

template <typename Visit, typename... S>
requires AllOf<ProfileEvent, S...>
void describe(Visit&& visit, S&... s) {
  visit(required("calendarIdentifier"), s.calendarIdentifier...);
  describeCalendarItem(visit, s.event...);
  visit("eventIdentifier", s.event.eventIdentifier...);
  visit("availability", s.event.availability...);
  visit("startDate", s.event.startDate...);
  visit("endDate", s.event.endDate...);
  visit("isAllDay", s.event.isAllDay...);
  visit("occurrenceDate", s.event.occurrenceDate...);
  visit("isDetached", s.event.isDetached...);
  visit("organizer", s.event.organizer...);
  visit("status", s.event.status...);
  visit("recurrence", s.recurrence...);
}

// The defaults an event's members take when left out: a recurring event has
// recurrence rules unless the profile says otherwise.
inline const ProfileEvent& profileDefaults(const ProfileEvent& event) {
  static const ProfileEvent single;
  static const ProfileEvent recurring = [] {
    ProfileEvent defaults;
    defaults.event.hasRecurrenceRules = true;
    return defaults;
  }();
  return event.recurrence ? recurring : single;
}

template <typename Visit, typename... S>
requires AllOf<ProfileReminder, S...>
void describe(Visit&& visit, S&... s) {
  visit(required("calendarIdentifier"), s.calendarIdentifier...);
  describeCalendarItem(visit, s.reminder...);
  visit("startDate", s.reminder.startDate...);
  visit("dueDate", s.reminder.dueDate...);
  visit("isCompleted", s.reminder.isCompleted...);
  visit("completionDate", s.reminder.completionDate...);
  visit("priority", s.reminder.priority...);
}

template <typename Visit, typename... S>
requires AllOf<Coordinate, S...>
void describe(Visit&& visit, S&... s) {
  visit(required("latitude"), s.latitude...);
  visit(required("longitude"), s.longitude...);
}

template <typename Visit, typename... S>
requires AllOf<Asset, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("localIdentifier"), s.localIdentifier...);
  visit("mediaType", s.mediaType...);
  visit("mediaSubtypes", s.mediaSubtypes...);
  visit("sourceType", s.sourceType...);
  visit("pixelWidth", s.pixelWidth...);
  visit("pixelHeight", s.pixelHeight...);
  visit("creationDate", s.creationDate...);
  visit("modificationDate", s.modificationDate...);
  visit("location", s.location...);
  visit("duration", s.duration...);
  visit("isFavorite", s.isFavorite...);
  visit("isHidden", s.isHidden...);
}

template <typename Visit, typename... S>
requires AllOf<ProfileCollection, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("localIdentifier"), s.collection.localIdentifier...);
  visit("assetCollectionType", s.collection.assetCollectionType...);
  visit("assetCollectionSubtype", s.collection.assetCollectionSubtype...);
  visit("startDate", s.collection.startDate...);
  visit("endDate", s.collection.endDate...);
  visit("approximateLocation", s.collection.approximateLocation...);
  visit("localizedLocationNames", s.collection.localizedLocationNames...);
  visit("assetIdentifiers", s.assetIdentifiers...);
}

template <typename Visit, typename... S>
requires AllOf<ProfilePhotos, S...>
void describe(Visit&& visit, S&... s) {
  visit("assets", s.assets...);
  visit("collections", s.collections...);
}

template <typename Visit, typename... S>
requires AllOf<MediaTime, S...>
void describe(Visit&& visit, S&... s) {
  visit("value", s.value...);
  visit("timescale", s.timescale...);
  visit("flags", s.flags...);
  visit("epoch", s.epoch...);
}

template <typename Visit, typename... S>
requires AllOf<FormatDescription, S...>
void describe(Visit&& visit, S&... s) {
  visit("width", s.width...);
  visit("height", s.height...);
  visit(always("frameDuration"), s.frameDuration...);
  visit("frameQuanta", s.frameQuanta...);
  visit(always("mediaType"), FourCharCode{s.mediaType}...);
  visit(always("mediaSubType"), FourCharCode{s.mediaSubType}...);
}

template <typename Visit, typename... S>
requires AllOf<DepthDataFormat, S...>
void describe(Visit&& visit, S&... s) {
  visit("isGlobalToneMappingSupported", s.isGlobalToneMappingSupported...);
  visit("isHighestPhotoQualitySupported", s.isHighestPhotoQualitySupported...);
  visit("isMultiCamSupported", s.isMultiCamSupported...);
  visit("isPortraitEffectsMatteStillImageDeliverySupported",
        s.isPortraitEffectsMatteStillImageDeliverySupported...);
  visit("autoFocusSystem", s.autoFocusSystem...);
  visit("isVideoBinned", s.isVideoBinned...);
  visit("isVideoHDRSupported", s.isVideoHDRSupported...);
}

template <typename Visit, typename... S>
requires AllOf<CaptureDevice, S...>
void describe(Visit&& visit, S&... s) {
  visit("deviceType", s.deviceType...);
  visit("localizedName", s.localizedName...);
  visit("isConnected", s.isConnected...);
  visit("isVirtualDevice", s.isVirtualDevice...);
  visit("constituentDeviceCount", s.constituentDeviceCount...);
  visit("lensAperture", s.lensAperture...);
  visit("position", s.position...);
  visit("mediaTypes", s.mediaTypes...);
  visit("videoZoomFactor", s.videoZoomFactor...);
  visit("minAvailableVideoZoomFactor", s.minAvailableVideoZoomFactor...);
  visit("maxAvailableVideoZoomFactor", s.maxAvailableVideoZoomFactor...);
  visit("isFlashAvailable", s.isFlashAvailable...);
  visit("isFlashActive", s.isFlashActive...);
  visit("isRampingVideoZoom", s.isRampingVideoZoom...);
  visit("supportedFocusModes", s.supportedFocusModes...);
  visit("isFocusPointOfInterestSupported", s.isFocusPointOfInterestSupported...);
  visit("isAdjustingFocus", s.isAdjustingFocus...);
  visit("isSmoothAutoFocusEnabled", s.isSmoothAutoFocusEnabled...);
  visit("isSmoothAutoFocusSupported", s.isSmoothAutoFocusSupported...);
  visit("isAutoFocusRangeRestrictionSupported", s.isAutoFocusRangeRestrictionSupported...);
  visit("hasFlash", s.hasFlash...);
  visit("hasTorch", s.hasTorch...);
  visit("isTorchActive", s.isTorchActive...);
  visit("isTorchAvailable", s.isTorchAvailable...);
  visit("torchMode", s.torchMode...);
  visit("maxWhiteBalanceGain", s.maxWhiteBalanceGain...);
  visit("activeDepthDataFormat", s.activeDepthDataFormat...);
  visit(always("activeFormat"), s.activeFormat...);
}

template <typename Visit, typename... S>
requires AllOf<FileSystemSizes, S...>
void describe(Visit&& visit, S&... s) {
  visit("size", s.size...);
  visit("freeSize", s.freeSize...);
}

template <typename Visit, typename... S>
requires AllOf<LocaleFacts, S...>
void describe(Visit&& visit, S&... s) {
  visit("languageCode", s.languageCode...);
  visit("regionCode", s.regionCode...);
  visit("currencyCode", s.currencyCode...);
  visit("currencySymbol", s.currencySymbol...);
  visit("identifier", s.identifier...);
  visit("collatorIdentifier", s.collatorIdentifier...);
  visit("collationIdentifier", s.collationIdentifier...);
  visit("scriptCode", s.scriptCode...);
  visit("usesMetricSystem", s.usesMetricSystem...);
}

template <typename Visit, typename... S>
requires AllOf<TimeZoneFacts, S...>
void describe(Visit&& visit, S&... s) {
  visit("identifier", s.identifier...);
  visit("abbreviation", s.abbreviation...);
}

template <typename Visit, typename... S>
requires AllOf<Carrier, S...>
void describe(Visit&& visit, S&... s) {
  visit("allowsVOIP", s.allowsVOIP...);
  visit("carrierName", s.carrierName...);
  visit("isoCountryCode", s.isoCountryCode...);
  visit("mobileCountryCode", s.mobileCountryCode...);
  visit("mobileNetworkCode", s.mobileNetworkCode...);
}

template <typename Visit, typename... S>
requires AllOf<ProfileDevice, S...>
void describe(Visit&& visit, S&... s) {
  visit("model", s.model...);
  visit("localizedModel", s.localizedModel...);
  visit("systemName", s.systemName...);
  visit("systemVersion", s.systemVersion...);
  visit("identifierForVendor", UuidText{s.identifierForVendor}...);
  visit("machine", MachineText{s.machine}...);
  visit("isBatteryMonitoringEnabled", s.isBatteryMonitoringEnabled...);
  visit("isProximityMonitoringEnabled", s.isProximityMonitoringEnabled...);
  visit("isGeneratingDeviceOrientationNotifications",
        s.isGeneratingDeviceOrientationNotifications...);
  visit("proximityState", s.proximityState...);
  visit("isMultitaskingSupported", s.isMultitaskingSupported...);
  // Only an explicit null makes the query fail; the default reports no sizes.
  visit("fileSystem", s.fileSystem...);
  visit("physicalMemory", s.physicalMemory...);
  visit(always("locale"), s.locale...);
  visit(always("timeZone"), s.timeZone...);
  visit("carrier", s.carrier...);
  visit("radioAccessTechnology", s.radioAccessTechnology...);
  visit("libraryBundle", BundleStrings{s.libraryBundleStrings}...);
}

template <typename Visit, typename... S>
requires AllOf<PermissionSetting, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("status"), s.status...);
  visit("answer", s.answer...);
}

template <typename Visit, typename... S>
requires AllOf<PermissionSettings, S...>
void describe(Visit&& visit, S&... s) {
  visit(always("photoLibrary"), s[static_cast<std::size_t>(Permission::photoLibrary)]...);
  visit(always("contacts"), s[static_cast<std::size_t>(Permission::contacts)]...);
  visit(always("calendarEvents"), s[static_cast<std::size_t>(Permission::calendarEvents)]...);
  visit(always("reminders"), s[static_cast<std::size_t>(Permission::reminders)]...);
}

template <typename Visit, typename... S>
requires AllOf<ProfileLocation, S...>
void describe(Visit&& visit, S&... s) {
  visit("significantLocationChangeMonitoringAvailable",
        s.significantLocationChangeMonitoringAvailable...);
  visit("headingAvailable", s.headingAvailable...);
  visit("isRangingAvailable", s.isRangingAvailable...);
  visit("locationServicesEnabled", s.locationServicesEnabled...);
}

template <typename Visit, typename... S>
requires AllOf<ClockSetting, S...>
void describe(Visit&& visit, S&... s) {
  visit(required("now"), s.now...);
  visit("step", s.step...);
}

template <typename Visit, typename... S>
requires AllOf<RandomSetting, S...>
void describe(Visit&& visit, S&... s) { visit(required("draws"), s.draws...); }

template <typename Visit, typename... S>
requires AllOf<DeviceProfile, S...>
void describe(Visit&& visit, S&... s) {
  visit("$schema", s.schema...);
  visit("description", s.description...);
  visit(always("device"), s.device...);
  visit(always("permissions"), s.permissions...);
  visit(always("contacts"), s.contacts...);
  visit(always("calendars"), s.calendars...);
  visit("events", s.events...);
  visit("reminders", s.reminders...);
  visit(always("photos"), s.photos...);
  visit("captureDevices", s.captureDevices...);
  visit(always("location"), s.location...);
  visit("clock", s.clock...);
  visit("random", s.random...);
}

// A visitor that accepts every member, to ask whether a type is described.
struct AnyMember {
  template <typename... Field>
  void operator()(Member, Field&&...) const {}
};

// A type whose members are described above.
template <typename T>
concept Described = requires(T& value, AnyMember visit) {
  describe(visit, value);
};

// The values a T's members take when a profile leaves them out: the struct's
// own, unless a profileDefaults overload says otherwise for this value.
template <Described T>
const T& defaultsFor(const T& value) {
  if constexpr (requires { profileDefaults(value); }) {
    return profileDefaults(value);
  } else {
    static const T defaults{};
    return defaults;
  }
}

}  // namespace tavrin::platform
