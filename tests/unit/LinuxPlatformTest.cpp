#include "platform/linux/LinuxPlatform.hpp"
#include "platform/linux/VendorIdentifier.hpp"
#include "platform/linux/userDirectories.hpp"

#include "TemporaryDirectory.hpp"

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
#ifdef TAVRIN_WITH_ECAL
  const std::int64_t events = AuthorizationStatus::notDetermined;
#else
  const std::int64_t events = AuthorizationStatus::restricted;
#endif
  for (const std::int64_t type : {0, 1, 2, -1}) {
    EXPECT_EQ(platform->contacts().authorizationStatus(type), contacts);
    const bool calendarType = type == EntityType::event || type == EntityType::reminder;
    EXPECT_EQ(platform->events().authorizationStatus(type),
              calendarType ? events : AuthorizationStatus::restricted);
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

// The host is asked once per store; a real answer is kept in the application's
// file for the next run, whereas no callback, or one that throws, has not
// answered: denied now, and not determined again in the next run.
TEST(HostConsent, AsksOncePerStoreAndKeepsRealAnswersForTheNextRun) {
  struct Case {
    const char* name;
    std::function<bool(const std::string&)> answer;
    std::int64_t now;
    std::int64_t nextRun;
  };
  const Case cases[] = {
      {"no callback", nullptr, AuthorizationStatus::denied, AuthorizationStatus::notDetermined},
      {"yes to contacts", [](const std::string& s) { return s == "contacts"; },
       AuthorizationStatus::authorized, AuthorizationStatus::authorized},
      {"yes to others", [](const std::string& s) { return s != "contacts"; },
       AuthorizationStatus::denied, AuthorizationStatus::denied},
      {"throws", [](const std::string&) -> bool { throw std::runtime_error("no"); },
       AuthorizationStatus::denied, AuthorizationStatus::notDetermined},
  };
  for (const Case& c : cases) {
    const testing_support::TemporaryDirectory state;
    const auto file = HostConsent::fileFor(state.path(), "com.example.notes");
    int asked = 0;
    ConsentCallback callback;
    if (c.answer) callback = [&](const std::string& s) { return ++asked, c.answer(s); };
    const auto host = std::make_shared<HostConsent>(callback, file);
    const StoreConsent contacts("contacts", host);
    EXPECT_EQ(contacts.status(), AuthorizationStatus::notDetermined) << c.name;
    for (int round = 0; round < 2; ++round) {
      std::optional<bool> granted;
      contacts.request([&](bool answer, std::optional<PlatformError>) { granted = answer; });
      EXPECT_EQ(granted, c.now == AuthorizationStatus::authorized) << c.name;
      EXPECT_EQ(contacts.status(), c.now) << c.name;
    }
    EXPECT_EQ(asked, c.answer ? 1 : 0) << c.name;
    EXPECT_EQ(host->status("photos"), AuthorizationStatus::notDetermined) << c.name;
    EXPECT_EQ(HostConsent({}, file).status("contacts"), c.nextRun) << c.name;
    EXPECT_EQ(HostConsent({}, HostConsent::fileFor(state.path(), "other")).status("contacts"),
              AuthorizationStatus::notDetermined)
        << c.name;
  }
}

// Answers about different stores, given by two objects of one application,
// add up in its file; one that cannot be written still holds for the object.
TEST(HostConsent, AnswersOfOneApplicationAddUpAndOutliveAFileThatCannotBeWritten) {
  const testing_support::TemporaryDirectory state;
  const auto file = HostConsent::fileFor(state.path(), "app");
  const auto yes = [](const std::string&) { return true; };
  const auto no = [](const std::string&) { return false; };
  HostConsent first(yes, file);
  HostConsent second(no, file);
  first.request("contacts");
  second.request("photos");
  const HostConsent later({}, file);
  EXPECT_EQ(later.status("contacts"), AuthorizationStatus::authorized);
  EXPECT_EQ(later.status("photos"), AuthorizationStatus::denied);

  std::ofstream(state / "plain-file") << "x";
  const auto unwritable = HostConsent::fileFor(state / "plain-file", "app");
  HostConsent kept(yes, unwritable);
  EXPECT_EQ(kept.request("contacts"), AuthorizationStatus::authorized);
  EXPECT_EQ(kept.status("contacts"), AuthorizationStatus::authorized);
  EXPECT_EQ(HostConsent({}, unwritable).status("contacts"), AuthorizationStatus::notDetermined);
}

// The file of an application is named after it, and always within the
// consent folder: a name cannot climb out of it, hide, or exceed a file name.
TEST(HostConsent, FileIsNamedAfterTheApplicationWithinTheConsentFolder) {
  struct Case {
    std::string stateHome, application, file;
  };
  const Case cases[] = {
      {"/s", "com.example.Notes-2_b", "/s/tavrinsdk/consent/com.example.Notes-2_b"},
      {"/s", "../up/x", "/s/tavrinsdk/consent/%2E.%2Fup%2Fx"},
      {"/s", ".hidden", "/s/tavrinsdk/consent/%2Ehidden"},
      {"/s", "caf\xc3\xa9 app", "/s/tavrinsdk/consent/caf%C3%A9%20app"},
      {"/s", std::string(255, 'a'), "/s/tavrinsdk/consent/" + std::string(255, 'a')},
      {"/s", std::string(254, 'a') + "/", ""},
      {"", "app", ""},
      {"/s", "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(HostConsent::fileFor(c.stateHome, c.application).string(), c.file) << c.application;
  }
}

// The state home follows XDG_STATE_HOME when it is absolute, else the home.
TEST(UserDirectories, StateHomeIsAnAbsoluteXdgStateHomeElseInTheHome) {
  struct Case {
    const char* xdgStateHome;
    const char* home;
    const char* stateHome;
  };
  const Case cases[] = {
      {"/var/state", "/h", "/var/state"},
      {"relative/state", "/h", "/h/.local/state"},
      {nullptr, "/h", "/h/.local/state"},
  };
  const auto keep = [](const char* name) {
    const char* value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
  };
  const auto restore = [](const char* name, const std::optional<std::string>& value) {
    value ? setenv(name, value->c_str(), 1) : unsetenv(name);
  };
  const auto oldState = keep("XDG_STATE_HOME");
  const auto oldHome = keep("HOME");
  for (const Case& c : cases) {
    restore("XDG_STATE_HOME",
            c.xdgStateHome ? std::optional<std::string>(c.xdgStateHome) : std::nullopt);
    setenv("HOME", c.home, 1);
    EXPECT_EQ(stateHome().string(), c.stateHome) << (c.xdgStateHome ? c.xdgStateHome : "unset");
  }
  restore("XDG_STATE_HOME", oldState);
  restore("HOME", oldHome);
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
