// A host's own platform through the C interface: the phone of a device
// profile given member by member, prompts completed on the host's threads,
// members that are malformed or not given, and a prompt left waiting.
#include "Owned.hpp"
#include "SandboxServer.hpp"

#include <tavrin/tavrin.h>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace tavrin {
namespace {

const char* const permissionNames[] = {"photoLibrary", "contacts", "calendarEvents", "reminders"};

// A host that describes a phone from the members of a profile document. Its
// permissions take their profile's answer when a prompt completes, on a
// thread of the host's own.
struct Phone {
  explicit Phone(nlohmann::json document) : profile(std::move(document)) {}
  ~Phone() {
    for (auto& thread : threads) thread.join();
  }

  nlohmann::json profile;
  std::map<std::string, std::string> raw;  // members given as this text instead
  bool answerStatuses = true;
  bool holdPrompts = false;  // keep prompts unanswered in `held`
  std::mutex mutex;
  std::vector<tavrin_prompt*> held;
  std::vector<std::thread> threads;
  std::vector<std::string> asked;

  nlohmann::json& permission(int which) { return profile["permissions"][permissionNames[which]]; }

  tavrin_platform platform() {
    tavrin_platform made{};
    made.context = this;
    made.authorization_status = [](void* context, int which) -> long long {
      auto& phone = *static_cast<Phone*>(context);
      const std::lock_guard lock(phone.mutex);
      return phone.permission(which).value("status", 2);
    };
    made.request_access = [](void* context, int which, tavrin_prompt* prompt) {
      auto& phone = *static_cast<Phone*>(context);
      const std::lock_guard lock(phone.mutex);
      if (phone.holdPrompts) {
        phone.held.push_back(prompt);
        return;
      }
      phone.threads.emplace_back([&phone, which, prompt] {
        long long status = 0;
        {
          const std::lock_guard inner(phone.mutex);
          auto& setting = phone.permission(which);
          if (setting.contains("answer")) setting["status"] = setting["answer"];
          status = setting["status"];
        }
        tavrin_prompt_complete(prompt, status, nullptr);
      });
    };
    made.describe = [](void* context, const char* section, tavrin_answer* answer) {
      auto& phone = *static_cast<Phone*>(context);
      phone.asked.emplace_back(section);
      std::string text;
      if (const auto found = phone.raw.find(section); found != phone.raw.end()) {
        text = found->second;
      } else if (phone.profile.contains(section)) {
        text = phone.profile[section].dump();
      } else {
        return;
      }
      EXPECT_EQ(tavrin_answer_json(answer, text.data(), text.size()), 0);
      EXPECT_EQ(tavrin_answer_json(answer, "{}", 2), -1);  // one answer per query
    };
    if (!answerStatuses) made.authorization_status = nullptr;
    return made;
  }
};

nlohmann::json realistic() { return nlohmann::json::parse(std::ifstream(realisticPhone)); }

class CPlatform : public testing::Test {
 protected:
  CPlatform() { server.start(); }

  Owned<tavrin_options> options() const {
    Owned<tavrin_options> made(tavrin_options_new());
    tavrin_options_set_ca_file(made.get(), server.tlsFiles().authority.c_str());
    tavrin_options_add_resolve(made.get(), server.resolve().c_str());
    return made;
  }
  Owned<tavrin_service> serviceOf(Phone& phone, tavrin_error** error = nullptr) const {
    auto made = options();
    const tavrin_platform platform = phone.platform();
    EXPECT_EQ(tavrin_options_set_platform(made.get(), &platform), 0);
    return Owned<tavrin_service>(
        tavrin_service_new(server.url().c_str(), "sandbox-key", made.get(), error));
  }
  std::string previewOf(tavrin_options* made) const {
    const Owned<tavrin_service> service(
        tavrin_service_new(server.url().c_str(), "sandbox-key", made, nullptr));
    EXPECT_TRUE(service);
    tavrin_error* raw = nullptr;
    const Owned<char> preview(tavrin_service_preview(service.get(), &raw));
    const Owned<tavrin_error> error(raw);
    EXPECT_FALSE(error) << tavrin_error_message(error.get());
    return preview ? preview.get() : "";
  }

  sandbox::SandboxServer server{sandbox::SandboxOptions{}};
};

// The realistic phone, described member by member with every permission
// undecided and granted at the prompt, gives the dataset its profile file
// gives; the next run asks for every member again.
TEST_F(CPlatform, DescribedPhoneGivesTheProfilesDataset) {
  auto made = options();
  tavrin_options_set_profile_file(made.get(), realisticPhone.c_str());
  const std::string expected = previewOf(made.get());

  Phone phone(realistic());
  for (int which = 0; which < 4; ++which) phone.permission(which) = {{"status", 0}, {"answer", 3}};
  const auto service = serviceOf(phone);
  ASSERT_TRUE(service);
  const Owned<char> answer(tavrin_service_collect(service.get(), "h-1", nullptr));
  EXPECT_TRUE(answer);
  const auto askedInCollection = static_cast<std::ptrdiff_t>(phone.asked.size());
  const Owned<char> preview(tavrin_service_preview(service.get(), nullptr));
  ASSERT_TRUE(preview);
  EXPECT_EQ(preview.get(), expected);
  EXPECT_EQ(phone.threads.size(), 4u);  // one prompt each, answered on the host's threads
  // Each run asks for each member it reads once, the next run again.
  const std::vector<std::string> inPreview(phone.asked.begin() + askedInCollection,
                                           phone.asked.end());
  EXPECT_EQ(std::set(inPreview.begin(), inPreview.end()).size(), inPreview.size());
  EXPECT_EQ(std::count(inPreview.begin(), inPreview.end(), "contacts"), 1);
}

// A malformed member fails the run with the profile's error at its pointer,
// before anything is uploaded; the next run goes through.
TEST_F(CPlatform, MalformedMemberFailsTheRunAtItsPointer) {
  const struct {
    const char* section;
    const char* json;
    const char* message;
  } cases[] = {
      {"contacts", R"({"list": [{"identifier": 5}]})",
       "host platform: /contacts/list/0/identifier: expected a string"},
      {"photos", R"({"assets": [], "bogus": 1})", "host platform: /photos/bogus: unknown member"},
      {"location", "[", "host platform: /location: "},
      {"events",
       R"([{"calendarIdentifier": "nowhere", "calendarItemIdentifier": "e", "startDate": 1, "endDate": 2}])",
       "host platform: /events/0/calendarIdentifier: no calendar in /calendars/events has this "
       "identifier"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.section);
    Phone phone(realistic());
    phone.raw[c.section] = c.json;
    const auto service = serviceOf(phone);
    ASSERT_TRUE(service);
    tavrin_error* raw = nullptr;
    const std::string record = std::string("bad-") + c.section;
    EXPECT_EQ(tavrin_service_collect(service.get(), record.c_str(), &raw), nullptr);
    const Owned<tavrin_error> error(raw);
    EXPECT_EQ(tavrin_error_kind(error.get()), TAVRIN_ERROR_DEVICE_PROFILE);
    EXPECT_EQ(std::string(tavrin_error_message(error.get())).rfind(c.message, 0), 0u)
        << tavrin_error_message(error.get());
    phone.raw.clear();
    const Owned<char> answer(tavrin_service_collect(service.get(), record.c_str(), nullptr));
    EXPECT_TRUE(answer);  // the failed run uploaded nothing, so the number is still free
  }
  // A malformed device fails the login's reading of it.
  Phone phone(realistic());
  phone.raw["device"] = R"({"model": 1})";
  tavrin_error* raw = nullptr;
  EXPECT_FALSE(serviceOf(phone, &raw));
  const Owned<tavrin_error> error(raw);
  EXPECT_STREQ(tavrin_error_message(error.get()),
               "host platform: /device/model: expected a string");
}

// The entries of the sources a test looks at, by name.
using Entries = std::map<std::string, std::size_t>;
const char* const guardedSources[] = {"Contacts", "CalendarEvents", "Images"};

tavrin_observer counting(Entries& entries) {
  tavrin_observer observer{};
  observer.context = &entries;
  observer.source_finished = [](void* context, const char* name, size_t count, long long) {
    (*static_cast<Entries*>(context))[name] = count;
  };
  return observer;
}

// What the host leaves unanswered: no status callback denies every
// permission, and a granted store the host does not describe is empty.
TEST_F(CPlatform, UnansweredPortsAreDeniedOrEmpty) {
  Entries full;
  {
    auto made = options();
    tavrin_options_set_profile_file(made.get(), realisticPhone.c_str());
    const tavrin_observer observer = counting(full);
    tavrin_options_set_observer(made.get(), &observer);
    previewOf(made.get());
  }
  for (const char* source : guardedSources) ASSERT_GT(full[source], 0u) << source;
  const struct {
    const char* name;
    bool answerStatuses;
    std::vector<std::string> removed;
    std::optional<std::size_t> entries;  // of each guarded source; absent: the profile's
  } cases[] = {
      {"all described", true, {}, std::nullopt},
      {"no statuses", false, {}, 1},  // the access error
      {"granted, undescribed", true, {"contacts", "calendars", "events", "reminders", "photos"}, 0},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Phone phone(realistic());
    phone.answerStatuses = c.answerStatuses;
    for (const auto& member : c.removed) phone.profile.erase(member);
    Entries seen;
    auto made = options();
    const tavrin_platform platform = phone.platform();
    const tavrin_observer observer = counting(seen);
    tavrin_options_set_platform(made.get(), &platform);
    tavrin_options_set_observer(made.get(), &observer);
    EXPECT_FALSE(previewOf(made.get()).empty());
    for (const char* source : guardedSources) {
      EXPECT_EQ(seen[source], c.entries.value_or(full[source])) << source;
    }
  }
}

// A prompt the host leaves waiting: cancelling from another thread stops the
// run, and the host's late answer lands harmlessly.
TEST_F(CPlatform, CancelStopsTheRunWhileAPromptWaits) {
  Phone phone(realistic());
  phone.permission(1) = {{"status", 0}};
  phone.holdPrompts = true;
  const auto service = serviceOf(phone);
  ASSERT_TRUE(service);
  std::thread canceller([&] {
    for (;;) {
      {
        const std::lock_guard lock(phone.mutex);
        if (!phone.held.empty()) break;
      }
      std::this_thread::yield();
    }
    tavrin_service_cancel(service.get());
  });
  tavrin_error* raw = nullptr;
  EXPECT_EQ(tavrin_service_collect(service.get(), "w-1", &raw), nullptr);
  canceller.join();
  const Owned<tavrin_error> error(raw);
  EXPECT_EQ(tavrin_error_kind(error.get()), TAVRIN_ERROR_CANCELLED);
  ASSERT_EQ(phone.held.size(), 1u);
  EXPECT_EQ(tavrin_prompt_complete(phone.held[0], 3, "late"), 0);
  EXPECT_EQ(tavrin_prompt_complete(nullptr, 3, nullptr), -1);
  EXPECT_EQ(tavrin_answer_json(nullptr, "{}", 2), -1);
}

}  // namespace
}  // namespace tavrin
