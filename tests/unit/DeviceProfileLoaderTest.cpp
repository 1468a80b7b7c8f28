// The loader: the shipped profiles, and tables of good and bad ones. The
// published schema is checked against the shipped profiles by
// tests/schema/check_profile_schema.py.

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <future>
#include <limits>

namespace tavrin::platform {
namespace {

const std::string examples = std::string(TAVRIN_SOURCE_DIR) + "/examples/profiles/";

// The shipped profiles: the examples and the test fixtures.
std::vector<std::filesystem::path> shippedProfiles() {
  std::vector<std::filesystem::path> paths;
  for (const auto* dir : {"/examples/profiles", "/tests/data/profiles"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(TAVRIN_SOURCE_DIR + std::string(dir))) {
      if (entry.path().extension() == ".json") paths.push_back(entry.path());
    }
  }
  return paths;
}

TEST(DeviceProfileLoader, LoadsTheRealisticPhone) {
  const auto platform = ProfilePlatform::load(examples + "iphone-realistic.json");
  auto& device = platform->device();
  EXPECT_TRUE(device.identifierForVendor());
  EXPECT_EQ(device.libraryBundleString("SDKIdentifier"), "tavrin-ios-4.0.0");
  EXPECT_FALSE(device.libraryBundleString("CFBundleVersion"));  // a number
  EXPECT_EQ(device.currentTimeZone(0).identifier, "Europe/Berlin");

  std::size_t contacts = 0;
  EXPECT_FALSE(platform->contacts().enumerateContacts({}, [&](const Contact&) { ++contacts; }));
  EXPECT_GE(contacts, 5U);
  std::size_t assets = 0;
  for (std::int64_t type = 0; type <= 3; ++type) {
    std::size_t ofType = 0;
    platform->photos().enumerateAssets(type, [&](const Asset&) { ++ofType; });
    EXPECT_GT(ofType, 0U) << "media type " << type;
    assets += ofType;
  }
  EXPECT_GE(assets, 20U);

  // Two years either side of the profile's clock, as the calendar source asks.
  const double now = platform->clock().now();
  auto& store = platform->events();
  std::vector<std::string> calendars;
  for (const auto& c : store.calendars(EntityType::event))
    calendars.push_back(c.calendarIdentifier);
  const auto events = store.events(now - 2 * 365.25 * 86400, now + 2 * 365.25 * 86400, calendars);
  const auto recurring = std::count_if(events.begin(), events.end(),
                                       [](const Event& e) { return e.hasRecurrenceRules; });
  EXPECT_GT(recurring, 10);
  EXPECT_LT(static_cast<std::size_t>(recurring), events.size());

  const auto devices = platform->captureDevices().devices();
  ASSERT_TRUE(devices);
  EXPECT_EQ(devices->size(), 3U);
  EXPECT_EQ(std::count_if(devices->begin(), devices->end(),
                          [](const auto& d) { return d && d->activeDepthDataFormat; }),
            1);
}

TEST(DeviceProfileLoader, FreshInstallIsUndecidedAndDeniesEveryPrompt) {
  const auto platform = ProfilePlatform::load(examples + "fresh-install-denied.json");
  EXPECT_EQ(platform->photos().authorizationStatus(), AuthorizationStatus::notDetermined);
  EXPECT_EQ(platform->contacts().authorizationStatus(0), AuthorizationStatus::notDetermined);
  EXPECT_EQ(platform->events().authorizationStatus(0), AuthorizationStatus::notDetermined);
  std::promise<std::int64_t> answered;
  platform->photos().requestAuthorization([&](std::int64_t s) { answered.set_value(s); });
  EXPECT_EQ(answered.get_future().get(), AuthorizationStatus::denied);
  for (std::int64_t entity : {0, 1}) {
    std::promise<bool> granted;
    platform->events().requestAccess(entity, [&](bool g, auto) { granted.set_value(g); });
    EXPECT_FALSE(granted.get_future().get());
    EXPECT_EQ(platform->events().authorizationStatus(entity), AuthorizationStatus::denied);
  }
  std::promise<bool> granted;
  platform->contacts().requestAccess(0, [&](bool g, auto) { granted.set_value(g); });
  EXPECT_FALSE(granted.get_future().get());
  EXPECT_EQ(platform->contacts().authorizationStatus(0), AuthorizationStatus::denied);
}

struct BadProfile {
  const char* name;
  const char* json;
  const char* pointer;
  const char* reason;  // a part of the reason
};

class BadProfileTest : public testing::TestWithParam<BadProfile> {};

TEST_P(BadProfileTest, FailsWithFilePointerAndReason) {
  const auto& c = GetParam();
  try {
    readDeviceProfile(c.json, "bad.json");
    FAIL() << "loaded";
  } catch (const DeviceProfileError& error) {
    EXPECT_EQ(error.file(), "bad.json");
    EXPECT_EQ(error.pointer(), c.pointer);
    EXPECT_NE(error.reason().find(c.reason), std::string::npos) << error.reason();
    EXPECT_EQ(std::string(error.what()), "bad.json: " + error.pointer() + ": " + error.reason());
  }
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, BadProfileTest,
    testing::Values(
        BadProfile{"MalformedJson", R"({"device": {"model": "iPhone",})", "",
                   "parse error at line 1, column 31"},
        BadProfile{"NumberTooLarge", R"({"clock": {"now": 1e999}})", "", "number overflow"},
        BadProfile{"NotAnObject", "[]", "", "expected an object"},
        BadProfile{"WrongTypeInAList",
                   R"({"contacts": {"list": [{}, {}, {}, {"birthday": "1988-04-12"}]}})",
                   "/contacts/list/3/birthday", "expected a number or null"},
        BadProfile{"NullWhereNotOptional", R"({"device": {"model": null}})", "/device/model",
                   "expected a string"},
        BadProfile{"UnknownMember", R"({"device": {"modle": "iPhone"}})", "/device/modle",
                   "unknown member"},
        BadProfile{"UnknownMemberNameIsEscaped", R"({"location": {"a/b~c": true}})",
                   "/location/a~1b~0c", "unknown member"},
        BadProfile{
            "DuplicateMember",
            R"({"events": [], "location": {"headingAvailable": true, "headingAvailable": false}})",
            "/location/headingAvailable", "duplicate member"},
        BadProfile{"BadUuid",
                   R"({"device": {"identifierForVendor": "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A1"}})",
                   "/device/identifierForVendor", "expected UUID text"},
        BadProfile{"FractionalStatus", R"({"permissions": {"contacts": {"status": 2.5}}})",
                   "/permissions/contacts/status", "expected an integer from"},
        BadProfile{"StatusBeyond64Bits",
                   R"({"permissions": {"contacts": {"status": 9223372036854775808}}})",
                   "/permissions/contacts/status", "expected an integer from"},
        BadProfile{"NegativeUnsigned", R"({"device": {"physicalMemory": -1}})",
                   "/device/physicalMemory", "expected an integer from 0 to"},
        BadProfile{"Int32OutOfRange",
                   R"({"captureDevices": [{"activeFormat": {"width": 2147483648}}]})",
                   "/captureDevices/0/activeFormat/width", "expected an integer from"},
        BadProfile{"FloatOutOfRange", R"({"captureDevices": [{"lensAperture": 1e39}]})",
                   "/captureDevices/0/lensAperture", "32-bit float"},
        BadProfile{"BadFourCharCode",
                   R"({"captureDevices": [{"activeFormat": {"mediaType": "video"}}]})",
                   "/captureDevices/0/activeFormat/mediaType", "four printable ASCII"},
        BadProfile{"BadVersion", R"({"device": {"systemVersion": "14.x"}})",
                   "/device/systemVersion", "expected a version"},
        BadProfile{"BundleNotAnObject", R"({"device": {"libraryBundle": "x"}})",
                   "/device/libraryBundle", "expected an object or null"},
        BadProfile{"GroupsAndGroupsError",
                   R"({"contacts": {"groups": [], "groupsError": "broken"}})",
                   "/contacts/groupsError", "either groups or groupsError"},
        BadProfile{"TenDigitVersionPart", R"({"device": {"systemVersion": "1234567890"}})",
                   "/device/systemVersion", "expected a version"},
        BadProfile{"RecurringWithNullEnd",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": null, "timeZone": "UTC",
                        "recurrence": {"frequency": "daily"}}]})",
                   "/events/0/endDate", "needs an end date"},
        BadProfile{"CoordinateWithoutLongitude",
                   R"({"photos": {"assets": [{"location": {"latitude": 1}}]}})",
                   "/photos/assets/0/location/longitude", "missing member"},
        BadProfile{"EmptyDraws", R"({"random": {"draws": []}})", "/random/draws",
                   "at least one draw"},
        BadProfile{"ClockWithoutNow", R"({"clock": {"step": 1}})", "/clock/now", "missing member"},
        BadProfile{"EventWithoutCalendar", R"({"events": [{"startDate": 0}]})",
                   "/events/0/calendarIdentifier", "missing member"},
        BadProfile{"EventInUnknownCalendar",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]},
                       "events": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "b"}]})",
                   "/events/1/calendarIdentifier", "no calendar"},
        BadProfile{"ReminderInAnEventCalendar",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]},
                       "reminders": [{"calendarIdentifier": "a"}]})",
                   "/reminders/0/calendarIdentifier", "no calendar"},
        BadProfile{
            "DuplicateCalendar",
            R"({"calendars": {"reminders": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "a"}]}})",
            "/calendars/reminders/1/calendarIdentifier", "duplicate identifier"},
        BadProfile{"CollectionOfAnUnknownAsset",
                   R"({"photos": {"assets": [{"localIdentifier": "x"}],
                       "collections": [{"localIdentifier": "c", "assetIdentifiers": ["x", "y"]}]}})",
                   "/photos/collections/0/assetIdentifiers/1", "no asset"},
        BadProfile{"UnknownFrequency",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "recurrence": {"frequency": "hourly"}}]})",
                   "/events/0/recurrence/frequency", R"(expected "daily")"},
        BadProfile{"CountAndUntil",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "recurrence": {"frequency": "daily", "count": 2, "until": 99999}}]})",
                   "/events/0/recurrence/until", "either count or until"},
        BadProfile{"ZeroInterval",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "recurrence": {"frequency": "daily", "interval": 0}}]})",
                   "/events/0/recurrence/interval", "at least 1"},
        BadProfile{"RecurringWithoutStart",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "endDate": 1, "recurrence": {"frequency": "daily"}}]})",
                   "/events/0/startDate", "needs a start date"},
        BadProfile{"OccurrencesOverlap",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 90000,
                        "timeZone": "UTC", "recurrence": {"frequency": "daily"}}]})",
                   "/events/0/endDate", "before its next occurrence"},
        BadProfile{"RecurringInAnUnknownZone",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "timeZone": "Mars/Olympus", "recurrence": {"frequency": "daily"}}]})",
                   "/events/0/timeZone", "unknown time zone"},
        BadProfile{"FloatingRecurringOnADeviceWithoutAZone",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "recurrence": {"frequency": "weekly"}}]})",
                   "/device/timeZone/identifier", "unknown time zone"}),
    [](const auto& test) { return std::string(test.param.name); });

// Profiles at the edges of what is allowed.
class GoodProfileTest : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(GoodProfileTest, LoaderAccepts) {
  EXPECT_NO_THROW(readDeviceProfile(GetParam().second, "good.json"));
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, GoodProfileTest,
    testing::Values(
        std::pair{"Empty", "{}"},
        std::pair{"StatusAnyInt64",
                  R"({"permissions": {"reminders": {"status": -9223372036854775808}}})"},
        std::pair{"IntegralFloatStatus", R"({"permissions": {"reminders": {"status": 2.0}}})"},
        std::pair{"LargestMemory", R"({"device": {"physicalMemory": 18446744073709551615}})"},
        std::pair{"LowerCaseUuid",
                  R"({"device": {"identifierForVendor": "6f1c3a52-0b1d-4c4e-9b7a-2d7c3e0f5a11"}})"},
        std::pair{"NineDigitVersion", R"({"device": {"systemVersion": "123456789.0"}})"},
        std::pair{"AnyBundleEntries", R"({"device": {"libraryBundle": {"a": [1, {"b": null}]}}})"},
        std::pair{"FourCharacterCode",
                  R"({"captureDevices": [{"activeFormat": {"mediaType": "soun"}}]})"},
        std::pair{"LargestFloat",
                  R"({"captureDevices": [{"lensAperture": 3.4028234663852886e38}]})"},
        std::pair{"NullDevice", R"({"captureDevices": [null]})"},
        std::pair{"NullGroupsErrorWithGroups",
                  R"({"contacts": {"groupsError": null, "groups": []}})"},
        std::pair{
            "CountAndNullUntil",
            R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{"calendarIdentifier": "a",
                      "startDate": 0, "endDate": 1, "timeZone": "UTC",
                      "recurrence": {"frequency": "daily", "count": 3, "until": null}}]})"},
        std::pair{
            "NullRecurrenceWithoutDates",
            R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{"calendarIdentifier": "a",
                      "recurrence": null}]})"}),
    [](const auto& test) { return std::string(test.param.first); });

TEST(DeviceProfileLoader, LoadsEveryShippedProfile) {
  const auto paths = shippedProfiles();
  ASSERT_GE(paths.size(), 3U);
  for (const auto& path : paths) EXPECT_NO_THROW(loadDeviceProfile(path.string())) << path;
}

// The one case whose text is built: a machine name one byte too long.
TEST(DeviceProfileLoader, MachineNameMustLeaveRoomForItsTerminator) {
  const std::string fits = R"({"device": {"machine": ")" + std::string(255, 'x') + "\"}}";
  EXPECT_NO_THROW(readDeviceProfile(fits, "m.json"));
  const std::string tooLong = R"({"device": {"machine": ")" + std::string(256, 'x') + "\"}}";
  EXPECT_THROW(readDeviceProfile(tooLong, "m.json"), DeviceProfileError);
}

TEST(DeviceProfileLoader, AcceptsEveryRawIntegerAndExactNumbers) {
  const auto profile = readDeviceProfile(R"({
    "device": {"physicalMemory": 18446744073709551615},
    "permissions": {"photoLibrary": {"status": -9223372036854775808},
                    "contacts": {"status": 9223372036854775807, "answer": -1},
                    "calendarEvents": {"status": 3.0}}})",
                                         "ok.json");
  EXPECT_EQ(profile.device.physicalMemory, std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(profile.permissions[0].status, std::numeric_limits<std::int64_t>::min());
  EXPECT_EQ(profile.permissions[1].status, std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(profile.permissions[1].answer, -1);
  EXPECT_EQ(profile.permissions[2].status, 3);
}

TEST(DeviceProfileLoader, FileErrorsNameTheFile) {
  const auto missing = examples + "no-such-profile.json";
  try {
    loadDeviceProfile(missing);
    FAIL() << "loaded";
  } catch (const DeviceProfileError& error) {
    EXPECT_EQ(error.file(), missing);
    EXPECT_EQ(error.pointer(), "");
    EXPECT_NE(error.reason().find("cannot read the file"), std::string::npos);
  }

  const auto path = std::filesystem::temp_directory_path() / "tavrin-bad-profile.json";
  std::ofstream(path) << R"({"location": {"headingAvailable": 1}})";
  try {
    loadDeviceProfile(path.string());
    FAIL() << "loaded";
  } catch (const DeviceProfileError& error) {
    EXPECT_EQ(std::string(error.what()),
              path.string() + ": /location/headingAvailable: expected a boolean");
  }
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace tavrin::platform
