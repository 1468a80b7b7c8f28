// The loader, and the published schema, which must describe the same format:
// a small validator for the keywords the schema uses runs the shipped profiles
// and the tables of good and bad profiles through both.

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <future>
#include <limits>
#include <regex>
#include <set>

namespace tavrin::platform {
namespace {

const std::string examples = std::string(TAVRIN_SOURCE_DIR) + "/examples/profiles/";

using nlohmann::json;

json readJson(const std::filesystem::path& path) { return json::parse(std::ifstream(path)); }

const json& schema() {
  static const json loaded =
      readJson(std::string(TAVRIN_SOURCE_DIR) + "/docs/device-profile.schema.json");
  return loaded;
}

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

// -1, 0 or 1 as a < b, exactly for integers of any sign and width.
int compareNumbers(const json& a, const json& b) {
  if (a.is_number_integer() && b.is_number_integer()) {
    const bool aNegative = !a.is_number_unsigned() && a.get<std::int64_t>() < 0;
    const bool bNegative = !b.is_number_unsigned() && b.get<std::int64_t>() < 0;
    if (aNegative != bNegative) return aNegative ? -1 : 1;
    if (aNegative) {
      const auto x = a.get<std::int64_t>(), y = b.get<std::int64_t>();
      return x < y ? -1 : (x > y ? 1 : 0);
    }
    const auto x = a.get<std::uint64_t>(), y = b.get<std::uint64_t>();
    return x < y ? -1 : (x > y ? 1 : 0);
  }
  const auto x = a.get<long double>(), y = b.get<long double>();
  return x < y ? -1 : (x > y ? 1 : 0);
}

bool hasType(const std::string& type, const json& value) {
  if (type == "integer") {
    return value.is_number_integer() ||
           (value.is_number_float() && value.get<double>() == std::trunc(value.get<double>()));
  }
  static const std::map<std::string, json::value_t> kinds = {{"object", json::value_t::object},
                                                             {"array", json::value_t::array},
                                                             {"string", json::value_t::string},
                                                             {"boolean", json::value_t::boolean},
                                                             {"null", json::value_t::null}};
  if (type == "number") return value.is_number();
  return kinds.at(type) == value.type();
}

// Whether `value` satisfies `s`, for the keywords the schema uses.
bool valid(const json& s, const json& value) {
  if (s.contains("$ref")) {
    const auto name = s["$ref"].get<std::string>().substr(std::string("#/$defs/").size());
    return valid(schema()["$defs"][name], value);
  }
  if (s.contains("type")) {
    const auto types = s["type"].is_array() ? s["type"] : json::array({s["type"]});
    if (std::none_of(types.begin(), types.end(),
                     [&](const json& t) { return hasType(t.get<std::string>(), value); })) {
      return false;
    }
  }
  if (s.contains("enum") &&
      std::find(s["enum"].begin(), s["enum"].end(), value) == s["enum"].end()) {
    return false;
  }
  if (value.is_number()) {
    if (s.contains("minimum") && compareNumbers(value, s["minimum"]) < 0) return false;
    if (s.contains("maximum") && compareNumbers(value, s["maximum"]) > 0) return false;
  }
  if (value.is_string()) {
    const auto& text = value.get_ref<const std::string&>();
    const auto codePoints = std::count_if(text.begin(), text.end(), [](char c) {
      return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
    });
    if (s.contains("maxLength") && codePoints > s["maxLength"].get<long>()) return false;
    if (s.contains("pattern") &&
        !std::regex_search(text, std::regex(s["pattern"].get<std::string>()))) {
      return false;
    }
  }
  if (value.is_object()) {
    if (s.contains("required")) {
      for (const auto& name : s["required"]) {
        if (!value.contains(name.get<std::string>())) return false;
      }
    }
    static const json none = json::object();
    const auto& properties = s.contains("properties") ? s["properties"] : none;
    for (auto member = value.begin(); member != value.end(); ++member) {
      if (properties.contains(member.key())) {
        if (!valid(properties[member.key()], *member)) return false;
      } else if (s.value("additionalProperties", true) == false) {
        return false;
      }
    }
  }
  if (value.is_array()) {
    if (s.contains("minItems") && value.size() < s["minItems"].get<std::size_t>()) return false;
    if (s.contains("items")) {
      for (const auto& item : value) {
        if (!valid(s["items"], item)) return false;
      }
    }
  }
  if (s.contains("oneOf") && std::count_if(s["oneOf"].begin(), s["oneOf"].end(),
                                           [&](auto& o) { return valid(o, value); }) != 1) {
    return false;
  }
  if (s.contains("not") && valid(s["not"], value)) return false;
  if (s.contains("if") && valid(s["if"], value) && !valid(s["then"], value)) return false;
  return true;
}

// Walks every subschema, calling `visit` with each.
void forEachSchema(const json& s, const std::function<void(const json&)>& visit) {
  if (!s.is_object()) return;
  visit(s);
  for (const auto* key : {"items", "not", "if", "then"}) {
    if (s.contains(key)) forEachSchema(s[key], visit);
  }
  for (const auto* key : {"properties", "$defs"}) {
    if (s.contains(key)) {
      for (const auto& sub : s[key]) forEachSchema(sub, visit);
    }
  }
  if (s.contains("oneOf")) {
    for (const auto& sub : s["oneOf"]) forEachSchema(sub, visit);
  }
}

TEST(DeviceProfileLoader, LoadsTheRealisticPhone) {
  const auto platform = ProfilePlatform::load(examples + "iphone-realistic.json");
  auto& device = platform->device();
  EXPECT_EQ(device.model(), "iPhone");
  EXPECT_EQ(device.systemVersion(), "14.2");
  EXPECT_TRUE(device.isSystemVersionAtLeast(14, 0));
  EXPECT_TRUE(device.identifierForVendor());
  EXPECT_EQ(device.libraryBundleString("SDKIdentifier"), "tavrin-ios-4.0.0");
  EXPECT_FALSE(device.libraryBundleString("CFBundleVersion"));  // a number
  EXPECT_TRUE(device.subscriberCarrier());
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
  EXPECT_EQ(platform->events().authorizationStatus(1), AuthorizationStatus::notDetermined);
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
  const char* reason;         // a part of the reason
  bool schemaRejects = true;  // false where only the loader can tell, or the JSON is broken
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
  const auto parsed = json::parse(c.json, nullptr, false);
  if (!parsed.is_discarded()) {
    EXPECT_EQ(!valid(schema(), parsed), c.schemaRejects) << "schema";
  }
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, BadProfileTest,
    testing::Values(
        BadProfile{"MalformedJson", R"({"device": {"model": "iPhone",})", "",
                   "parse error at line 1, column 31", false},
        BadProfile{"Empty", "", "", "parse error", false},
        BadProfile{"NumberTooLarge", R"({"clock": {"now": 1e999}})", "", "number overflow", false},
        BadProfile{"NotAnObject", "[]", "", "expected an object"},
        BadProfile{"WrongTypeInAList",
                   R"({"contacts": {"list": [{}, {}, {}, {"birthday": "1988-04-12"}]}})",
                   "/contacts/list/3/birthday", "expected a number or null"},
        BadProfile{"NullWhereNotOptional", R"({"device": {"model": null}})", "/device/model",
                   "expected a string"},
        BadProfile{"UnknownMember", R"({"device": {"modle": "iPhone"}})", "/device/modle",
                   "unknown member"},
        BadProfile{"UnknownTopLevelMember", R"({"contact": {}})", "/contact", "unknown member"},
        BadProfile{"UnknownMemberNameIsEscaped", R"({"location": {"a/b~c": true}})",
                   "/location/a~1b~0c", "unknown member"},
        BadProfile{
            "DuplicateMember",
            R"({"events": [], "location": {"headingAvailable": true, "headingAvailable": false}})",
            "/location/headingAvailable", "duplicate member", false},
        BadProfile{"DuplicateMemberInAList",
                   R"({"captureDevices": [null, {"position": 1, "position": 2}]})",
                   "/captureDevices/1/position", "duplicate member", false},
        BadProfile{"BadUuid",
                   R"({"device": {"identifierForVendor": "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A1"}})",
                   "/device/identifierForVendor", "expected UUID text"},
        BadProfile{"UuidWithoutHyphens",
                   R"({"device": {"identifierForVendor": "6F1C3A520B1D4C4E9B7A2D7C3E0F5A11AAAA"}})",
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
                   "/events/1/calendarIdentifier", "no calendar", false},
        BadProfile{"ReminderInAnEventCalendar",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]},
                       "reminders": [{"calendarIdentifier": "a"}]})",
                   "/reminders/0/calendarIdentifier", "no calendar", false},
        BadProfile{
            "DuplicateCalendar",
            R"({"calendars": {"reminders": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "a"}]}})",
            "/calendars/reminders/1/calendarIdentifier", "duplicate identifier", false},
        BadProfile{"CollectionOfAnUnknownAsset",
                   R"({"photos": {"assets": [{"localIdentifier": "x"}],
                       "collections": [{"localIdentifier": "c", "assetIdentifiers": ["x", "y"]}]}})",
                   "/photos/collections/0/assetIdentifiers/1", "no asset", false},
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
                   "/events/0/endDate", "before its next occurrence", false},
        BadProfile{"RecurringInAnUnknownZone",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "timeZone": "Mars/Olympus", "recurrence": {"frequency": "daily"}}]})",
                   "/events/0/timeZone", "unknown time zone", false},
        BadProfile{"FloatingRecurringOnADeviceWithoutAZone",
                   R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [
                       {"calendarIdentifier": "a", "startDate": 0, "endDate": 1,
                        "recurrence": {"frequency": "weekly"}}]})",
                   "/device/timeZone/identifier", "unknown time zone", false}),
    [](const auto& test) { return std::string(test.param.name); });

// Profiles at the edges of what is allowed: both the loader and the schema accept them.
class GoodProfileTest : public testing::TestWithParam<std::pair<const char*, const char*>> {};

TEST_P(GoodProfileTest, LoaderAndSchemaAccept) {
  const auto& [name, text] = GetParam();
  EXPECT_NO_THROW(readDeviceProfile(text, "good.json"));
  EXPECT_TRUE(valid(schema(), json::parse(text)));
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, GoodProfileTest,
    testing::Values(
        std::pair{"Empty", "{}"},
        std::pair{"StatusAnyInt64",
                  R"({"permissions": {"reminders": {"status": -9223372036854775808}}})"},
        std::pair{"IntegralFloatStatus", R"({"permissions": {"reminders": {"status": 2.0}}})"},
        std::pair{"NullAnswer", R"({"permissions": {"reminders": {"answer": null}}})"},
        std::pair{"LargestMemory", R"({"device": {"physicalMemory": 18446744073709551615}})"},
        std::pair{"LowerCaseUuid",
                  R"({"device": {"identifierForVendor": "6f1c3a52-0b1d-4c4e-9b7a-2d7c3e0f5a11"}})"},
        std::pair{"NineDigitVersion", R"({"device": {"systemVersion": "123456789.0"}})"},
        std::pair{"AnyBundleEntries", R"({"device": {"libraryBundle": {"a": [1, {"b": null}]}}})"},
        std::pair{"NullFileSystem", R"({"device": {"fileSystem": null}})"},
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

TEST(DeviceProfileSchema, UsesOnlyKeywordsThisCheckUnderstandsAndClosesEveryObject) {
  const std::set<std::string> known = {
      "$schema",   "$id",     "title", "description", "type", "properties", "additionalProperties",
      "required",  "items",   "$ref",  "$defs",       "enum", "minimum",    "maximum",
      "maxLength", "pattern", "oneOf", "not",         "if",   "then",       "minItems"};
  forEachSchema(schema(), [&](const json& s) {
    for (auto member = s.begin(); member != s.end(); ++member) {
      EXPECT_TRUE(known.count(member.key())) << member.key();
    }
    // Objects with named members reject others. (Subschemas of "not", "if" and
    // "then" only constrain members of an object defined elsewhere.)
    if (s.contains("properties") && s.value("type", json()) == "object") {
      EXPECT_EQ(s.value("additionalProperties", true), false);
    }
  });
}

TEST(DeviceProfileSchema, ShippedProfilesLoadValidateAndUseEveryMember) {
  std::set<std::string> declared, used;
  forEachSchema(schema(), [&](const json& s) {
    if (!s.contains("properties")) return;
    const auto& properties = s["properties"];
    for (auto member = properties.begin(); member != properties.end(); ++member) {
      declared.insert(member.key());
    }
  });
  const std::function<void(const json&)> collect = [&](const json& value) {
    if (value.is_object()) {
      for (auto member = value.begin(); member != value.end(); ++member) used.insert(member.key());
    }
    if (value.is_structured()) {
      for (const auto& child : value) collect(child);
    }
  };
  const auto paths = shippedProfiles();
  ASSERT_GE(paths.size(), 3U);
  for (const auto& path : paths) {
    SCOPED_TRACE(path.string());
    const auto profile = readJson(path);
    EXPECT_TRUE(valid(schema(), profile));
    std::ifstream file(path);
    const std::string text{std::istreambuf_iterator<char>(file), {}};
    EXPECT_NO_THROW(readDeviceProfile(text, path.string()));
    collect(profile);
  }
  // Every name the schema declares was accepted by the loader in some profile.
  for (const auto& name : declared) EXPECT_TRUE(used.count(name)) << name;
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
  EXPECT_THROW(loadDeviceProfile(examples), DeviceProfileError);

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
