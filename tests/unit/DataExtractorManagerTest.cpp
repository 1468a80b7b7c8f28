#include "dataset/DataExtractorManager.hpp"
#include "dataset/JsonWriter.hpp"
#include "dataset/PermissionHeplper.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <cmath>
#include <string>
#include <thread>

namespace tavrin {
namespace {

using nlohmann::json;
using platform::ProfilePlatform;

std::shared_ptr<ProfilePlatform> phone(const std::string& members) {
  return ProfilePlatform::fromText("{" + members + "}", "test.json");
}

json collect(const std::shared_ptr<ProfilePlatform>& platform) {
  DataExtractorManager manager(platform);
  return json::parse(writeJson(manager.extractData()).view());
}

std::vector<std::string> sectionNames(const json& document) {
  std::vector<std::string> names;
  for (const auto& section : document) names.push_back(section.begin().key());
  return names;
}

const json& section(const json& document, const std::string& name) {
  for (const auto& entry : document) {
    if (entry.begin().key() == name) return entry.begin().value();
  }
  throw std::runtime_error("no section " + name);
}

TEST(DataExtractorManager, HeaderComesFirstAndPermissionsLastEvenWhenEverythingIsDenied) {
  const json document = collect(
      ProfilePlatform::load(TAVRIN_SOURCE_DIR "/examples/profiles/fresh-install-denied.json"));
  const auto names = sectionNames(document);
  ASSERT_GE(names.size(), 2U);
  EXPECT_EQ(names.front(), "GeneralInfo");
  EXPECT_EQ(names.back(), "Permissions");
  DataExtractorManager manager(phone(""));
  ASSERT_EQ(names.size(), manager.extractors().size() + 1);
  for (std::size_t i = 0; i < manager.extractors().size(); ++i) {
    EXPECT_EQ(names[i + 1], manager.extractors()[i]->dataSourceNameKey());
  }
}

TEST(DataExtractorManager, HeaderPutsBrandBeforeModelAndReadsTheClockAroundTheSources) {
  json header = section(
      collect(
          phone(R"("device": {"model": "iPhone", "machine": "iPhone12,1", "systemVersion": "14.2",
                     "identifierForVendor": "6f1c3a52-0b1d-4c4e-9b7a-2d7c3e0f5a11",
                     "libraryBundle": {"SDKIdentifier": "sdk-7"}},
          "clock": {"now": 1605555555.125, "step": 0.5})")),
      "GeneralInfo");
  // The start is the first reading of the clock; the end comes after every
  // reading the sources made.
  const double end = header[3].get<double>();
  EXPECT_GT(end, 1605555555.125);
  EXPECT_EQ(std::fmod(end - 1605555555.125, 0.5), 0.0);
  header[3] = nullptr;
  EXPECT_EQ(header, json::parse(R"([8, 1, 1605555555.125, null, "iPhone", "iPhone12,1",
                                    "14.2", "6F1C3A52-0B1D-4C4E-9B7A-2D7C3E0F5A11", "sdk-7"])"));
}

struct HeaderNulls {
  std::string device;
};

class HeaderAbsentFacts : public testing::TestWithParam<HeaderNulls> {};

TEST_P(HeaderAbsentFacts, GiveNullsAndKeepNineValues) {
  const json header = section(
      collect(phone(R"("device": {"identifierForVendor": null, )" + GetParam().device + "}")),
      "GeneralInfo");
  ASSERT_EQ(header.size(), 9U);
  EXPECT_TRUE(header[7].is_null());
  EXPECT_TRUE(header[8].is_null());
}

INSTANTIATE_TEST_SUITE_P(SdkIdentifier, HeaderAbsentFacts,
                         testing::Values(HeaderNulls{R"("libraryBundle": null)"},
                                         HeaderNulls{R"("libraryBundle": {"SDKIdentifier": 42})"}));

TEST(DataExtractorManager, SecondRunDiffersOnlyInTheTimes) {
  DataExtractorManager manager(
      ProfilePlatform::load(TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json"));
  json first = json::parse(writeJson(manager.extractData()).view());
  json second = json::parse(writeJson(manager.extractData()).view());
  auto& firstHeader = first[0]["GeneralInfo"];
  auto& secondHeader = second[0]["GeneralInfo"];
  EXPECT_LT(firstHeader[3].get<double>(), secondHeader[2].get<double>());
  EXPECT_LE(secondHeader[2].get<double>(), secondHeader[3].get<double>());
  for (auto* header : {&firstHeader, &secondHeader}) {
    header->erase(3);
    header->erase(2);
  }
  EXPECT_EQ(first, second);
}

TEST(DataExtractorManager, RotationAngleComesFromTheRandomDraw) {
  // A draw of 90 gives an angle of 180 degrees: the identity turn.
  DataExtractorManager manager(phone(R"("random": {"draws": [90]})"));
  const auto [latitude, longitude] = manager.locationUtil().rotateCoordinate(48.8566, 2.3522);
  EXPECT_NEAR(*latitude, 48.8566, 1e-9);
  EXPECT_NEAR(*longitude, 2.3522, 1e-9);
}

struct PromptCase {
  std::string name;
  std::string permissions;
  std::vector<platform::Permission> expectedPrompts;
  std::string expectedStatuses;
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
  EXPECT_EQ(section(collect(platform), "Permissions"), json::parse(GetParam().expectedStatuses));
}

INSTANTIATE_TEST_SUITE_P(
    Permissions, Prompts,
    testing::Values(
        PromptCase{
            "allUndecided",
            R"({"photoLibrary": {"status": 0, "answer": 4}, "contacts": {"status": 0, "answer": 3},
                       "calendarEvents": {"status": 0, "answer": 2}, "reminders": {"status": 0, "answer": 3}})",
            {platform::Permission::photoLibrary, platform::Permission::contacts,
             platform::Permission::calendarEvents, platform::Permission::reminders},
            R"([["NSCalendarsUsageDescription",0],["NSRemindersUsageDescription",1],
                       ["NSContactsUsageDescription",1],["NSPhotoLibraryUsageDescription",0]])"},
        PromptCase{"onlyReminders",
                   R"({"photoLibrary": {"status": 3}, "contacts": {"status": 2},
                       "calendarEvents": {"status": 1}, "reminders": {"status": 0, "answer": 3}})",
                   {platform::Permission::reminders},
                   R"([["NSCalendarsUsageDescription",0],["NSRemindersUsageDescription",1],
                       ["NSContactsUsageDescription",0],["NSPhotoLibraryUsageDescription",1]])"},
        PromptCase{"allDecided",
                   R"({"photoLibrary": {"status": 4}, "contacts": {"status": 7},
                       "calendarEvents": {"status": 3}, "reminders": {"status": -1}})",
                   {},
                   R"([["NSCalendarsUsageDescription",1],["NSRemindersUsageDescription",0],
                       ["NSContactsUsageDescription",0],["NSPhotoLibraryUsageDescription",0]])"}),
    [](const auto& test) { return test.param.name; });

TEST(GeneralData, HasThirtyOneValuesWithNullsWhereFactsAreMissing) {
  const json data = section(
      collect(phone(R"("device": {"fileSystem": null, "carrier": null, "identifierForVendor": null,
                                  "radioAccessTechnology": "CTRadioAccessTechnologyNR",
                                  "physicalMemory": 18446744073709551615})")),
      "GeneralData");
  ASSERT_EQ(data.size(), 31U);
  EXPECT_TRUE(data[5].is_null());
  EXPECT_TRUE(data[11].is_null() && data[12].is_null());
  EXPECT_TRUE(data[13].is_number_unsigned());
  EXPECT_EQ(data[13].get<std::uint64_t>(), 18446744073709551615ULL);
  for (std::size_t i = 25; i < 30; ++i) EXPECT_TRUE(data[i].is_null()) << i;
  EXPECT_EQ(data[30], "CTRadioAccessTechnologyNR");
  for (std::size_t i : {6U, 7U, 8U, 9U, 10U, 22U}) EXPECT_TRUE(data[i].is_boolean()) << i;
}

TEST(GeneralData, CarrierWithoutNetworkCodesKeepsItsName) {
  const json data = section(collect(phone(R"("device": {"fileSystem": {"size": 64, "freeSize": 8},
                                  "carrier": {"carrierName": "Telekom", "allowsVOIP": true}})")),
                            "GeneralData");
  EXPECT_EQ(data[11], 64);
  EXPECT_EQ(data[25], true);
  EXPECT_EQ(data[26], "Telekom");
  EXPECT_TRUE(data[28].is_null() && data[29].is_null());
}

TEST(GeoInfo, ReportsTheFourCapabilitiesInOrder) {
  EXPECT_EQ(
      section(collect(phone(R"("location": {"significantLocationChangeMonitoringAvailable": false,
                                     "headingAvailable": true, "isRangingAvailable": true,
                                     "locationServicesEnabled": true})")),
              "GeoInfo"),
      json::parse("[false,true,true,true]"));
}

}  // namespace
}  // namespace tavrin
