#include "platform/linux/LinuxPlatform.hpp"

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <memory>

namespace tavrin::platform {
namespace {

const std::string data = TAVRIN_TEST_DATA_DIR "/linux/";

LinuxSystemFiles fixtures(std::vector<std::string> osRelease, std::vector<std::string> model = {}) {
  LinuxSystemFiles files;
  files.osRelease = std::move(osRelease);
  files.machineId = data + "machine-id";
  files.model = std::move(model);
  return files;
}

utsname unameFields() {
  utsname names{};
  EXPECT_EQ(uname(&names), 0);
  return names;
}

struct SystemCase {
  std::vector<std::string> osRelease;
  std::string name;
  std::optional<std::string> version;  // absent: the kernel release stands in
};

class LinuxSystem : public testing::TestWithParam<SystemCase> {};

TEST_P(LinuxSystem, IsNamedByOsRelease) {
  LinuxDeviceInfo device("app", fixtures(GetParam().osRelease));
  EXPECT_EQ(device.systemName(), GetParam().name);
  EXPECT_EQ(device.systemVersion(), GetParam().version.value_or(unameFields().release));
}

INSTANTIATE_TEST_SUITE_P(
    Files, LinuxSystem,
    testing::Values(SystemCase{{data + "os-release-debian"}, "Debian GNU/Linux", "12"},
                    SystemCase{
                        {data + "missing", data + "os-release-debian"}, "Debian GNU/Linux", "12"},
                    SystemCase{{data + "os-release-rolling"}, "Arch Linux", std::nullopt},
                    SystemCase{{data + "os-release-unnamed"}, "Linux", std::nullopt},
                    SystemCase{{}, "Linux", std::nullopt}));

struct ModelCase {
  std::vector<std::string> files;
  std::string model;
};

class LinuxModel : public testing::TestWithParam<ModelCase> {};

TEST_P(LinuxModel, IsTheHardwaresOwnNameOrLinux) {
  LinuxDeviceInfo device("app", fixtures({}, GetParam().files));
  EXPECT_EQ(device.model(), GetParam().model);
  EXPECT_EQ(device.localizedModel(), GetParam().model);
}

INSTANTIATE_TEST_SUITE_P(
    Files, LinuxModel,
    testing::Values(
        ModelCase{{data + "product_name", data + "device-tree-model"}, "ThinkPad X1 Carbon Gen 9"},
        ModelCase{{data + "missing", data + "device-tree-model"}, "Raspberry Pi 4 Model B Rev 1.4"},
        ModelCase{{data, data + "missing"}, "Linux"},  // a directory is no name
        ModelCase{{}, "Linux"}));

TEST(LinuxDeviceInfo, MachineIsTheUnameFieldPaddedWithZeros) {
  const std::string machine = unameFields().machine;
  ASSERT_FALSE(machine.empty());
  std::array<std::uint8_t, 256> expected{};
  std::copy(machine.begin(), machine.end(), expected.begin());
  EXPECT_EQ(LinuxDeviceInfo("app").machine(), expected);
}

TEST(LinuxDeviceInfo, VendorIdentifierComesFromTheMachineIdFile) {
  const Uuid expected{0xA2, 0x7C, 0x22, 0x64, 0x6F, 0xFA, 0x42, 0x41,
                      0xA1, 0xD8, 0x95, 0x8F, 0xF2, 0xFD, 0x7E, 0x13};
  EXPECT_EQ(LinuxDeviceInfo("com.example.notes", fixtures({})).identifierForVendor(), expected);
  // Without an application identifier the executable names the application.
  EXPECT_EQ(LinuxDeviceInfo("", fixtures({})).identifierForVendor(),
            LinuxDeviceInfo("tavrin_unit_tests", fixtures({})).identifierForVendor());

  auto files = fixtures({});
  files.machineId = data + "missing";
  EXPECT_EQ(LinuxDeviceInfo("com.example.notes", files).identifierForVendor(), std::nullopt);
}

TEST(LinuxDeviceInfo, HomeFileSystemIsTheOneStatvfsReports) {
  const char* home = std::getenv("HOME");
  struct statvfs stats {};
  if (home == nullptr || *home == '\0' || statvfs(home, &stats) != 0) GTEST_SKIP() << "no home";
  const auto sizes = LinuxDeviceInfo("app").homeFileSystemSizes();
  ASSERT_TRUE(sizes && sizes->size && sizes->freeSize);
  EXPECT_EQ(*sizes->size, static_cast<std::int64_t>(stats.f_blocks * stats.f_frsize));
  EXPECT_GE(*sizes->freeSize, 0);
  EXPECT_LE(*sizes->freeSize, *sizes->size);
}

TEST(LinuxDeviceInfo, HomeFileSystemIsAbsentWhenHomeIsGone) {
  const char* home = std::getenv("HOME");
  const std::optional<std::string> old = home ? std::optional<std::string>(home) : std::nullopt;
  setenv("HOME", "/nonexistent/tavrin/home", 1);
  const auto sizes = LinuxDeviceInfo("app").homeFileSystemSizes();
  old ? setenv("HOME", old->c_str(), 1) : unsetenv("HOME");
  EXPECT_EQ(sizes, std::nullopt);
}

TEST(LinuxDeviceInfo, LocaleAndTimeZoneAreIcusDefaults) {
  LinuxDeviceInfo device("app");
  EXPECT_EQ(device.currentLocale().identifier, icu::Locale::getDefault().getName());
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  icu::UnicodeString id;
  std::string expected;
  zone->getID(id).toUTF8String(expected);
  const auto facts = device.currentTimeZone(static_cast<double>(std::time(nullptr)));
  EXPECT_EQ(facts.identifier, expected);
  EXPECT_TRUE(facts.abbreviation && !facts.abbreviation->empty());
}

TEST(LinuxPlatform, LibraryBundleHoldsOnlyTheBuildsSdkIdentifier) {
  const auto platform = makeLinuxPlatform("app");
  auto& device = platform->device();
#ifdef TAVRIN_SDK_IDENTIFIER
  EXPECT_EQ(device.libraryBundleString("SDKIdentifier"), TAVRIN_SDK_IDENTIFIER);
#else
  EXPECT_EQ(device.libraryBundleString("SDKIdentifier"), std::nullopt);
#endif
  EXPECT_EQ(device.libraryBundleString("CFBundleIdentifier"), std::nullopt);
}

// The stores are never read behind a restricted status, so only the status
// and the prompts matter.
TEST(LinuxPlatform, StoresAreRestrictedAndPromptsRefused) {
  const auto platform = makeLinuxPlatform("app");
  for (const std::int64_t type : {0, 1, 2, -1}) {
    EXPECT_EQ(platform->contacts().authorizationStatus(type), AuthorizationStatus::restricted);
    EXPECT_EQ(platform->events().authorizationStatus(type), AuthorizationStatus::restricted);
  }
  EXPECT_EQ(platform->photos().authorizationStatus(), AuthorizationStatus::restricted);

  // Prompts are never called for, and refused at once if they are.
  int refusals = 0;
  const AccessHandler refused = [&](bool granted, std::optional<PlatformError> error) {
    refusals += !granted && !error ? 1 : 0;
  };
  platform->contacts().requestAccess(0, refused);
  platform->events().requestAccess(EntityType::reminder, refused);
  std::optional<std::int64_t> status;
  platform->photos().requestAuthorization([&](std::int64_t s) { status = s; });
  EXPECT_EQ(refusals, 2);
  EXPECT_EQ(status, AuthorizationStatus::restricted);
}

TEST(LinuxPlatform, ClockReadsSecondsSince1970) {
  const auto before = static_cast<double>(std::time(nullptr));
  const double now = makeLinuxPlatform("app")->clock().now();
  const auto after = static_cast<double>(std::time(nullptr));
  EXPECT_GE(now, before);
  EXPECT_LT(now, after + 1);
}

TEST(SystemRandomSource, DrawsBelowTheBoundWithoutModuloBias) {
  SystemRandomSource random;
  EXPECT_EQ(random.uniform(0), 0u);
  EXPECT_EQ(random.uniform(1), 0u);
  for (const std::uint32_t bound : {2u, 7u, 360u, 0x80000001u, 0xFFFFFFFFu}) {
    for (int i = 0; i < 200; ++i) EXPECT_LT(random.uniform(bound), bound);
  }
  // With the bound 3 * 2^30, taking a 32-bit word modulo the bound would put
  // half of all draws below 2^30 instead of a third. Of 3000 draws a third is
  // 1000; the standard deviation is about 26, so these bounds are ten of them away.
  int low = 0;
  for (int i = 0; i < 3000; ++i) low += random.uniform(3u << 30) < (1u << 30) ? 1 : 0;
  EXPECT_LT(low, 1260);
  EXPECT_GT(low, 740);
}

}  // namespace
}  // namespace tavrin::platform
