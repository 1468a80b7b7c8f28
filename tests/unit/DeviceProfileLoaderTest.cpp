// The loader: the example profiles, and tables of good and bad ones. Every
// shipped profile is read back by DeviceProfileWriterTest; the published schema
// is checked against them by tests/schema/check_profile_schema.py.

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>

namespace tavrin::platform {
namespace {

const std::string examples = std::string(TAVRIN_SOURCE_DIR) + "/examples/profiles/";

// The demo phone has rows for every source and a mix of single and recurring events.
TEST(DeviceProfileLoader, TheRealisticPhoneHasSomethingOfEveryKind) {
  const auto platform = ProfilePlatform::load(examples + "iphone-realistic.json");
  std::size_t contacts = 0;
  EXPECT_FALSE(platform->contacts().enumerateContacts({}, [&](const Contact&) { ++contacts; }));
  EXPECT_GE(contacts, 5U);
  for (std::int64_t type = 0; type <= 3; ++type) {
    std::size_t assets = 0;
    platform->photos().enumerateAssets(type, [&](const Asset&) { ++assets; });
    EXPECT_GT(assets, 0U) << "media type " << type;
  }

  // Two years either side of the profile's clock, as the calendar source asks.
  const double now = platform->clock().now();
  std::vector<std::string> calendars;
  for (const auto& c : platform->events().calendars(EntityType::event))
    calendars.push_back(c.calendarIdentifier);
  const auto events =
      platform->events().events(now - 2 * 365.25 * 86400, now + 2 * 365.25 * 86400, calendars);
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
  std::ifstream file(examples + "fresh-install-denied.json");
  const std::string text{std::istreambuf_iterator<char>(file), {}};
  for (const PermissionSetting& permission : readDeviceProfile(text, "fresh.json").permissions) {
    EXPECT_EQ(permission.status, AuthorizationStatus::notDetermined);
    EXPECT_EQ(permission.answer, AuthorizationStatus::denied);
  }
}

// A profile whose calendar "a" holds one event with these dates, repeating by this rule.
std::string repeating(const std::string& dates,
                      const std::string& rule = R"({"frequency": "daily"})") {
  return R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{)" + dates +
         R"("calendarIdentifier": "a", "recurrence": )" + rule + "}]}";
}
constexpr const char* oneSecond = R"("startDate": 0, "endDate": 1, )";

struct BadProfile {
  const char* name;
  std::string json;
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

const BadProfile badProfiles[] = {
    {"MalformedJson", R"({"device": {"model": "iPhone",})", "", "parse error at line 1, column 31"},
    {"NumberTooLarge", R"({"clock": {"now": 1e999}})", "", "number overflow"},
    {"NotAnObject", "[]", "", "expected an object"},
    {"WrongTypeInAList", R"({"contacts": {"list": [{}, {}, {}, {"birthday": "1988-04-12"}]}})",
     "/contacts/list/3/birthday", "expected a number or null"},
    {"NullWhereNotOptional", R"({"device": {"model": null}})", "/device/model",
     "expected a string"},
    {"UnknownMemberNameIsEscaped", R"({"location": {"a/b~c": true}})", "/location/a~1b~0c",
     "unknown member"},
    {"DuplicateMember",
     R"({"events": [], "location": {"headingAvailable": true, "headingAvailable": false}})",
     "/location/headingAvailable", "duplicate member"},
    {"BadUuid", R"({"device": {"identifierForVendor": "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A1"}})",
     "/device/identifierForVendor", "expected UUID text"},
    {"FractionalStatus", R"({"permissions": {"contacts": {"status": 2.5}}})",
     "/permissions/contacts/status", "expected an integer from"},
    {"StatusBeyond64Bits", R"({"permissions": {"contacts": {"status": 9223372036854775808}}})",
     "/permissions/contacts/status", "expected an integer from"},
    {"NegativeUnsigned", R"({"device": {"physicalMemory": -1}})", "/device/physicalMemory",
     "expected an integer from 0 to"},
    {"Int32OutOfRange", R"({"captureDevices": [{"activeFormat": {"width": 2147483648}}]})",
     "/captureDevices/0/activeFormat/width", "expected an integer from"},
    {"FloatOutOfRange", R"({"captureDevices": [{"lensAperture": 1e39}]})",
     "/captureDevices/0/lensAperture", "32-bit float"},
    {"BadFourCharCode", R"({"captureDevices": [{"activeFormat": {"mediaType": "video"}}]})",
     "/captureDevices/0/activeFormat/mediaType", "four printable ASCII"},
    {"BadVersion", R"({"device": {"systemVersion": "14.x"}})", "/device/systemVersion",
     "expected a version"},
    {"MachineNameWithoutRoomForItsTerminator",
     R"({"device": {"machine": ")" + std::string(256, 'x') + R"("}})", "/device/machine",
     "at most 255 bytes"},
    {"TenDigitVersionPart", R"({"device": {"systemVersion": "1234567890"}})",
     "/device/systemVersion", "expected a version"},
    {"BundleNotAnObject", R"({"device": {"libraryBundle": "x"}})", "/device/libraryBundle",
     "expected an object or null"},
    {"GroupsAndGroupsError", R"({"contacts": {"groups": [], "groupsError": "broken"}})",
     "/contacts/groupsError", "either groups or groupsError"},
    {"CoordinateWithoutLongitude", R"({"photos": {"assets": [{"location": {"latitude": 1}}]}})",
     "/photos/assets/0/location/longitude", "missing member"},
    {"EmptyDraws", R"({"random": {"draws": []}})", "/random/draws", "at least one draw"},
    {"ClockWithoutNow", R"({"clock": {"step": 1}})", "/clock/now", "missing member"},
    {"EventWithoutCalendar", R"({"events": [{"startDate": 0}]})", "/events/0/calendarIdentifier",
     "missing member"},
    {"EventInUnknownCalendar",
     R"({"calendars": {"events": [{"calendarIdentifier": "a"}]},
         "events": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "b"}]})",
     "/events/1/calendarIdentifier", "no calendar"},
    {"ReminderInAnEventCalendar",
     R"({"calendars": {"events": [{"calendarIdentifier": "a"}]},
         "reminders": [{"calendarIdentifier": "a"}]})",
     "/reminders/0/calendarIdentifier", "no calendar"},
    {"DuplicateCalendar",
     R"({"calendars": {"reminders": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "a"}]}})",
     "/calendars/reminders/1/calendarIdentifier", "duplicate identifier"},
    {"CollectionOfAnUnknownAsset",
     R"({"photos": {"assets": [{"localIdentifier": "x"}],
         "collections": [{"localIdentifier": "c", "assetIdentifiers": ["x", "y"]}]}})",
     "/photos/collections/0/assetIdentifiers/1", "no asset"},
    {"RecurringWithNullEnd", repeating(R"("startDate": 0, "endDate": null, "timeZone": "UTC", )"),
     "/events/0/endDate", "needs an end date"},
    {"UnknownFrequency", repeating(oneSecond, R"({"frequency": "hourly"})"),
     "/events/0/recurrence/frequency", R"(expected "daily")"},
    {"CountAndUntil", repeating(oneSecond, R"({"frequency": "daily", "count": 2, "until": 99999})"),
     "/events/0/recurrence/until", "either count or until"},
    {"ZeroInterval", repeating(oneSecond, R"({"frequency": "daily", "interval": 0})"),
     "/events/0/recurrence/interval", "at least 1"},
    {"RecurringWithoutStart", repeating(R"("endDate": 1, )"), "/events/0/startDate",
     "needs a start date"},
    {"OccurrencesOverlap", repeating(R"("startDate": 0, "endDate": 90000, "timeZone": "UTC", )"),
     "/events/0/endDate", "before its next occurrence"},
    {"RecurringInAnUnknownZone",
     repeating(R"("startDate": 0, "endDate": 1, "timeZone": "Mars/Olympus", )"),
     "/events/0/timeZone", "unknown time zone"},
    {"FloatingRecurringOnADeviceWithoutAZone", repeating(oneSecond, R"({"frequency": "weekly"})"),
     "/device/timeZone/identifier", "unknown time zone"},
};

INSTANTIATE_TEST_SUITE_P(Profiles, BadProfileTest, testing::ValuesIn(badProfiles),
                         [](const auto& test) { return std::string(test.param.name); });

// Profiles at the edges of what is allowed.
class GoodProfileTest : public testing::TestWithParam<std::pair<const char*, std::string>> {};

TEST_P(GoodProfileTest, LoaderAccepts) {
  EXPECT_NO_THROW(readDeviceProfile(GetParam().second, "good.json"));
}

// Empty profiles, mixed-case UUIDs, nested bundles, four-character codes and null
// devices are loaded by ProfilePlatformTest.
const std::pair<const char*, std::string> goodProfiles[] = {
    {"NineDigitVersion", R"({"device": {"systemVersion": "123456789.0"}})"},
    {"LongestMachineName", R"({"device": {"machine": ")" + std::string(255, 'x') + R"("}})"},
    {"LargestFloat", R"({"captureDevices": [{"lensAperture": 3.4028234663852886e38}]})"},
    {"NullGroupsErrorWithGroups", R"({"contacts": {"groupsError": null, "groups": []}})"},
    {"CountAndNullUntil", repeating(R"("startDate": 0, "endDate": 1, "timeZone": "UTC", )",
                                    R"({"frequency": "daily", "count": 3, "until": null})")},
    {"NullRecurrenceWithoutDates", repeating("", "null")},
};

INSTANTIATE_TEST_SUITE_P(Profiles, GoodProfileTest, testing::ValuesIn(goodProfiles),
                         [](const auto& test) { return std::string(test.param.first); });

// Every status an int64 holds, the largest memory, and a status written as 3.0.
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

// A file that cannot be read and one that is malformed both name the file by its path.
TEST(DeviceProfileLoader, FileErrorsNameTheFile) {
  const auto path = std::filesystem::temp_directory_path() / "tavrin-bad-profile.json";
  std::ofstream(path) << R"({"location": {"headingAvailable": 1}})";
  const std::string missing = examples + "no-such-profile.json";
  for (const auto& [file, start] :
       {std::pair{missing, missing + ": : cannot read the file"},
        std::pair{path.string(),
                  path.string() + ": /location/headingAvailable: expected a boolean"}}) {
    try {
      loadDeviceProfile(file);
      ADD_FAILURE() << "loaded " << file;
    } catch (const DeviceProfileError& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(start)) << error.what();
    }
  }
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace tavrin::platform
