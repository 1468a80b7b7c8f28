// The loader: the example profiles, a table of good and bad ones
// (profile-loader/cases.json), the files it refuses to read, and what it
// prints. Every shipped profile is read back by DeviceProfileWriterTest; the
// published schema is checked against them by tests/schema/check_profile_schema.py
// and against the reader's members by DeviceProfileSchemaTest.

#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <limits>

namespace tavrin::platform {
namespace {

// Keeps the members in the order they are written.
using Json = nlohmann::ordered_json;

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

// What a printed error may hold: valid UTF-8 without control characters.
void expectPrintable(const std::string& text) {
  EXPECT_NO_THROW((void)nlohmann::json(text).dump()) << "not UTF-8: " << text;
  EXPECT_EQ(std::count_if(text.begin(), text.end(), [](char c) { return c >= 0 && c < 0x20; }), 0)
      << text;
}

// Profiles at the edges of what is allowed, and past them. Each case has a name, the
// profile's "text" as is or a "profile" value written out compactly (empty profiles,
// mixed-case UUIDs, nested bundles, four-character codes and null devices are loaded by
// ProfilePlatformTest), "limits" when it reads under smaller ones than a profile's and,
// when the loader refuses it, the JSON "pointer" to the fault, a part of the "reason"
// and the start of the text "printed" when that is not FILE: POINTER: REASON. What is
// printed is short and printable whatever the profile holds.
class ProfileCase : public testing::TestWithParam<Json> {};

TEST_P(ProfileCase, IsLoadedOrFailsWithFilePointerAndReason) {
  const Json& c = GetParam();
  const std::string text =
      c.contains("text") ? c.at("text").get<std::string>() : c.at("profile").dump();
  ProfileLimits limits;
  for (const auto& [name, limit] : {std::pair{"bytes", &limits.bytes},
                                    {"depth", &limits.depth},
                                    {"values", &limits.values},
                                    {"containers", &limits.containers},
                                    {"eventRows", &limits.eventRows}}) {
    if (c.contains("limits") && c["limits"].contains(name)) *limit = c["limits"][name];
  }
  if (!c.contains("pointer")) {
    EXPECT_NO_THROW(readDeviceProfile(text, "good.json", limits));
    return;
  }
  try {
    readDeviceProfile(text, "bad.json", limits);
    FAIL() << "loaded";
  } catch (const DeviceProfileError& error) {
    EXPECT_EQ(error.file(), "bad.json");
    EXPECT_EQ(error.pointer(), c.at("pointer").get<std::string>());
    EXPECT_NE(error.reason().find(c.at("reason").get<std::string>()), std::string::npos)
        << error.reason();
    const std::string printed =
        c.value("printed", "bad.json: " + (error.pointer().empty() ? "" : error.pointer() + ": "));
    EXPECT_TRUE(std::string(error.what()).starts_with(printed)) << error.what();
    EXPECT_LT(std::string(error.what()).size(), 512U);
    expectPrintable(error.what());
  }
}

INSTANTIATE_TEST_SUITE_P(Profiles, ProfileCase,
                         testing::ValuesIn(Json::parse(
                             std::ifstream(TAVRIN_TEST_DATA_DIR "/profile-loader/cases.json"))),
                         [](const auto& test) {
                           return test.param.at("name").template get<std::string>();
                         });

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

// A file that cannot be read and one that is malformed both name the file by
// its path. Devices and pipes are refused by ProfileCommandTest's DatasetCommand.
TEST(DeviceProfileLoader, FileErrorsNameTheFile) {
  const auto directory = std::filesystem::temp_directory_path() / "tavrin-profile-files";
  std::filesystem::create_directories(directory);
  const auto bad = (directory / "bad.json").string();
  std::ofstream(bad) << R"({"location": {"headingAvailable": 1}})";
  const std::string missing = examples + "no-such-profile.json";
  for (const auto& [file, start] :
       {std::pair{missing, missing + ": cannot read the file: No such file"},
        {directory.string(), directory.string() + ": cannot read the file: it is a directory"},
        {bad, bad + ": /location/headingAvailable: expected a boolean"}}) {
    try {
      loadDeviceProfile(file);
      ADD_FAILURE() << "loaded " << file;
    } catch (const DeviceProfileError& error) {
      EXPECT_TRUE(std::string(error.what()).starts_with(start)) << error.what();
    }
  }
  std::filesystem::remove_all(directory);
}

}  // namespace
}  // namespace tavrin::platform
