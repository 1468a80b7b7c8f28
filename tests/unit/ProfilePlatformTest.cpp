#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>

namespace tavrin::platform {
namespace {

std::shared_ptr<ProfilePlatform> profile(const std::string& json) {
  return ProfilePlatform::fromText(json, "test.json");
}

// What a prompt's completion reported, and where it ran.
struct Completion {
  std::int64_t status = -1;  // the photo library's new status; for the stores, granted as 1/0
  std::optional<PlatformError> error;
  std::thread::id thread;
};

// Asks as the permission's store does, with this entity type for the stores, and blocks
// until the completion arrives (it may come from any thread).
Completion ask(ProfilePlatform& platform, Permission permission, std::int64_t entityType) {
  std::promise<Completion> answered;
  auto future = answered.get_future();
  const AccessHandler store = [&answered](bool granted, std::optional<PlatformError> error) {
    answered.set_value({granted ? 1 : 0, std::move(error), std::this_thread::get_id()});
  };
  switch (permission) {
    case Permission::photoLibrary:
      platform.photos().requestAuthorization([&answered](std::int64_t status) {
        answered.set_value({status, std::nullopt, std::this_thread::get_id()});
      });
      break;
    case Permission::contacts: platform.contacts().requestAccess(entityType, store); break;
    default: platform.events().requestAccess(entityType, store);
  }
  return future.get();
}

std::int64_t statusOf(ProfilePlatform& platform, Permission permission) {
  switch (permission) {
    case Permission::photoLibrary: return platform.photos().authorizationStatus();
    case Permission::contacts: return platform.contacts().authorizationStatus(0);
    case Permission::calendarEvents: return platform.events().authorizationStatus(0);
    case Permission::reminders: return platform.events().authorizationStatus(1);
  }
  return -1;
}

struct PromptCase {
  const char* name;
  Permission permission;
  std::int64_t statusAfter;    // what the profile's answer leaves
  std::int64_t reportedAfter;  // what the completion reports
};

class PromptTest : public testing::TestWithParam<PromptCase> {};

// Each permission is undecided; the user grants photos, denies contacts,
// answers calendars with a status a later system might invent, and dismisses
// reminders (no answer: still undecided).
constexpr const char* undecided = R"({"permissions": {
  "photoLibrary": {"status": 0, "answer": 3}, "contacts": {"status": 0, "answer": 2},
  "calendarEvents": {"status": 0, "answer": 17}, "reminders": {"status": 0}}})";

TEST_P(PromptTest, CompletesOnAnotherThreadAfterTheAnswerTookEffect) {
  const auto& c = GetParam();
  auto platform = profile(undecided);
  EXPECT_EQ(statusOf(*platform, c.permission), AuthorizationStatus::notDetermined);
  const auto completion =
      ask(*platform, c.permission, c.permission == Permission::reminders ? 1 : 0);
  EXPECT_NE(completion.thread, std::this_thread::get_id());
  EXPECT_EQ(completion.status, c.reportedAfter);
  EXPECT_FALSE(completion.error);
  EXPECT_EQ(statusOf(*platform, c.permission), c.statusAfter);

  const auto log = platform->promptLog();
  ASSERT_EQ(log.size(), 1U);
  EXPECT_EQ(log[0].permission, c.permission);
  EXPECT_EQ(log[0].completionThread, completion.thread);
  EXPECT_EQ(log[0].pendingAtRequest, 0U);
}

INSTANTIATE_TEST_SUITE_P(EveryPermission, PromptTest,
                         testing::Values(PromptCase{"photoLibrary", Permission::photoLibrary, 3, 3},
                                         PromptCase{"contacts", Permission::contacts, 2, 0},
                                         PromptCase{"calendarEvents", Permission::calendarEvents,
                                                    17, 0},
                                         PromptCase{"reminders", Permission::reminders, 0, 0}),
                         [](const auto& test) { return std::string(test.param.name); });

TEST(ProfilePlatform, DestructionWaitsForCompletionsStartedByCompletions) {
  std::atomic<int> delivered{0};
  {
    const auto platform = profile(undecided);
    auto& contacts = platform->contacts();
    platform->photos().requestAuthorization([&contacts, &delivered](std::int64_t) {
      ++delivered;
      contacts.requestAccess(0, [&delivered](bool, auto) { ++delivered; });
    });
  }
  EXPECT_EQ(delivered, 2);
}

TEST(ProfilePlatform, AnEntityTypeTheStoreLacksIsRefusedWithoutAPrompt) {
  auto platform = profile(undecided);
  for (const auto& [permission, entityType] :
       {std::pair{Permission::contacts, 1}, std::pair{Permission::calendarEvents, 2}}) {
    const auto completion = ask(*platform, permission, entityType);
    EXPECT_EQ(completion.status, 0);
    ASSERT_TRUE(completion.error);
    EXPECT_NE(completion.error->localizedDescription.find("entity type"), std::string::npos);
  }
  EXPECT_EQ(platform->contacts().authorizationStatus(1), AuthorizationStatus::restricted);
  EXPECT_TRUE(platform->promptLog().empty());
}

// Fetches reminders and waits for the completion.
std::pair<std::optional<std::vector<Reminder>>, std::thread::id> fetch(
    ProfilePlatform& platform, const std::vector<std::string>& lists) {
  std::promise<std::pair<std::optional<std::vector<Reminder>>, std::thread::id>> delivered;
  auto future = delivered.get_future();
  platform.events().fetchReminders(lists, [&](std::optional<std::vector<Reminder>> r) {
    delivered.set_value({std::move(r), std::this_thread::get_id()});
  });
  return future.get();
}

TEST(ProfilePlatform, RemindersArriveOnAnotherThreadFromTheListsAskedFor) {
  auto platform = profile(R"({
    "permissions": {"reminders": {"status": 3}},
    "calendars": {"reminders": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "b"}]},
    "reminders": [{"calendarIdentifier": "a", "calendarItemIdentifier": "r1", "dueDate": 1609459200},
                  {"calendarIdentifier": "b", "calendarItemIdentifier": "r2"},
                  {"calendarIdentifier": "a", "calendarItemIdentifier": "r3"}]})");
  const auto [reminders, thread] = fetch(*platform, {"a"});
  EXPECT_NE(thread, std::this_thread::get_id());
  ASSERT_TRUE(reminders && reminders->size() == 2U);
  EXPECT_EQ((*reminders)[0].calendarItemIdentifier, "r1");
  EXPECT_EQ((*reminders)[0].dueDate, 1609459200.0);
  EXPECT_EQ((*reminders)[1].calendarItemIdentifier, "r3");
  EXPECT_EQ(fetch(*platform, {"a", "b"}).first->size(), 3U);

  // Left out, the reminders are an empty list; null (no list) is read by the extractor tests.
  const auto leftOut = profile(R"({"permissions": {"reminders": {"status": 3}}})");
  EXPECT_EQ(fetch(*leftOut, {}).first.value_or(std::vector<Reminder>(1)).size(), 0U);
}

// Three contacts c1, c2, c3 under this authorization status, and these other members.
std::shared_ptr<ProfilePlatform> addressBookWith(const std::string& status,
                                                 const std::string& extra) {
  return profile(R"({"permissions": {"contacts": {"status": )" + status + R"(}}, "contacts": {
    "list": [{"identifier": "c1"}, {"identifier": "c2"}, {"identifier": "c3"}], )" +
                 extra + "}}");
}

std::vector<std::string> enumerate(ProfilePlatform& platform, std::optional<PlatformError>& error) {
  std::vector<std::string> seen;
  error = platform.contacts().enumerateContacts(
      {"givenName", "identifier"}, [&](const Contact& c) { seen.push_back(c.identifier); });
  return seen;
}

TEST(ProfilePlatform, ContactEnumerationFailsAfterTheGivenCount) {
  auto platform = addressBookWith("3", R"("failAfter": 2, "failureMessage": "The store broke.")");
  std::optional<PlatformError> error;
  EXPECT_EQ(enumerate(*platform, error), (std::vector<std::string>{"c1", "c2"}));
  ASSERT_TRUE(error);
  EXPECT_EQ(error->localizedDescription, "The store broke.");
  EXPECT_EQ(platform->lastKeysToFetch(), (std::vector<std::string>{"givenName", "identifier"}));

  auto whole = addressBookWith("3", R"("failAfter": 9)");
  EXPECT_EQ(enumerate(*whole, error).size(), 3U);
  EXPECT_TRUE(error);
}

TEST(ProfilePlatform, ContactQueriesFailWithoutAuthorization) {
  auto platform = addressBookWith("4", R"("groups": [{"identifier": "g", "name": "Family"}])");
  std::optional<PlatformError> error;
  EXPECT_TRUE(enumerate(*platform, error).empty());
  EXPECT_TRUE(error);
  EXPECT_TRUE(std::holds_alternative<PlatformError>(platform->contacts().groups()));
}

// The clock's steps are read by DataExtractorManagerTest.
TEST(ProfilePlatform, RandomDrawsAreReducedBelowTheBoundAndCycle) {
  const auto platform = profile(R"({"random": {"draws": [42, 179, 400]}})");
  auto& random = platform->random();
  for (const std::uint32_t draw : {42U, 179U, 40U, 42U}) EXPECT_EQ(random.uniform(180), draw);
  EXPECT_EQ(random.uniform(0), 0U);
}

struct VersionCase {
  const char* version;
  int major, minor;
  bool atLeast;
};

class VersionGateTest : public testing::TestWithParam<VersionCase> {};

TEST_P(VersionGateTest, ComparesNumerically) {
  const auto& c = GetParam();
  auto platform = profile(std::string(R"({"device": {"systemVersion": ")") + c.version + "\"}}");
  EXPECT_EQ(platform->device().isSystemVersionAtLeast(c.major, c.minor), c.atLeast)
      << c.version << " >= " << c.major << "." << c.minor;
}

INSTANTIATE_TEST_SUITE_P(
    Versions, VersionGateTest,
    testing::Values(VersionCase{"14.2", 14, 2, true}, VersionCase{"14.2", 14, 3, false},
                    VersionCase{"10.2.1", 10, 3, false}, VersionCase{"10.10", 10, 9, true},
                    VersionCase{"9", 9, 0, true}, VersionCase{"9", 9, 1, false},
                    VersionCase{"", 0, 0, true}));

TEST(ProfilePlatform, DeviceFactsComeFromTheProfile) {
  auto platform = profile(R"({"device": {
    "identifierForVendor": "6f1c3a52-0B1D-4C4E-9B7A-2D7C3E0F5A11", "machine": "iPhone12,1",
    "fileSystem": null,
    "libraryBundle": {"SDKIdentifier": 7, "Name": "tavrin", "Nested": {"a": [1]}}}})");
  auto& device = platform->device();
  const Uuid expected{0x6F, 0x1C, 0x3A, 0x52, 0x0B, 0x1D, 0x4C, 0x4E,
                      0x9B, 0x7A, 0x2D, 0x7C, 0x3E, 0x0F, 0x5A, 0x11};
  EXPECT_EQ(device.identifierForVendor(), expected);
  const auto machine = device.machine();
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(machine.data())), "iPhone12,1");
  EXPECT_EQ(machine[10], 0);
  EXPECT_FALSE(device.homeFileSystemSizes());
  EXPECT_FALSE(device.libraryBundleString("SDKIdentifier"));
  EXPECT_EQ(device.libraryBundleString("Name"), "tavrin");

  // Left out, the file system answers without sizes and the vendor id is absent.
  auto bare = profile("{}");
  ASSERT_TRUE(bare->device().homeFileSystemSizes());
  EXPECT_FALSE(bare->device().homeFileSystemSizes()->size);
  EXPECT_FALSE(bare->device().identifierForVendor());
}

// Gaps and an absent list are read by CaptureDeviceExtractorTest; here, codes given as text.
TEST(ProfilePlatform, FourCharacterCodesAreReadAsBigEndianNumbers) {
  auto platform = profile(R"({"captureDevices": [
    {"activeFormat": {"mediaType": "vide", "mediaSubType": 875704422}}, null]})");
  const auto devices = platform->captureDevices().devices();
  ASSERT_TRUE(devices && devices->size() == 2U && (*devices)[0]);
  EXPECT_EQ((*devices)[0]->activeFormat.mediaType, 0x76696465U);  // "vide"
  EXPECT_EQ((*devices)[0]->activeFormat.mediaSubType, 875704422U);
  EXPECT_FALSE((*devices)[1]);
}

}  // namespace
}  // namespace tavrin::platform
