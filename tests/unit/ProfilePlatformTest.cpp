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

// Asks and blocks until the completion arrives (it may come from any thread).
using Prompt = std::function<void(ProfilePlatform&, std::function<void(Completion)>)>;

Completion ask(ProfilePlatform& platform, const Prompt& prompt) {
  std::promise<Completion> answered;
  auto future = answered.get_future();
  prompt(platform, [&answered](Completion c) { answered.set_value(std::move(c)); });
  return future.get();
}

Prompt storePrompt(bool events, std::int64_t entityType) {
  return [events, entityType](ProfilePlatform& p, std::function<void(Completion)> done) {
    auto handler = [done](bool granted, std::optional<PlatformError> error) {
      done({granted ? 1 : 0, std::move(error), std::this_thread::get_id()});
    };
    if (events) {
      p.events().requestAccess(entityType, handler);
    } else {
      p.contacts().requestAccess(entityType, handler);
    }
  };
}

const Prompt photoPrompt = [](ProfilePlatform& p, std::function<void(Completion)> done) {
  p.photos().requestAuthorization([done](std::int64_t status) {
    done({status, std::nullopt, std::this_thread::get_id()});
  });
};

struct PromptCase {
  const char* name;
  Permission permission;
  Prompt prompt;
  std::function<std::int64_t(ProfilePlatform&)> status;
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
  EXPECT_EQ(c.status(*platform), AuthorizationStatus::notDetermined);
  const auto completion = ask(*platform, c.prompt);
  EXPECT_NE(completion.thread, std::this_thread::get_id());
  EXPECT_EQ(completion.status, c.reportedAfter);
  EXPECT_FALSE(completion.error);
  EXPECT_EQ(c.status(*platform), c.statusAfter);

  const auto log = platform->promptLog();
  ASSERT_EQ(log.size(), 1U);
  EXPECT_EQ(log[0].permission, c.permission);
  EXPECT_EQ(log[0].completionThread, completion.thread);
  EXPECT_EQ(log[0].pendingAtRequest, 0U);
}

INSTANTIATE_TEST_SUITE_P(
    EveryPermission, PromptTest,
    testing::Values(
        PromptCase{"photoLibrary", Permission::photoLibrary, photoPrompt,
                   [](ProfilePlatform& p) { return p.photos().authorizationStatus(); }, 3, 3},
        PromptCase{"contacts", Permission::contacts, storePrompt(false, 0),
                   [](ProfilePlatform& p) { return p.contacts().authorizationStatus(0); }, 2, 0},
        PromptCase{"calendarEvents", Permission::calendarEvents, storePrompt(true, 0),
                   [](ProfilePlatform& p) { return p.events().authorizationStatus(0); }, 17, 0},
        PromptCase{"reminders", Permission::reminders, storePrompt(true, 1),
                   [](ProfilePlatform& p) { return p.events().authorizationStatus(1); }, 0, 0}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(ProfilePlatform, PromptsOneAfterAnotherAreLoggedInOrderWithoutOverlap) {
  auto platform = profile(undecided);
  ask(*platform, photoPrompt);
  ask(*platform, storePrompt(true, 1));
  ask(*platform, storePrompt(false, 0));
  const auto log = platform->promptLog();
  ASSERT_EQ(log.size(), 3U);
  EXPECT_EQ(log[0].permission, Permission::photoLibrary);
  EXPECT_EQ(log[1].permission, Permission::reminders);
  EXPECT_EQ(log[2].permission, Permission::contacts);
  for (const auto& record : log) EXPECT_EQ(record.pendingAtRequest, 0U);
}

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
  for (const auto& prompt : {storePrompt(false, 1), storePrompt(true, 2)}) {
    const auto completion = ask(*platform, prompt);
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
  ASSERT_TRUE(reminders);
  ASSERT_EQ(reminders->size(), 2U);
  EXPECT_EQ((*reminders)[0].calendarItemIdentifier, "r1");
  EXPECT_EQ((*reminders)[0].dueDate, 1609459200.0);
  EXPECT_EQ((*reminders)[1].calendarItemIdentifier, "r3");
  EXPECT_EQ(fetch(*platform, {"a", "b"}).first->size(), 3U);
}

TEST(ProfilePlatform, NullRemindersDeliverNoListAndMissingOnesAnEmptyList) {
  const auto noList =
      profile(R"({"permissions": {"reminders": {"status": 3}}, "reminders": null})");
  EXPECT_FALSE(fetch(*noList, {}).first);
  const auto empty = profile(R"({"permissions": {"reminders": {"status": 3}}})");
  ASSERT_TRUE(fetch(*empty, {}).first);
  EXPECT_TRUE(fetch(*empty, {}).first->empty());
}

constexpr const char* addressBook = R"({
  "permissions": {"contacts": {"status": %STATUS%}},
  "contacts": {"list": [{"identifier": "c1"}, {"identifier": "c2"}, {"identifier": "c3"}],
               %EXTRA%}})";

std::shared_ptr<ProfilePlatform> addressBookWith(const std::string& status,
                                                 const std::string& extra) {
  std::string json = addressBook;
  json.replace(json.find("%STATUS%"), 8, status);
  json.replace(json.find("%EXTRA%"), 7, extra);
  return profile(json);
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

TEST(ProfilePlatform, GroupQueryFailsWithItsMessage) {
  auto platform = addressBookWith("3", R"("groupsError": "Groups are unavailable.")");
  const auto groups = platform->contacts().groups();
  ASSERT_TRUE(std::holds_alternative<PlatformError>(groups));
  EXPECT_EQ(std::get<PlatformError>(groups).localizedDescription, "Groups are unavailable.");
}

TEST(ProfilePlatform, PhotoFetchesFilterByTypeAndCountCollectionAssets) {
  auto platform = profile(R"({
    "permissions": {"photoLibrary": {"status": 3}},
    "photos": {
      "assets": [{"localIdentifier": "i1", "mediaType": 1}, {"localIdentifier": "v1", "mediaType": 2},
                 {"localIdentifier": "i2", "mediaType": 1}, {"localIdentifier": "u1", "mediaType": 0}],
      "collections": [
        {"localIdentifier": "album", "assetCollectionType": 1, "assetCollectionSubtype": 2,
         "assetIdentifiers": ["i1", "v1"]},
        {"localIdentifier": "favourites", "assetCollectionType": 2, "assetCollectionSubtype": 203},
        {"localIdentifier": "panoramas", "assetCollectionType": 2, "assetCollectionSubtype": 201,
         "assetIdentifiers": ["i2"]}]}})");
  auto& photos = platform->photos();
  std::vector<std::string> images;
  photos.enumerateAssets(MediaType::image,
                         [&](const Asset& a) { images.push_back(a.localIdentifier); });
  EXPECT_EQ(images, (std::vector<std::string>{"i1", "i2"}));

  std::vector<std::pair<std::string, std::int64_t>> smart;
  photos.enumerateCollections(2, PhotoLibrary::anySubtype, [&](const AssetCollection& c) {
    smart.emplace_back(c.localIdentifier, photos.assetCount(c));
  });
  EXPECT_EQ(smart, (decltype(smart){{"favourites", 0}, {"panoramas", 1}}));
  AssetCollection album;
  album.localIdentifier = "album";
  EXPECT_EQ(photos.assetCount(album), 2);
}

TEST(ProfilePlatform, ClockStepsAndRandomDrawsCycle) {
  auto platform = profile(R"({"clock": {"now": 1605555555.125, "step": 0.25},
                               "random": {"draws": [42, 179, 400]}})");
  EXPECT_EQ(platform->clock().now(), 1605555555.125);
  EXPECT_EQ(platform->clock().now(), 1605555555.375);
  EXPECT_EQ(platform->clock().now(), 1605555555.625);
  auto& random = platform->random();
  EXPECT_EQ(random.uniform(180), 42U);
  EXPECT_EQ(random.uniform(180), 179U);
  EXPECT_EQ(random.uniform(180), 40U);  // 400 reduced below the bound
  EXPECT_EQ(random.uniform(180), 42U);
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

TEST(ProfilePlatform, CaptureDeviceListKeepsItsGapsOrIsAbsent) {
  auto platform = profile(R"({"captureDevices": [
    {"localizedName": "Back Camera", "activeFormat": {"mediaType": "vide", "mediaSubType": 875704422},
     "activeDepthDataFormat": {"autoFocusSystem": 2}},
    null]})");
  const auto devices = platform->captureDevices().devices();
  ASSERT_TRUE(devices);
  ASSERT_EQ(devices->size(), 2U);
  ASSERT_TRUE((*devices)[0]);
  EXPECT_EQ((*devices)[0]->activeFormat.mediaType, 0x76696465U);  // "vide"
  EXPECT_EQ((*devices)[0]->activeFormat.mediaSubType, 875704422U);
  EXPECT_EQ((*devices)[0]->activeDepthDataFormat->autoFocusSystem, 2);
  EXPECT_FALSE((*devices)[1]);
  EXPECT_FALSE(profile(R"({"captureDevices": null})")->captureDevices().devices());
}

}  // namespace
}  // namespace tavrin::platform
