#include "DatasetColumns.hpp"

#include <array>
#include <utility>

namespace tavrin::sandbox {

namespace {

// clang-format off
constexpr std::string_view header[] = {
    "fileVersion", "mobilePlatform", "extractionStart", "extractionEnd", "phoneBrand",
    "phoneModel", "systemVersion", "deviceId", "sdkIdentifier"};
constexpr std::string_view contact[] = {
    "identifier", "birthday", "nonGregorianBirthday", "contactType", "givenName", "middleName",
    "familyName", "previousFamilyName", "nameSuffix", "namePrefix", "nickname",
    "phoneticGivenName", "phoneticMiddleName", "phoneticFamilyName", "phoneticOrganizationName",
    "organizationName", "departmentName", "jobTitle", "imageDataAvailable", "note",
    "socialProfiles", "phoneNumbers", "urlAddresses", "postalAddresses", "emailAddresses",
    "contactRelations", "instantMessageAddresses"};
constexpr std::string_view group[] = {"identifier", "name"};
constexpr std::string_view album[] = {
    "localIdentifier", "assetCollectionType", "assetCollectionSubtype", "assetCount", "startDate",
    "endDate", "latitude", "longitude", "localizedLocationNames"};
constexpr std::string_view asset[] = {
    "localIdentifier", "mediaType", "mediaSubtypes", "sourceType", "pixelWidth", "pixelHeight",
    "creationDate", "modificationDate", "latitude", "longitude", "duration", "isFavorite",
    "isHidden"};
constexpr std::string_view calendar[] = {
    "calendarIdentifier", "colorComponents", "isImmutable", "type", "sourceIdentifier",
    "sourceType", "sourceTitle", "isSubscribed", "supportedEventAvailabilities"};
constexpr std::string_view event[] = {
    "eventIdentifier", "calendarItemIdentifier", "availability", "startDate", "endDate",
    "isAllDay", "occurrenceDate", "isDetached", "organizerIsCurrentUser", "organizerName",
    "organizerRole", "organizerStatus", "organizerType", "status", "hasNotes", "hasAttendees",
    "hasAlarms", "hasRecurrenceRules", "location", "creationDate", "lastModifiedDate",
    "timeZone", "attendees"};
constexpr std::string_view reminder[] = {
    "calendarItemIdentifier", "startDate", "dueDate", "isCompleted", "completionDate",
    "priority", "hasNotes", "hasAttendees", "hasAlarms", "hasRecurrenceRules", "location",
    "creationDate", "lastModifiedDate", "timeZone", "attendees"};
constexpr std::string_view captureDevice[] = {
    "deviceType", "localizedName", "isConnected", "isVirtualDevice", "constituentDevices",
    "lensAperture", "position", "video", "audio", "text", "depthData", "closedCaption",
    "metadata", "metadataObject", "subtitle", "timecode", "videoZoomFactor",
    "minAvailableVideoZoomFactor", "maxAvailableVideoZoomFactor", "isFlashAvailable",
    "isFlashActive", "isRampingVideoZoom", "autoFocus", "continuousAutoFocus", "locked",
    "isFocusPointOfInterestSupported", "isAdjustingFocus", "isSmoothAutoFocusEnabled",
    "isSmoothAutoFocusSupported", "isAutoFocusRangeRestrictionSupported", "hasFlash", "hasTorch",
    "isTorchActive", "isTorchAvailable", "torchMode", "maxWhiteBalanceGain",
    "isGlobalToneMappingSupported", "isHighestPhotoQualitySupported", "isMultiCamSupported",
    "isPortraitEffectsMatteStillImageDeliverySupported", "autoFocusSystem", "isVideoBinned",
    "isVideoHDRSupported", "formatHeight", "formatWidth", "frameDurationEpoch", "frameQuanta",
    "formatMediaType", "formatMediaSubType"};
constexpr std::string_view geo[] = {
    "significantLocationChangeMonitoringAvailable", "headingAvailable", "isRangingAvailable",
    "locationServicesEnabled"};
constexpr std::string_view generalData[] = {
    "modelIdentifier", "model", "systemName", "systemVersion", "localizedModel",
    "identifierForVendor", "isBatteryMonitoringEnabled", "isProximityMonitoringEnabled",
    "isGeneratingDeviceOrientationNotifications", "proximityState", "isMultitaskingSupported",
    "fileSystemSize", "fileSystemFreeSize", "physicalMemory", "languageCode", "regionCode",
    "currencyCode", "currencySymbol", "localeIdentifier", "collatorIdentifier",
    "collationIdentifier", "scriptCode", "usesMetricSystem", "timeZone", "timeZoneAbbreviation",
    "allowsVOIP", "carrierName", "carrierIsoCountryCode", "mobileCountryCode",
    "mobileNetworkCode", "radioAccessTechnology"};
constexpr std::string_view permission[] = {"usageDescription", "authorized"};
// clang-format on

constexpr std::array<std::pair<std::string_view, std::span<const std::string_view>>, 14> columns{{
    {"GeneralInfo", header},
    {"Contacts", contact},
    {"ContactGroups", group},
    {"MediaAlbums", album},
    {"Video", asset},
    {"Images", asset},
    {"UnknownFiles", asset},
    {"Calendars", calendar},
    {"CalendarEvents", event},
    {"CalendarReminders", reminder},
    {"CaptureDevice", captureDevice},
    {"GeoInfo", geo},
    {"GeneralData", generalData},
    {"Permissions", permission},
}};

}  // namespace

std::span<const std::string_view> datasetColumns(std::string_view section) {
  for (const auto& [name, names] : columns) {
    if (name == section) return names;
  }
  return {};
}

}  // namespace tavrin::sandbox
