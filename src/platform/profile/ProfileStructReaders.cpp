#include "platform/profile/ProfileStructReaders.hpp"

#include "platform/profile/ProfileObject.hpp"
#include "platform/profile/RecurrenceExpander.hpp"

#include <algorithm>
#include <iterator>

namespace tavrin::platform {

void readValue(const ProfileValue& value, SocialProfile& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("urlString", out.urlString)
      .read("username", out.username)
      .read("userIdentifier", out.userIdentifier)
      .read("service", out.service)
      .finish();
}

void readValue(const ProfileValue& value, InstantMessageAddress& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("username", out.username).read("service", out.service).finish();
}

void readValue(const ProfileValue& value, PostalAddress& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("street", out.street)
      .read("city", out.city)
      .read("state", out.state)
      .read("postalCode", out.postalCode)
      .read("country", out.country)
      .read("isoCountryCode", out.isoCountryCode)
      .read("subAdministrativeArea", out.subAdministrativeArea)
      .read("subLocality", out.subLocality)
      .finish();
}

template <typename Value>
void readValue(const ProfileValue& value, LabeledValue<Value>& out, bool orNull = false) {
  ProfileObject object(value, orNull);
  object.read("identifier", out.identifier)
      .read("label", out.label)
      .read("value", out.value)
      .finish();
}

void readValue(const ProfileValue& value, Contact& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("identifier", out.identifier)
      .read("birthday", out.birthday)
      .read("nonGregorianBirthday", out.nonGregorianBirthday)
      .read("contactType", out.contactType)
      .read("givenName", out.givenName)
      .read("middleName", out.middleName)
      .read("familyName", out.familyName)
      .read("previousFamilyName", out.previousFamilyName)
      .read("nameSuffix", out.nameSuffix)
      .read("namePrefix", out.namePrefix)
      .read("nickname", out.nickname)
      .read("phoneticGivenName", out.phoneticGivenName)
      .read("phoneticMiddleName", out.phoneticMiddleName)
      .read("phoneticFamilyName", out.phoneticFamilyName)
      .read("phoneticOrganizationName", out.phoneticOrganizationName)
      .read("organizationName", out.organizationName)
      .read("departmentName", out.departmentName)
      .read("jobTitle", out.jobTitle)
      .read("note", out.note)
      .read("imageDataAvailable", out.imageDataAvailable)
      .read("socialProfiles", out.socialProfiles)
      .read("phoneNumbers", out.phoneNumbers)
      .read("urlAddresses", out.urlAddresses)
      .read("postalAddresses", out.postalAddresses)
      .read("emailAddresses", out.emailAddresses)
      .read("contactRelations", out.contactRelations)
      .read("instantMessageAddresses", out.instantMessageAddresses)
      .finish();
}

void readValue(const ProfileValue& value, ContactGroup& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("identifier", out.identifier).read("name", out.name).finish();
}

void readValue(const ProfileValue& value, CalendarSource& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("sourceIdentifier", out.sourceIdentifier)
      .read("sourceType", out.sourceType)
      .read("title", out.title)
      .finish();
}

void readValue(const ProfileValue& value, Calendar& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("calendarIdentifier", out.calendarIdentifier)
      .read("colorComponentCount", out.colorComponentCount)
      .read("isImmutable", out.isImmutable)
      .read("type", out.type)
      .read("source", out.source)
      .read("isSubscribed", out.isSubscribed)
      .read("supportedEventAvailabilities", out.supportedEventAvailabilities)
      .finish();
}

void readValue(const ProfileValue& value, Participant& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("isCurrentUser", out.isCurrentUser)
      .read("name", out.name)
      .read("participantRole", out.participantRole)
      .read("participantStatus", out.participantStatus)
      .read("participantType", out.participantType)
      .finish();
}

void readValue(const ProfileValue& value, Recurrence& out, bool orNull) {
  static constexpr std::pair<std::string_view, Recurrence::Frequency> frequencies[] = {
      {"daily", Recurrence::Frequency::daily},
      {"weekly", Recurrence::Frequency::weekly},
      {"monthly", Recurrence::Frequency::monthly},
      {"yearly", Recurrence::Frequency::yearly}};
  ProfileObject object(value, orNull);
  const auto frequency = object["frequency"];
  if (frequency.missing()) frequency.fail("missing member");
  const auto known = std::find_if(std::begin(frequencies), std::end(frequencies), [&](auto& f) {
    return frequency.json().is_string() && frequency.json().get<std::string>() == f.first;
  });
  if (known == std::end(frequencies)) {
    frequency.fail(R"(expected "daily", "weekly", "monthly" or "yearly")");
  }
  out.frequency = known->second;
  object.read("interval", out.interval).read("count", out.count).read("until", out.until);
  if (out.interval < 1) object["interval"].fail("expected an interval of at least 1");
  if (out.count && *out.count < 1) object["count"].fail("expected a count of at least 1");
  if (out.count && out.until) object["until"].fail("give either count or until, not both");
  object.finish();
}

namespace {

// The fields events and reminders share as items of a calendar, and the
// calendar they are in.
template <typename Item>
void readCalendarItemFields(ProfileObject& object, Item& item, std::string& calendar) {
  object.require("calendarIdentifier", calendar)
      .read("calendarItemIdentifier", item.calendarItemIdentifier)
      .read("hasNotes", item.hasNotes)
      .read("hasAttendees", item.hasAttendees)
      .read("hasAlarms", item.hasAlarms)
      .read("hasRecurrenceRules", item.hasRecurrenceRules)
      .read("location", item.location)
      .read("creationDate", item.creationDate)
      .read("lastModifiedDate", item.lastModifiedDate)
      .read("timeZone", item.timeZone)
      .read("attendeeCount", item.attendeeCount);
}

}  // namespace

void readValue(const ProfileValue& value, ProfileEvent& out, bool orNull) {
  ProfileObject object(value, orNull);
  auto& e = out.event;
  object.read("recurrence", out.recurrence);
  // A recurring event has recurrence rules unless the profile says otherwise.
  e.hasRecurrenceRules = out.recurrence.has_value();
  readCalendarItemFields(object, e, out.calendarIdentifier);
  object.read("eventIdentifier", e.eventIdentifier)
      .read("availability", e.availability)
      .read("startDate", e.startDate)
      .read("endDate", e.endDate)
      .read("isAllDay", e.isAllDay)
      .read("occurrenceDate", e.occurrenceDate)
      .read("isDetached", e.isDetached)
      .read("organizer", e.organizer)
      .read("status", e.status);
  if (out.recurrence) {
    if (!e.startDate) object["startDate"].fail("a recurring event needs a start date");
    if (!e.endDate) object["endDate"].fail("a recurring event needs an end date");
    if (*e.endDate < *e.startDate) {
      object["endDate"].fail("a recurring event ends before it starts");
    }
    if (*e.endDate - *e.startDate >= RecurrenceExpander::shortestSpan(*out.recurrence)) {
      object["endDate"].fail("a recurring event must end before its next occurrence can begin");
    }
  }
  object.finish();
}

void readValue(const ProfileValue& value, ProfileReminder& out, bool orNull) {
  ProfileObject object(value, orNull);
  auto& r = out.reminder;
  readCalendarItemFields(object, r, out.calendarIdentifier);
  object.read("startDate", r.startDate)
      .read("dueDate", r.dueDate)
      .read("isCompleted", r.isCompleted)
      .read("completionDate", r.completionDate)
      .read("priority", r.priority)
      .finish();
}

void readValue(const ProfileValue& value, Coordinate& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.require("latitude", out.latitude).require("longitude", out.longitude).finish();
}

void readValue(const ProfileValue& value, Asset& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("localIdentifier", out.localIdentifier)
      .read("mediaType", out.mediaType)
      .read("mediaSubtypes", out.mediaSubtypes)
      .read("sourceType", out.sourceType)
      .read("pixelWidth", out.pixelWidth)
      .read("pixelHeight", out.pixelHeight)
      .read("creationDate", out.creationDate)
      .read("modificationDate", out.modificationDate)
      .read("location", out.location)
      .read("duration", out.duration)
      .read("isFavorite", out.isFavorite)
      .read("isHidden", out.isHidden)
      .finish();
}

void readValue(const ProfileValue& value, ProfileCollection& out, bool orNull) {
  ProfileObject object(value, orNull);
  auto& c = out.collection;
  object.read("localIdentifier", c.localIdentifier)
      .read("assetCollectionType", c.assetCollectionType)
      .read("assetCollectionSubtype", c.assetCollectionSubtype)
      .read("startDate", c.startDate)
      .read("endDate", c.endDate)
      .read("approximateLocation", c.approximateLocation)
      .read("localizedLocationNames", c.localizedLocationNames)
      .read("assetIdentifiers", out.assetIdentifiers)
      .finish();
}

void readValue(const ProfileValue& value, MediaTime& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("value", out.value)
      .read("timescale", out.timescale)
      .read("flags", out.flags)
      .read("epoch", out.epoch)
      .finish();
}

namespace {

// A four-character code: its number, or its four characters ("vide"), the
// first character in the highest byte.
void readFourCharCode(const ProfileValue& value, std::uint32_t& out) {
  const auto& json = value.json();
  if (json.is_string()) {
    const auto& text = json.get_ref<const std::string&>();
    const bool printable = std::all_of(text.begin(), text.end(), [](char c) {
      return static_cast<unsigned char>(c) >= 0x20 && static_cast<unsigned char>(c) < 0x7F;
    });
    if (text.size() == 4 && printable) {
      out = 0;
      for (char c : text) out = (out << 8) | static_cast<unsigned char>(c);
      return;
    }
  } else if (const auto number = exactUnsigned(json); number && *number <= 0xFFFFFFFFU) {
    out = static_cast<std::uint32_t>(*number);
    return;
  }
  value.fail("expected an integer from 0 to 4294967295 or four printable ASCII characters");
}

}  // namespace

void readValue(const ProfileValue& value, FormatDescription& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("width", out.width)
      .read("height", out.height)
      .read("frameDuration", out.frameDuration)
      .read("frameQuanta", out.frameQuanta);
  if (const auto v = object["mediaType"]; !v.missing()) readFourCharCode(v, out.mediaType);
  if (const auto v = object["mediaSubType"]; !v.missing()) readFourCharCode(v, out.mediaSubType);
  object.finish();
}

void readValue(const ProfileValue& value, DepthDataFormat& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("isGlobalToneMappingSupported", out.isGlobalToneMappingSupported)
      .read("isHighestPhotoQualitySupported", out.isHighestPhotoQualitySupported)
      .read("isMultiCamSupported", out.isMultiCamSupported)
      .read("isPortraitEffectsMatteStillImageDeliverySupported",
            out.isPortraitEffectsMatteStillImageDeliverySupported)
      .read("autoFocusSystem", out.autoFocusSystem)
      .read("isVideoBinned", out.isVideoBinned)
      .read("isVideoHDRSupported", out.isVideoHDRSupported)
      .finish();
}

void readValue(const ProfileValue& value, CaptureDevice& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("deviceType", out.deviceType)
      .read("localizedName", out.localizedName)
      .read("isConnected", out.isConnected)
      .read("isVirtualDevice", out.isVirtualDevice)
      .read("constituentDeviceCount", out.constituentDeviceCount)
      .read("lensAperture", out.lensAperture)
      .read("position", out.position)
      .read("mediaTypes", out.mediaTypes)
      .read("videoZoomFactor", out.videoZoomFactor)
      .read("minAvailableVideoZoomFactor", out.minAvailableVideoZoomFactor)
      .read("maxAvailableVideoZoomFactor", out.maxAvailableVideoZoomFactor)
      .read("isFlashAvailable", out.isFlashAvailable)
      .read("isFlashActive", out.isFlashActive)
      .read("isRampingVideoZoom", out.isRampingVideoZoom)
      .read("supportedFocusModes", out.supportedFocusModes)
      .read("isFocusPointOfInterestSupported", out.isFocusPointOfInterestSupported)
      .read("isAdjustingFocus", out.isAdjustingFocus)
      .read("isSmoothAutoFocusEnabled", out.isSmoothAutoFocusEnabled)
      .read("isSmoothAutoFocusSupported", out.isSmoothAutoFocusSupported)
      .read("isAutoFocusRangeRestrictionSupported", out.isAutoFocusRangeRestrictionSupported)
      .read("hasFlash", out.hasFlash)
      .read("hasTorch", out.hasTorch)
      .read("isTorchActive", out.isTorchActive)
      .read("isTorchAvailable", out.isTorchAvailable)
      .read("torchMode", out.torchMode)
      .read("maxWhiteBalanceGain", out.maxWhiteBalanceGain)
      .read("activeDepthDataFormat", out.activeDepthDataFormat)
      .read("activeFormat", out.activeFormat)
      .finish();
}

void readValue(const ProfileValue& value, FileSystemSizes& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("size", out.size).read("freeSize", out.freeSize).finish();
}

void readValue(const ProfileValue& value, LocaleFacts& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("languageCode", out.languageCode)
      .read("regionCode", out.regionCode)
      .read("currencyCode", out.currencyCode)
      .read("currencySymbol", out.currencySymbol)
      .read("identifier", out.identifier)
      .read("collatorIdentifier", out.collatorIdentifier)
      .read("collationIdentifier", out.collationIdentifier)
      .read("scriptCode", out.scriptCode)
      .read("usesMetricSystem", out.usesMetricSystem)
      .finish();
}

void readValue(const ProfileValue& value, TimeZoneFacts& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("identifier", out.identifier).read("abbreviation", out.abbreviation).finish();
}

void readValue(const ProfileValue& value, Carrier& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("allowsVOIP", out.allowsVOIP)
      .read("carrierName", out.carrierName)
      .read("isoCountryCode", out.isoCountryCode)
      .read("mobileCountryCode", out.mobileCountryCode)
      .read("mobileNetworkCode", out.mobileNetworkCode)
      .finish();
}

void readValue(const ProfileValue& value, PermissionSetting& out, bool orNull) {
  ProfileObject object(value, orNull);
  object.read("status", out.status).read("answer", out.answer).finish();
}
}  // namespace tavrin::platform
