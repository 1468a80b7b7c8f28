#include "platform/linux/LinuxPlatform.hpp"
#include "platform/linux/VendorIdentifier.hpp"

#include <gtest/gtest.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <fstream>
#include <stdexcept>

namespace tavrin::platform {
namespace {

using Json = nlohmann::json;

const std::string data = TAVRIN_TEST_DATA_DIR "/linux/";

LinuxSystemFiles fixtures(std::vector<std::string> osRelease, std::vector<std::string> model = {}) {
  return {std::move(osRelease), data + "machine-id", std::move(model)};
}

utsname unameFields() {
  utsname names{};
  EXPECT_EQ(uname(&names), 0);
  return names;
}

// One machine's files (linux/machines.json), each list in the order of
// preference, and what the device reports from them. A directory is no model
// name; without a version the kernel release stands in, as it does for an
// empty VERSION_ID.
class LinuxMachine : public testing::TestWithParam<Json> {};

TEST_P(LinuxMachine, IsNamedByItsFiles) {
  const Json& c = GetParam();
  const auto paths = [&c](const char* list) {
    std::vector<std::string> found;
    for (const std::string name : c.at(list)) found.push_back(data + name);
    return found;
  };
  LinuxDeviceInfo device("app", fixtures(paths("osRelease"), paths("model")));
  EXPECT_EQ(device.systemName(), c.at("systemName"));
  EXPECT_EQ(device.systemVersion(), c.value("version", std::string(unameFields().release)));
  EXPECT_EQ(device.model(), c.at("modelName"));
  EXPECT_EQ(device.localizedModel(), c.at("modelName"));
  // No version of the system holds a feature back.
  EXPECT_TRUE(device.isSystemVersionAtLeast(99, 0));
}

INSTANTIATE_TEST_SUITE_P(Files, LinuxMachine,
                         testing::ValuesIn(Json::parse(std::ifstream(data + "machines.json"))),
                         [](const auto& test) {
                           return test.param.at("name").template get<std::string>();
                         });

TEST(LinuxDeviceInfo, MachineIsTheUnameFieldPaddedWithZeros) {
  const std::string machine = unameFields().machine;
  ASSERT_FALSE(machine.empty());
  std::array<std::uint8_t, 256> expected{};
  std::copy(machine.begin(), machine.end(), expected.begin());
  EXPECT_EQ(LinuxDeviceInfo("app").machine(), expected);
}

TEST(LinuxDeviceInfo, VendorIdentifierComesFromTheMachineIdFile) {
  EXPECT_EQ(LinuxDeviceInfo("com.example.notes", fixtures({})).identifierForVendor(),
            VendorIdentifier::derive("4f1e9b2c7d3a48e6a5b0c1d2e3f40516", "com.example.notes"));
  // Without an application identifier the executable names the application.
  EXPECT_EQ(LinuxDeviceInfo("", fixtures({})).identifierForVendor(),
            LinuxDeviceInfo("tavrin_unit_tests", fixtures({})).identifierForVendor());
  EXPECT_EQ(
      LinuxDeviceInfo("com.example.notes", {.machineId = data + "missing"}).identifierForVendor(),
      std::nullopt);
}

TEST(LinuxDeviceInfo, HomeFileSystemIsTheOneStatvfsReportsAndAbsentWhenHomeIsGone) {
  const char* home = std::getenv("HOME");
  const std::optional<std::string> old = home ? std::optional<std::string>(home) : std::nullopt;
  struct statvfs stats {};
  if (old && !old->empty() && statvfs(old->c_str(), &stats) == 0) {
    const auto sizes = LinuxDeviceInfo("app").homeFileSystemSizes();
    ASSERT_TRUE(sizes && sizes->size && sizes->freeSize);
    EXPECT_EQ(*sizes->size, static_cast<std::int64_t>(stats.f_blocks * stats.f_frsize));
    EXPECT_LE(*sizes->freeSize, *sizes->size);
  }
  setenv("HOME", "/nonexistent/tavrin/home", 1);
  const auto sizes = LinuxDeviceInfo("app").homeFileSystemSizes();
  old ? setenv("HOME", old->c_str(), 1) : unsetenv("HOME");
  EXPECT_EQ(sizes, std::nullopt);
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

// The stores the build cannot read are restricted; the address book, when the
// build reads it, waits for the host's consent, which without a consent
// callback is no. A restricted store is never read, and its prompt is refused.
TEST(LinuxPlatform, StoresWithoutConsentAreNotRead) {
  const auto platform = makeLinuxPlatform("app");
#ifdef TAVRIN_WITH_EDS
  const std::int64_t contacts = AuthorizationStatus::notDetermined;
#else
  const std::int64_t contacts = AuthorizationStatus::restricted;
#endif
#ifdef TAVRIN_WITH_MEDIA
  const std::int64_t photos = AuthorizationStatus::notDetermined;
  const std::int64_t photosAnswer = AuthorizationStatus::denied;
#else
  const std::int64_t photos = AuthorizationStatus::restricted;
  const std::int64_t photosAnswer = AuthorizationStatus::restricted;
#endif
  for (const std::int64_t type : {0, 1, 2, -1}) {
    EXPECT_EQ(platform->contacts().authorizationStatus(type), contacts);
    EXPECT_EQ(platform->events().authorizationStatus(type), AuthorizationStatus::restricted);
  }
  EXPECT_EQ(platform->photos().authorizationStatus(), photos);

  int refusals = 0;
  const AccessHandler refused = [&](bool granted, std::optional<PlatformError> error) {
    refusals += !granted && !error ? 1 : 0;
  };
  platform->contacts().requestAccess(0, refused);
  platform->events().requestAccess(EntityType::reminder, refused);
  std::optional<std::int64_t> status;
  platform->photos().requestAuthorization([&](std::int64_t s) { status = s; });
  EXPECT_EQ(refusals, 2);
  EXPECT_EQ(status, photosAnswer);
  EXPECT_EQ(platform->photos().authorizationStatus(), photosAnswer);
  EXPECT_NE(platform->contacts().authorizationStatus(0), AuthorizationStatus::authorized);
}

// The host is asked once per store, and its answer is kept: a callback that
// throws or is missing has not said yes.
TEST(StoreConsent, AsksTheHostOnceAndKeepsItsAnswer) {
  struct Case {
    const char* name;
    std::function<bool(const std::string&)> answer;
    std::int64_t status;
  };
  const Case cases[] = {
      {"no callback", nullptr, AuthorizationStatus::denied},
      {"yes to contacts", [](const std::string& s) { return s == "contacts"; },
       AuthorizationStatus::authorized},
      {"yes to others", [](const std::string& s) { return s != "contacts"; },
       AuthorizationStatus::denied},
      {"throws", [](const std::string&) -> bool { throw std::runtime_error("no"); },
       AuthorizationStatus::denied},
  };
  for (const Case& c : cases) {
    int asked = 0;
    ConsentCallback callback;
    if (c.answer) callback = [&](const std::string& s) { return ++asked, c.answer(s); };
    StoreConsent consent("contacts", callback);
    EXPECT_EQ(consent.status(), AuthorizationStatus::notDetermined) << c.name;
    for (int round = 0; round < 2; ++round) {
      std::optional<bool> granted;
      consent.request([&](bool answer, std::optional<PlatformError>) { granted = answer; });
      EXPECT_EQ(granted, c.status == AuthorizationStatus::authorized) << c.name;
      EXPECT_EQ(consent.status(), c.status) << c.name;
    }
    EXPECT_EQ(asked, c.answer ? 1 : 0) << c.name;
  }
}

TEST(LinuxPlatform, ClockReadsSecondsSince1970) {
  const auto before = static_cast<double>(std::time(nullptr));
  const double now = makeLinuxPlatform("app")->clock().now();
  EXPECT_TRUE(now >= before && now < static_cast<double>(std::time(nullptr)) + 1) << now;
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
