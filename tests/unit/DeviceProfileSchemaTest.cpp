// The published schema and the loader must describe the same format. A small
// validator for the keywords the schema uses checks the shipped profiles and a
// table of profiles against both.

#include "platform/profile/DeviceProfileReader.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>

namespace tavrin::platform {
namespace {

using nlohmann::json;

const std::string sourceDir = TAVRIN_SOURCE_DIR;

json readJson(const std::filesystem::path& path) { return json::parse(std::ifstream(path)); }

const json& schema() {
  static const json loaded = readJson(sourceDir + "/docs/device-profile.schema.json");
  return loaded;
}

// The shipped profiles: the examples and the test fixtures.
std::vector<std::filesystem::path> shippedProfiles() {
  std::vector<std::filesystem::path> paths;
  for (const auto* dir : {"/examples/profiles", "/tests/data/profiles"}) {
    for (const auto& entry : std::filesystem::directory_iterator(sourceDir + dir)) {
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

struct Agreement {
  const char* name;
  const char* json;
  bool valid;
};

class SchemaAgreementTest : public testing::TestWithParam<Agreement> {};

TEST_P(SchemaAgreementTest, LoaderAndSchemaJudgeAlike) {
  const auto& c = GetParam();
  const auto profile = json::parse(c.json);
  EXPECT_EQ(valid(schema(), profile), c.valid) << "schema";
  bool loaded = true;
  try {
    readDeviceProfile(c.json, "agreement.json");
  } catch (const DeviceProfileError&) {
    loaded = false;
  }
  EXPECT_EQ(loaded, c.valid) << "loader";
}

INSTANTIATE_TEST_SUITE_P(
    Profiles, SchemaAgreementTest,
    testing::Values(
        Agreement{"Empty", "{}", true},
        Agreement{"UnknownMember", R"({"photos": {"album": []}})", false},
        Agreement{"StatusAnyInt64",
                  R"({"permissions": {"reminders": {"status": -9223372036854775808}}})", true},
        Agreement{"StatusBeyondInt64",
                  R"({"permissions": {"reminders": {"status": 9223372036854775808}}})", false},
        Agreement{"IntegralFloatStatus", R"({"permissions": {"reminders": {"status": 2.0}}})",
                  true},
        Agreement{"FractionalStatus", R"({"permissions": {"reminders": {"status": 2.5}}})", false},
        Agreement{"NullAnswer", R"({"permissions": {"reminders": {"answer": null}}})", true},
        Agreement{"LargestMemory", R"({"device": {"physicalMemory": 18446744073709551615}})", true},
        Agreement{"NegativeMemory", R"({"device": {"physicalMemory": -1}})", false},
        Agreement{"LowerCaseUuid",
                  R"({"device": {"identifierForVendor": "6f1c3a52-0b1d-4c4e-9b7a-2d7c3e0f5a11"}})",
                  true},
        Agreement{"BracedUuid",
                  R"({"device": {"identifierForVendor": "{6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A1}"}})",
                  false},
        Agreement{"NineDigitVersion", R"({"device": {"systemVersion": "123456789.0"}})", true},
        Agreement{"TenDigitVersion", R"({"device": {"systemVersion": "1234567890"}})", false},
        Agreement{"TrailingDot", R"({"device": {"systemVersion": "14."}})", false},
        Agreement{"AnyBundleEntries", R"({"device": {"libraryBundle": {"a": [1, {"b": null}]}}})",
                  true},
        Agreement{"NullFileSystem", R"({"device": {"fileSystem": null}})", true},
        Agreement{"FourCharacterCode",
                  R"({"captureDevices": [{"activeFormat": {"mediaType": "soun"}}]})", true},
        Agreement{"FiveCharacterCode",
                  R"({"captureDevices": [{"activeFormat": {"mediaType": "sound"}}]})", false},
        Agreement{"LargestFloat",
                  R"({"captureDevices": [{"lensAperture": 3.4028234663852886e38}]})", true},
        Agreement{"BeyondFloat", R"({"captureDevices": [{"lensAperture": 3.5e38}]})", false},
        Agreement{"NullDevice", R"({"captureDevices": [null]})", true},
        Agreement{"GroupsError", R"({"contacts": {"groupsError": "x", "groups": null}})", false},
        Agreement{"NullGroupsErrorWithGroups",
                  R"({"contacts": {"groupsError": null, "groups": []}})", true},
        Agreement{"NoDraws", R"({"random": {"draws": []}})", false},
        Agreement{"ClockWithoutNow", R"({"clock": {"step": 1}})", false},
        Agreement{
            "CountAndNullUntil",
            R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{"calendarIdentifier": "a",
                      "startDate": 0, "endDate": 1, "timeZone": "UTC",
                      "recurrence": {"frequency": "daily", "count": 3, "until": null}}]})",
            true},
        Agreement{
            "CountAndUntil",
            R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{"calendarIdentifier": "a",
                      "startDate": 0, "endDate": 1, "timeZone": "UTC",
                      "recurrence": {"frequency": "daily", "count": 3, "until": 9}}]})",
            false},
        Agreement{
            "RecurringWithNullEnd",
            R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{"calendarIdentifier": "a",
                      "startDate": 0, "endDate": null, "timeZone": "UTC", "recurrence": {"frequency": "daily"}}]})",
            false},
        Agreement{
            "NullRecurrenceWithoutDates",
            R"({"calendars": {"events": [{"calendarIdentifier": "a"}]}, "events": [{"calendarIdentifier": "a",
                      "recurrence": null}]})",
            true},
        Agreement{"CoordinateWithoutLongitude",
                  R"({"photos": {"assets": [{"location": {"latitude": 1}}]}})", false}),
    [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace tavrin::platform
