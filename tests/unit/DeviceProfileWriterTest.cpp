// The profile writer against the loader: whatever it writes must read back to
// the same phone, for every shipped profile and for the values that are hard
// to write (escapes, extreme numbers, the members whose null means something).

#include "generator/DeviceProfileWriter.hpp"

#include "dataset/DataExtractorManager.hpp"
#include "dataset/JsonWriter.hpp"
#include "dataset/PermissionHeplper.hpp"
#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>

namespace tavrin::tool {
namespace {

using namespace platform;

std::string written(const DeviceProfile& profile) {
  std::ostringstream text;
  writeDeviceProfile(profile, text, "rewritten");
  return text.str();
}

std::string fileText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The dataset a collection of this phone uploads.
std::string datasetOf(const DeviceProfile& profile) {
  auto phone = std::make_shared<ProfilePlatform>(profile);
  DataExtractorManager manager(phone);
  PermissionHeplper::requestPermissions(*phone);
  return writeJson(manager.extractData()).str();
}

std::vector<std::filesystem::path> shippedProfiles() {
  std::vector<std::filesystem::path> paths;
  for (const auto* dir : {"/examples/profiles", "/tests/data/profiles", "/tests/data"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(TAVRIN_SOURCE_DIR) + dir)) {
      if (entry.path().extension() == ".json") paths.push_back(entry.path());
    }
  }
  return paths;
}

class ShippedProfile : public testing::TestWithParam<std::filesystem::path> {};

TEST_P(ShippedProfile, ReadsBackAsTheSamePhone) {
  const auto original = readDeviceProfile(fileText(GetParam()), GetParam().string());
  const auto text = written(original);
  const auto reread = readDeviceProfile(text, "rewritten.json");
  // Writing what was read gives the same text again, and the same phone:
  // every fact a collection reports comes out the same. Without a fixed
  // clock and random draw the header times and the rotation differ from run
  // to run, so only the fixed-point part applies there.
  EXPECT_EQ(written(reread), text);
  if (original.clock && original.draws) {
    EXPECT_EQ(datasetOf(reread), datasetOf(original));
  }
}

INSTANTIATE_TEST_SUITE_P(Profiles, ShippedProfile, testing::ValuesIn(shippedProfiles()),
                         [](const auto& test) {
                           std::string name = test.param.stem().string();
                           for (auto& c : name) {
                             if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
                           }
                           return name;
                         });

TEST(DeviceProfileWriter, KeepsTextsAndNumbersThatAreHardToWrite) {
  DeviceProfile profile;
  Contact contact;
  contact.identifier = "quote\" backslash\\ control\x01\x1f tab\t line\n";
  contact.givenName = "Zoë 王伟 🙂";
  contact.birthday = 0.1;
  contact.nonGregorianBirthday = -1e300;
  contact.contactType = std::numeric_limits<std::int64_t>::min();
  contact.phoneNumbers.push_back({"p", std::nullopt, ""});
  profile.contacts.list.push_back(contact);
  profile.contacts.failAfter = 0;
  profile.contacts.groupsError = "groups refused";
  profile.device.physicalMemory = std::numeric_limits<std::uint64_t>::max();
  profile.device.machine[0] = 'a';
  profile.device.machine[2] = 'b';  // a zero byte inside
  profile.device.fileSystem.reset();
  profile.permissions[0].answer = 2;
  profile.reminders.reset();
  profile.captureDevices.emplace();
  profile.captureDevices->emplace_back();  // something that is not a capture device
  CaptureDevice camera;
  camera.lensAperture = 0.1f;
  camera.activeFormat.mediaType = 0x01020304;  // not printable: written as a number
  camera.activeFormat.mediaSubType = 0x34323066;
  profile.captureDevices->push_back(camera);

  const auto back = readDeviceProfile(written(profile), "hard.json");
  ASSERT_EQ(back.contacts.list.size(), 1U);
  const auto& c = back.contacts.list[0];
  EXPECT_EQ(c.identifier, contact.identifier);
  EXPECT_EQ(c.givenName, contact.givenName);
  EXPECT_EQ(c.birthday, 0.1);
  EXPECT_EQ(c.nonGregorianBirthday, -1e300);
  EXPECT_EQ(c.contactType, std::numeric_limits<std::int64_t>::min());
  ASSERT_EQ(c.phoneNumbers.size(), 1U);
  EXPECT_FALSE(c.phoneNumbers[0].label.has_value());
  EXPECT_EQ(back.contacts.failAfter, 0U);
  EXPECT_EQ(back.contacts.groupsError, "groups refused");
  EXPECT_EQ(back.device.physicalMemory, std::numeric_limits<std::uint64_t>::max());
  EXPECT_EQ(back.device.machine, profile.device.machine);
  EXPECT_FALSE(back.device.fileSystem.has_value());
  EXPECT_EQ(back.permissions[0].answer, 2);
  EXPECT_FALSE(back.reminders.has_value());
  ASSERT_TRUE(back.captureDevices.has_value());
  ASSERT_EQ(back.captureDevices->size(), 2U);
  EXPECT_FALSE((*back.captureDevices)[0].has_value());
  const auto& device = *(*back.captureDevices)[1];
  EXPECT_EQ(device.lensAperture, 0.1f);
  EXPECT_EQ(device.activeFormat.mediaType, 0x01020304U);
  EXPECT_EQ(device.activeFormat.mediaSubType, 0x34323066U);
}

TEST(DeviceProfileWriter, TellsAnEmptyAnswerFromNoAnswer) {
  // Left out, these three are empty answers; only null makes the query fail.
  DeviceProfile profile;
  const auto back = readDeviceProfile(written(profile), "defaults.json");
  EXPECT_TRUE(back.device.fileSystem.has_value());
  EXPECT_TRUE(back.reminders.has_value());
  EXPECT_TRUE(back.captureDevices.has_value());
}

}  // namespace
}  // namespace tavrin::tool
