#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>
#include <tuple>

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

std::int64_t statusOf(ProfilePlatform& platform, Permission permission, std::int64_t entityType) {
  if (permission == Permission::photoLibrary) return platform.photos().authorizationStatus();
  if (permission == Permission::contacts)
    return platform.contacts().authorizationStatus(entityType);
  return platform.events().authorizationStatus(entityType);
}

// Each permission is undecided; the user grants photos, denies contacts,
// answers calendars with a status a later system might invent, and dismisses
// reminders (no answer: still undecided).
constexpr const char* undecided = R"({"permissions": {
  "photoLibrary": {"status": 0, "answer": 3}, "contacts": {"status": 0, "answer": 2},
  "calendarEvents": {"status": 0, "answer": 17}, "reminders": {"status": 0}}})";

// The prompt log is read by DataExtractorManagerTest.
TEST(ProfilePlatform, PromptsCompleteOnAnotherThreadAfterTheAnswerTookEffect) {
  // The permission, the status its answer leaves and what the completion reports.
  const std::tuple<Permission, std::int64_t, std::int64_t> cases[] = {
      {Permission::photoLibrary, 3, 3},
      {Permission::contacts, 2, 0},
      {Permission::calendarEvents, 17, 0},
      {Permission::reminders, 0, 0}};
  for (const auto& [permission, statusAfter, reported] : cases) {
    SCOPED_TRACE(static_cast<int>(permission));
    const std::int64_t entityType = permission == Permission::reminders ? 1 : 0;
    auto platform = profile(undecided);
    EXPECT_EQ(statusOf(*platform, permission, entityType), AuthorizationStatus::notDetermined);
    const auto completion = ask(*platform, permission, entityType);
    EXPECT_NE(completion.thread, std::this_thread::get_id());
    EXPECT_EQ(completion.status, reported);
    EXPECT_FALSE(completion.error);
    EXPECT_EQ(statusOf(*platform, permission, entityType), statusAfter);
  }
}

TEST(ProfilePlatform, DestructionWaitsForPromptCompletionsStartedByCompletions) {
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

TEST(ProfilePlatform, RemindersArriveOnAnotherThreadFromTheListsAskedFor) {
  auto platform = profile(R"({
    "permissions": {"reminders": {"status": 3}},
    "calendars": {"reminders": [{"calendarIdentifier": "a"}, {"calendarIdentifier": "b"}]},
    "reminders": [{"calendarIdentifier": "a", "calendarItemIdentifier": "r1", "dueDate": 1609459200},
                  {"calendarIdentifier": "b", "calendarItemIdentifier": "r2"},
                  {"calendarIdentifier": "a", "calendarItemIdentifier": "r3"}]})");
  // Fetches from these lists and waits for the completion.
  const auto fetch = [](ProfilePlatform& from, const std::vector<std::string>& lists) {
    std::promise<std::pair<std::optional<std::vector<Reminder>>, std::thread::id>> delivered;
    from.events().fetchReminders(lists, [&](std::optional<std::vector<Reminder>> r) {
      delivered.set_value({std::move(r), std::this_thread::get_id()});
    });
    return delivered.get_future().get();
  };
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

// Stopping after the given count is read by ContactExtractorTest; a count beyond the list
// still fails, at its end. Only a granted store (3) is read; 4 is not a grant here.
TEST(ProfilePlatform, ContactQueriesFailBeyondTheListAndWithoutAuthorization) {
  for (const auto& [status, readable] : {std::pair{"3", 3U}, std::pair{"4", 0U}}) {
    const auto platform = profile(std::string(R"({"permissions": {"contacts": {"status": )") +
                                  status + R"(}}, "contacts": {"failAfter": 9, "groups": [],
      "list": [{"identifier": "c1"}, {"identifier": "c2"}, {"identifier": "c3"}]}})");
    std::size_t seen = 0;
    EXPECT_TRUE(platform->contacts().enumerateContacts({}, [&](const Contact&) { ++seen; }));
    EXPECT_EQ(seen, readable) << status;
    EXPECT_EQ(std::holds_alternative<PlatformError>(platform->contacts().groups()), readable == 0);
  }
}

// The clock's steps are read by DataExtractorManagerTest.
TEST(ProfilePlatform, RandomDrawsAreReducedBelowTheBoundAndCycle) {
  const auto platform = profile(R"({"random": {"draws": [42, 179, 400]}})");
  auto& random = platform->random();
  for (const std::uint32_t draw : {42U, 179U, 40U, 42U}) EXPECT_EQ(random.uniform(180), draw);
  EXPECT_EQ(random.uniform(0), 0U);
}

TEST(ProfilePlatform, SystemVersionsCompareNumerically) {
  const std::tuple<const char*, int, int, bool> cases[] = {
      {"14.2", 14, 2, true},  {"14.2", 14, 3, false}, {"10.2.1", 10, 3, false},
      {"10.10", 10, 9, true}, {"9", 9, 0, true},      {"9", 9, 1, false},
      {"", 0, 0, true}};
  for (const auto& [version, major, minor, atLeast] : cases) {
    auto platform = profile(std::string(R"({"device": {"systemVersion": ")") + version + "\"}}");
    EXPECT_EQ(platform->device().isSystemVersionAtLeast(major, minor), atLeast)
        << version << " >= " << major << "." << minor;
  }
}

// Gaps, an absent list and codes given as numbers are read by CaptureDeviceExtractorTest;
// codes given as text are read as big-endian numbers.
TEST(ProfilePlatform, DeviceFactsComeFromTheProfile) {
  auto platform = profile(R"({"device": {
    "identifierForVendor": "6f1c3a52-0B1D-4C4E-9B7A-2D7C3E0F5A11", "machine": "iPhone12,1",
    "fileSystem": null,
    "libraryBundle": {"SDKIdentifier": 7, "Name": "tavrin", "Nested": {"a": [1]}}},
    "captureDevices": [{"activeFormat": {"mediaType": "vide"}}]})");
  auto& device = platform->device();
  const Uuid expected{0x6F, 0x1C, 0x3A, 0x52, 0x0B, 0x1D, 0x4C, 0x4E,
                      0x9B, 0x7A, 0x2D, 0x7C, 0x3E, 0x0F, 0x5A, 0x11};
  EXPECT_EQ(device.identifierForVendor(), expected);
  const auto machine = device.machine();
  EXPECT_EQ(std::string(reinterpret_cast<const char*>(machine.data())), "iPhone12,1");
  EXPECT_EQ(machine[10], 0);
  EXPECT_FALSE(device.homeFileSystemSizes());
  EXPECT_EQ(device.libraryBundleString("Name"), "tavrin");
  EXPECT_EQ((*platform->captureDevices().devices())[0]->activeFormat.mediaType, 0x76696465U);

  // Left out, the file system answers without sizes and the vendor id is absent.
  auto bare = profile("{}");
  ASSERT_TRUE(bare->device().homeFileSystemSizes());
  EXPECT_FALSE(bare->device().homeFileSystemSizes()->size);
  EXPECT_FALSE(bare->device().identifierForVendor());
}

}  // namespace
}  // namespace tavrin::platform
