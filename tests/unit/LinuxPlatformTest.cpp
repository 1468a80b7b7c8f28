#include "platform/linux/LinuxPlatform.hpp"

#include "platform/linux/readTextFile.hpp"

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unicode/locid.h>
#include <unicode/timezone.h>
#include <unistd.h>

#include <cstdlib>
#include <ctime>
#include <memory>
#include <set>

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

std::string kernelRelease() {
  utsname names{};
  EXPECT_EQ(uname(&names), 0);
  return names.release;
}

// Sets an environment variable for one test and puts the old value back.
class ScopedEnvironment {
 public:
  ScopedEnvironment(const char* name, const char* value) : _name(name) {
    if (const char* old = std::getenv(name)) _old = old;
    setenv(name, value, 1);
  }
  ~ScopedEnvironment() {
    if (_old)
      setenv(_name, _old->c_str(), 1);
    else
      unsetenv(_name);
  }
  ScopedEnvironment(const ScopedEnvironment&) = delete;
  ScopedEnvironment& operator=(const ScopedEnvironment&) = delete;

 private:
  const char* _name;
  std::optional<std::string> _old;
};

struct SystemCase {
  std::vector<std::string> osRelease;
  std::string name;
  std::optional<std::string> version;  // absent: the kernel release stands in
};

class LinuxSystem : public testing::TestWithParam<SystemCase> {};

TEST_P(LinuxSystem, IsNamedByOsRelease) {
  LinuxDeviceInfo device("app", fixtures(GetParam().osRelease));
  EXPECT_EQ(device.systemName(), GetParam().name);
  EXPECT_EQ(device.systemVersion(), GetParam().version.value_or(kernelRelease()));
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

TEST(LinuxDeviceInfo, MachineIsTheUnameField) {
  utsname names{};
  ASSERT_EQ(uname(&names), 0);
  const auto field = LinuxDeviceInfo("app").machine();
  const std::string machine(names.machine);
  ASSERT_FALSE(machine.empty());
  EXPECT_EQ(std::string(field.begin(), field.begin() + static_cast<long>(machine.size())), machine);
  for (std::size_t i = machine.size(); i < field.size(); ++i) EXPECT_EQ(field[i], 0) << i;
}

TEST(LinuxDeviceInfo, VendorIdentifierComesFromTheMachineIdFile) {
  LinuxDeviceInfo device("com.example.notes", fixtures({}));
  const Uuid expected{0xA2, 0x7C, 0x22, 0x64, 0x6F, 0xFA, 0x42, 0x41,
                      0xA1, 0xD8, 0x95, 0x8F, 0xF2, 0xFD, 0x7E, 0x13};
  EXPECT_EQ(device.identifierForVendor(), expected);

  auto files = fixtures({});
  files.machineId = data + "missing";
  EXPECT_EQ(LinuxDeviceInfo("com.example.notes", files).identifierForVendor(), std::nullopt);
}

TEST(LinuxDeviceInfo, WithoutAnApplicationIdentifierTheExecutableNamesIt) {
  const auto named = LinuxDeviceInfo("tavrin_unit_tests", fixtures({})).identifierForVendor();
  ASSERT_TRUE(named);
  EXPECT_EQ(LinuxDeviceInfo("", fixtures({})).identifierForVendor(), named);
}

TEST(LinuxPlatform, VendorIdentifierIsStablePerApplicationAndHidesTheMachineId) {
  const auto machineId = readTextFile("/etc/machine-id");
  if (!machineId || firstLine(*machineId).size() != 32) {
    EXPECT_EQ(makeLinuxPlatform("a")->device().identifierForVendor(), std::nullopt);
    return;
  }
  const auto first = makeLinuxPlatform("com.example.a")->device().identifierForVendor();
  const auto again = makeLinuxPlatform("com.example.a")->device().identifierForVendor();
  const auto other = makeLinuxPlatform("com.example.b")->device().identifierForVendor();
  ASSERT_TRUE(first && other);
  EXPECT_EQ(first, again);
  EXPECT_NE(first, other);
  // No four consecutive bytes of the machine id survive into the identifier.
  const auto id = firstLine(*machineId);
  for (std::size_t at = 0; at + 4 <= first->size(); ++at) {
    char window[9];
    std::snprintf(window, sizeof window, "%02x%02x%02x%02x", (*first)[at], (*first)[at + 1],
                  (*first)[at + 2], (*first)[at + 3]);
    EXPECT_EQ(id.find(window), std::string_view::npos) << window;
  }
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
  ScopedEnvironment home("HOME", "/nonexistent/tavrin/home");
  EXPECT_EQ(LinuxDeviceInfo("app").homeFileSystemSizes(), std::nullopt);
}

TEST(LinuxDeviceInfo, LocaleAndTimeZoneAreIcusDefaults) {
  LinuxDeviceInfo device("app");
  const auto locale = device.currentLocale();
  EXPECT_FALSE(locale.identifier.empty());
  EXPECT_EQ(locale.identifier, icu::Locale::getDefault().getName());

  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createDefault());
  icu::UnicodeString id;
  std::string expected;
  zone->getID(id).toUTF8String(expected);
  const auto facts = device.currentTimeZone(static_cast<double>(std::time(nullptr)));
  EXPECT_EQ(facts.identifier, expected);
  ASSERT_TRUE(facts.abbreviation);
  EXPECT_FALSE(facts.abbreviation->empty());
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

TEST(LinuxPlatform, StoresAreRestrictedEmptyAndRefused) {
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

  int visits = 0;
  EXPECT_EQ(
      platform->contacts().enumerateContacts({"givenName"}, [&](const Contact&) { ++visits; }),
      std::nullopt);
  const auto groups = platform->contacts().groups();
  ASSERT_TRUE(std::holds_alternative<std::vector<ContactGroup>>(groups));
  EXPECT_TRUE(std::get<std::vector<ContactGroup>>(groups).empty());
  EXPECT_TRUE(platform->events().calendars(EntityType::event).empty());
  EXPECT_TRUE(platform->events().events(0, 4e9, {}).empty());
  std::optional<std::vector<Reminder>> reminders;
  platform->events().fetchReminders({}, [&](auto list) { reminders = std::move(list); });
  ASSERT_TRUE(reminders);
  EXPECT_TRUE(reminders->empty());
  platform->photos().enumerateAssets(MediaType::image, [&](const Asset&) { ++visits; });
  platform->photos().enumerateCollections(1, PhotoLibrary::anySubtype,
                                          [&](const AssetCollection&) { ++visits; });
  EXPECT_EQ(visits, 0);
}

TEST(LinuxPlatform, ClockReadsSecondsSince1970) {
  const auto before = static_cast<double>(std::time(nullptr));
  const double now = makeLinuxPlatform("app")->clock().now();
  const auto after = static_cast<double>(std::time(nullptr));
  EXPECT_GE(now, before);
  EXPECT_LT(now, after + 1);
}

TEST(SystemRandomSource, DrawsBelowTheBound) {
  SystemRandomSource random;
  EXPECT_EQ(random.uniform(0), 0u);
  EXPECT_EQ(random.uniform(1), 0u);
  for (const std::uint32_t bound : {2u, 7u, 360u, 0x80000001u, 0xFFFFFFFFu}) {
    for (int i = 0; i < 200; ++i) EXPECT_LT(random.uniform(bound), bound);
  }
}

// With the bound 3 * 2^30, taking a 32-bit word modulo the bound would put half
// of all draws below 2^30 instead of a third.
TEST(SystemRandomSource, HasNoModuloBias) {
  SystemRandomSource random;
  constexpr std::uint32_t bound = 3u << 30;
  constexpr int draws = 3000;
  int low = 0;
  for (int i = 0; i < draws; ++i) low += random.uniform(bound) < (1u << 30) ? 1 : 0;
  // A third is 1000; the standard deviation is about 26, so this bound is ten of them away.
  EXPECT_LT(low, 1260);
  EXPECT_GT(low, 740);
}

}  // namespace
}  // namespace tavrin::platform
