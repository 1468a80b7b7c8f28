// The profile writer against the loader: whatever it writes must read back to
// the same phone, for every shipped profile (among them the members whose
// null means something) and for the values that are hard to write (escapes,
// extreme numbers).

#include "generator/DeviceProfileWriter.hpp"

#include "collection/DataExtractorManager.hpp"
#include "collection/PermissionHeplper.hpp"
#include "dataset/JsonWriter.hpp"
#include "platform/profile/DeviceProfileReader.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <limits>
#include <sstream>
#include <tuple>

namespace tavrin::tool {
namespace {

using namespace platform;

std::string written(const DeviceProfile& profile) {
  std::ostringstream text;
  writeDeviceProfile(profile, text);
  return text.str();
}

// The dataset a collection of this phone uploads.
std::string datasetOf(const DeviceProfile& profile) {
  auto phone = std::make_shared<ProfilePlatform>(profile);
  DataExtractorManager manager(phone);
  PermissionHeplper::requestPermissions(*phone);
  return writeJson(manager.extractData()).str();
}

std::vector<std::string> shippedProfiles() {
  std::vector<std::string> paths;
  for (const auto* dir : {"/examples/profiles", "/tests/data/profiles", "/tests/data"}) {
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(TAVRIN_SOURCE_DIR) + dir)) {
      if (entry.path().extension() == ".json") paths.push_back(entry.path().string());
    }
  }
  return paths;
}

class ShippedProfile : public testing::TestWithParam<std::string> {};

TEST_P(ShippedProfile, ReadsBackAsTheSamePhone) {
  std::ifstream file(GetParam(), std::ios::binary);
  const auto original =
      readDeviceProfile(std::string(std::istreambuf_iterator<char>(file), {}), GetParam());
  const auto text = written(original);
  const auto reread = readDeviceProfile(text, "rewritten.json");
  // Writing what was read gives the same text again, and the same phone:
  // every fact a collection reports comes out the same. Without a fixed
  // clock and random draw the header times and the rotation differ from run
  // to run, so only the fixed-point part applies there.
  EXPECT_EQ(written(reread), text);
  if (original.clock && original.random) {
    EXPECT_EQ(datasetOf(reread), datasetOf(original));
  }
}

INSTANTIATE_TEST_SUITE_P(Profiles, ShippedProfile, testing::ValuesIn(shippedProfiles()));

// Null labels and lists, failing queries and left-out answers are in the
// shipped profiles above; these values are in none of them.
TEST(DeviceProfileWriter, KeepsTextsAndNumbersThatAreHardToWrite) {
  DeviceProfile profile;
  auto& contact = profile.contacts.list.emplace_back();
  contact.identifier = "quote\" backslash\\ control\x01\x1f tab\t line\n";
  contact.givenName = "Zoë 王伟 🙂";
  contact.birthday = 0.1;
  contact.nonGregorianBirthday = -1e300;
  contact.contactType = std::numeric_limits<std::int64_t>::min();
  profile.contacts.failAfter = 0;
  profile.device.physicalMemory = std::numeric_limits<std::uint64_t>::max();
  profile.device.machine[0] = 'a';
  profile.device.machine[2] = 'b';  // a zero byte inside
  auto& camera = profile.captureDevices->emplace_back().emplace();
  camera.lensAperture = 0.1f;
  camera.activeFormat.mediaType = 0x01020304;  // not printable: written as a number
  camera.activeFormat.mediaSubType = 0x34323066;

  const auto back = readDeviceProfile(written(profile), "hard.json");
  ASSERT_TRUE(back.contacts.list.size() == 1 && back.captureDevices &&
              back.captureDevices->size() == 1 && back.captureDevices->front());
  const auto hardValues = [](const DeviceProfile& p) {
    const auto& c = p.contacts.list[0];
    const auto& d = *p.captureDevices->front();
    return std::tuple(c.identifier, c.givenName, c.birthday, c.nonGregorianBirthday, c.contactType,
                      p.contacts.failAfter, p.device.physicalMemory, p.device.machine,
                      d.lensAperture, d.activeFormat.mediaType, d.activeFormat.mediaSubType);
  };
  EXPECT_EQ(hardValues(back), hardValues(profile));
}

}  // namespace
}  // namespace tavrin::tool
