#include "collection/DataExtractorManager.hpp"
#include "collection/PermissionHeplper.hpp"
#include "dataset/JsonWriter.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <array>
#include <cmath>
#include <string>
#include <thread>

namespace tavrin {
namespace {

using nlohmann::json;
using platform::Permission;
using platform::ProfilePlatform;

std::shared_ptr<ProfilePlatform> phone(const std::string& members) {
  return ProfilePlatform::fromText("{" + members + "}", "test.json");
}

// The sections of the document a collection of the phone writes, by name.
json collect(const std::shared_ptr<ProfilePlatform>& platform) {
  DataExtractorManager manager(platform);
  json sections = json::object();
  for (const json& entry : json::parse(writeJson(manager.extractData()).view())) {
    sections.update(entry);
  }
  return sections;
}

// Every fact differs from the facts beside it, so that two exchanged places show.
TEST(DataExtractorManager, WritesThePhonesFactsInOrderAndReadsTheClockAroundTheSources) {
  json document = collect(phone(R"("device": {"model": "iPhone", "machine": "iPhone12,1",
      "localizedModel": "iPhone DE", "systemName": "iOS", "systemVersion": "14.2",
      "identifierForVendor": "6f1c3a52-0b1d-4c4e-9b7a-2d7c3e0f5a11",
      "libraryBundle": {"SDKIdentifier": "sdk-7"}, "isBatteryMonitoringEnabled": true,
      "isGeneratingDeviceOrientationNotifications": true, "isMultitaskingSupported": true,
      "fileSystem": {"size": 256000000000, "freeSize": 64000000000}, "physicalMemory": 4294967296,
      "locale": {"languageCode": "de", "regionCode": "AT", "currencyCode": "EUR",
                 "currencySymbol": "€", "identifier": "de_AT", "collatorIdentifier": "de-AT",
                 "collationIdentifier": "phonebook", "scriptCode": "Latn", "usesMetricSystem": true},
      "timeZone": {"identifier": "Europe/Vienna", "abbreviation": "MEZ"},
      "carrier": {"allowsVOIP": false, "carrierName": "A1", "isoCountryCode": "at",
                  "mobileCountryCode": "232", "mobileNetworkCode": "01"},
      "radioAccessTechnology": "CTRadioAccessTechnologyLTE"},
      "clock": {"now": 1605555555.125, "step": 0.5},
      "location": {"significantLocationChangeMonitoringAvailable": false, "headingAvailable": true,
                   "isRangingAvailable": false, "locationServicesEnabled": true})"));
  // The start is the first reading of the clock; the end comes after every
  // reading the sources made. The brand comes before the model.
  json& header = document["GeneralInfo"];
  const double end = header[3].get<double>();
  EXPECT_GT(end, 1605555555.125);
  EXPECT_EQ(std::fmod(end - 1605555555.125, 0.5), 0.0);
  header[3] = nullptr;
  EXPECT_EQ(header, json::parse(R"([8, 1, 1605555555.125, null, "iPhone", "iPhone12,1",
                                    "14.2", "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A11", "sdk-7"])"));
  EXPECT_EQ(document["GeneralData"], json::parse(R"(["iPhone12,1", "iPhone", "iOS", "14.2",
      "iPhone DE", "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A11", true, false, true, false, true,
      256000000000, 64000000000, 4294967296, "de", "AT", "EUR", "€", "de_AT", "de-AT",
      "phonebook", "Latn", true, "Europe/Vienna", "MEZ", false, "A1", "at", "232", "01",
      "CTRadioAccessTechnologyLTE"])"));
  EXPECT_EQ(document["GeoInfo"], json::parse("[false,true,false,true]"));
}

TEST(DataExtractorManager, WritesNullsWhereFactsAreMissingAndWhatThereIsOfPartialOnes) {
  const json document = collect(phone(R"("device": {"identifierForVendor": null,
      "libraryBundle": null, "fileSystem": null, "carrier": null,
      "physicalMemory": 18446744073709551615,
      "radioAccessTechnology": "CTRadioAccessTechnologyNR"})"));
  EXPECT_EQ(document.at("GeneralInfo").at(7), nullptr);
  EXPECT_EQ(document.at("GeneralInfo").at(8), nullptr);
  const json& data = document.at("GeneralData");
  for (std::size_t i : {5U, 11U, 12U, 25U, 26U, 27U, 28U, 29U}) EXPECT_TRUE(data[i].is_null()) << i;
  EXPECT_EQ(data[13].dump(), "18446744073709551615");  // neither wrapped nor rounded
  EXPECT_EQ(data[30], "CTRadioAccessTechnologyNR");

  // A carrier without network codes keeps its name. Places 11, 25, 26, 28 and 29:
  const json partial = collect(phone(R"("device": {"fileSystem": {"size": 64, "freeSize": 8},
      "carrier": {"carrierName": "Telekom", "allowsVOIP": true}})"))["GeneralData"];
  EXPECT_EQ(json({partial[11], partial[25], partial[26], partial[28], partial[29]}),
            json::parse(R"([64, true, "Telekom", null, null])"));
}

TEST(DataExtractorManager, SecondRunDiffersOnlyInTheTimes) {
  DataExtractorManager manager(
      ProfilePlatform::load(TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json"));
  json runs[2];
  for (json& run : runs) run = json::parse(writeJson(manager.extractData()).view());
  json& first = runs[0][0]["GeneralInfo"];
  json& second = runs[1][0]["GeneralInfo"];
  EXPECT_LT(first[3].get<double>(), second[2].get<double>());
  EXPECT_LE(second[2].get<double>(), second[3].get<double>());
  first[2] = first[3] = second[2] = second[3] = nullptr;
  EXPECT_EQ(runs[0], runs[1]);
}

TEST(DataExtractorManager, RotationAngleComesFromTheRandomDraw) {
  // The highest draw, 179 of 0 to 179, gives the widest angle: 269 degrees.
  DataExtractorManager manager(phone(R"("random": {"draws": [179]})"));
  EXPECT_EQ(manager.locationUtil().rotateCoordinate(48.8566, 2.3522),
            LocationUtil(269).rotateCoordinate(48.8566, 2.3522));
}

struct PromptCase {
  std::string name;
  std::string permissions;
  std::vector<Permission> expectedPrompts;
  std::array<int, 4> granted;  // the Permissions rows: calendars, reminders, contacts, photos
};

const PromptCase promptCases[] = {
    {"allUndecided",
     R"({"photoLibrary": {"status": 0, "answer": 4}, "contacts": {"status": 0, "answer": 3},
         "calendarEvents": {"status": 0, "answer": 2}, "reminders": {"status": 0, "answer": 3}})",
     {Permission::photoLibrary, Permission::contacts, Permission::calendarEvents,
      Permission::reminders},
     {0, 1, 1, 0}},
    {"onlyReminders",
     R"({"photoLibrary": {"status": 3}, "contacts": {"status": 2},
         "calendarEvents": {"status": 1}, "reminders": {"status": 0, "answer": 3}})",
     {Permission::reminders},
     {0, 1, 0, 1}},
    {"allDecided",
     R"({"photoLibrary": {"status": 4}, "contacts": {"status": 7},
         "calendarEvents": {"status": 3}, "reminders": {"status": -1}})",
     {},
     {1, 0, 0, 0}},
};

class Prompts : public testing::TestWithParam<PromptCase> {};

TEST_P(Prompts, AreMadeOneAtATimeAndOnlyForUndecidedPermissions) {
  const auto platform = phone(R"("permissions": )" + GetParam().permissions);
  PermissionHeplper::requestPermissions(*platform);
  const auto log = platform->promptLog();
  ASSERT_EQ(log.size(), GetParam().expectedPrompts.size());
  for (std::size_t i = 0; i < log.size(); ++i) {
    EXPECT_EQ(log[i].permission, GetParam().expectedPrompts[i]);
    EXPECT_EQ(log[i].pendingAtRequest, 0U);
    EXPECT_NE(log[i].completionThread, std::thread::id());
    EXPECT_NE(log[i].completionThread, std::this_thread::get_id());
  }
  const json statuses = collect(platform)["Permissions"];
  for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(statuses.at(i).at(1), GetParam().granted[i]) << i;
}

INSTANTIATE_TEST_SUITE_P(Permissions, Prompts, testing::ValuesIn(promptCases),
                         [](const auto& test) { return test.param.name; });

}  // namespace
}  // namespace tavrin
