// The C interface against the sandbox, in-process over real TLS: a collection
// with its observer and log, each kind of error it reports, and cancellation.
// Every object made here is released with its _free function, so that the
// leak check of the sanitizer build fails when one of them releases nothing.
#include "Owned.hpp"
#include "SandboxServer.hpp"

#include <tavrin/tavrin.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace tavrin {
namespace {

using sandbox::parseFaultRule;

// What the C callbacks saw, in order.
struct Seen {
  std::vector<std::string> events;
  std::size_t datasetBytes = 0;
  bool cancelAtFirstSource = false;
  tavrin_service* service = nullptr;
};

tavrin_observer observerOf(Seen& seen) {
  tavrin_observer observer{};
  observer.context = &seen;
  observer.source_started = [](void* context, const char* name) {
    auto& state = *static_cast<Seen*>(context);
    if (state.cancelAtFirstSource) tavrin_service_cancel(state.service);
    state.events.push_back(std::string("source ") + name);
  };
  observer.exchange_finished = [](void* context, const char* name, int status, int succeeded,
                                  long long) {
    static_cast<Seen*>(context)->events.push_back(std::string(name) + " " + std::to_string(status) +
                                                  " " + std::to_string(succeeded));
  };
  observer.dataset_ready = [](void* context, const char*, size_t length) {
    static_cast<Seen*>(context)->datasetBytes = length;
  };
  return observer;
}

class CApi : public testing::Test {
 protected:
  CApi() { server.start(); }

  // Options that reach the sandbox with the realistic phone.
  Owned<tavrin_options> options() const {
    Owned<tavrin_options> made(tavrin_options_new());
    EXPECT_EQ(tavrin_options_set_ca_file(made.get(), server.tlsFiles().authority.c_str()), 0);
    EXPECT_EQ(tavrin_options_add_resolve(made.get(), server.resolve().c_str()), 0);
    EXPECT_EQ(tavrin_options_set_profile_file(made.get(), realisticPhone.c_str()), 0);
    return made;
  }

  sandbox::SandboxServer server{sandbox::SandboxOptions{}};
};

TEST_F(CApi, CollectsAndPreviewsWithObserverAndLog) {
  Seen seen;
  std::vector<std::string> lines;
  auto made = options();
  const tavrin_observer observer = observerOf(seen);
  ASSERT_EQ(tavrin_options_set_observer(made.get(), &observer), 0);
  ASSERT_EQ(tavrin_options_set_log(
                made.get(),
                [](void* context, int level, const char* line) {
                  static_cast<std::vector<std::string>*>(context)->push_back(std::to_string(level) +
                                                                             line);
                },
                &lines),
            0);
  tavrin_error* error = nullptr;
  const Owned<tavrin_service> service(
      tavrin_service_new(server.url().c_str(), "sandbox-key", made.get(), &error));
  made.reset();  // the service keeps what it needs
  ASSERT_TRUE(service) << tavrin_error_message(error);

  const Owned<char> answer(tavrin_service_collect(service.get(), "c-1", &error));
  ASSERT_TRUE(answer) << tavrin_error_message(error);
  EXPECT_STREQ(answer.get(), "accepted record \"c-1\" as upload 1");
  EXPECT_EQ(error, nullptr);
  const Owned<char> preview(tavrin_service_preview(service.get(), &error));
  ASSERT_TRUE(preview);
  EXPECT_EQ(std::string(preview.get()).size(), seen.datasetBytes);

  // The login, the check, 13 sources, the upload, and the preview's 13 sources.
  ASSERT_EQ(seen.events.size(), 29u);
  EXPECT_EQ(seen.events[0], "login 200 1");
  EXPECT_EQ(seen.events[1], "check 200 1");
  EXPECT_EQ(seen.events[2], "source Contacts");
  EXPECT_EQ(seen.events[15], "upload 200 1");
  EXPECT_EQ(seen.events[28], "source Permissions");
  EXPECT_FALSE(lines.empty());
  EXPECT_STREQ(tavrin_version(), "1.0.0");
}

// Each kind of error, with what the host reads from it.
TEST_F(CApi, ReportsEachKindOfError) {
  const struct {
    const char* name;
    const char* url;
    const char* key;
    const char* profile;
    const char* fault;   // added after the login, for one exchange
    const char* record;  // collected after the login; "c-1" is taken by then
    int kind;
    const char* message;  // nullptr: none
    int status;
  } cases[] = {
      {"null url", nullptr, "sandbox-key", "", "", "", TAVRIN_ERROR_INVALID_INPUT, "url is NULL",
       0},
      {"bad url", "ftp://x", "sandbox-key", "", "", "", TAVRIN_ERROR_INVALID_INPUT,
       "Url is incorrect", 0},
      {"bad profile", "", "sandbox-key", "/nonexistent.json", "", "", TAVRIN_ERROR_DEVICE_PROFILE,
       "/nonexistent.json: cannot read the file: No such file or directory", 0},
      {"wrong key", "", "wrong-key", "", "", "", TAVRIN_ERROR_INVALID_INPUT,
       "invalid_grant_key. Authentication key is invalid", 401},
      {"forbidden", "", "sandbox-key", "", "upload:error=403/action_forbidden/Plan expired*1",
       "c-2", TAVRIN_ERROR_ACCESS_DENIED, "action_forbidden. Plan expired", 403},
      {"taken record", "", "sandbox-key", "", "", "c-1", TAVRIN_ERROR_SERVER_REJECTED, nullptr, 0},
      {"failing server", "", "sandbox-key", "", "check:status=503*1", "c-2",
       TAVRIN_ERROR_SERVER_REJECTED, nullptr, 503},
      {"redirect", "", "sandbox-key", "", "upload:status=302*1", "c-2",
       TAVRIN_ERROR_PROCESSING_FAILED, nullptr, 302},
      // Stays for the cases after it, which fail before any exchange.
      {"dropped", "", "sandbox-key", "", "check:drop", "c-2", TAVRIN_ERROR_CONNECTION_FAILED,
       nullptr, 0},
      {"null record", "", "sandbox-key", "", "", nullptr, TAVRIN_ERROR_INVALID_INPUT,
       "record_number is NULL", 0},
  };
  {
    auto made = options();
    const Owned<tavrin_service> first(
        tavrin_service_new(server.url().c_str(), "sandbox-key", made.get(), nullptr));
    ASSERT_TRUE(first);
    tavrin_string_free(tavrin_service_collect(first.get(), "c-1", nullptr));
  }
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto made = options();
    if (*c.profile) tavrin_options_set_profile_file(made.get(), c.profile);
    const std::string url = c.url && *c.url ? c.url : server.url();  // "": the sandbox
    tavrin_error* raw = nullptr;
    Owned<tavrin_service> service(
        tavrin_service_new(c.url ? url.c_str() : nullptr, c.key, made.get(), &raw));
    if (service) {
      ASSERT_EQ(raw, nullptr);
      if (*c.fault) server.addFault(parseFaultRule(c.fault));
      EXPECT_EQ(tavrin_service_collect(service.get(), c.record, &raw), nullptr);
    }
    const Owned<tavrin_error> error(raw);
    ASSERT_TRUE(error);
    EXPECT_EQ(tavrin_error_kind(error.get()), c.kind);
    if (c.message) {
      EXPECT_STREQ(tavrin_error_message(error.get()), c.message);
    }
    // An answer leaves its request id, a failed transport its reason.
    EXPECT_EQ(*tavrin_error_request_id(error.get()) != '\0', c.status != 0);
    EXPECT_EQ(*tavrin_error_transport_reason(error.get()) != '\0',
              c.kind == TAVRIN_ERROR_CONNECTION_FAILED);
    EXPECT_EQ(tavrin_error_http_status(error.get()), c.status);
  }
  EXPECT_EQ(tavrin_error_kind(nullptr), -1);
  EXPECT_EQ(tavrin_error_message(nullptr), nullptr);
}

// A setter refuses what it cannot take and leaves the options usable.
TEST_F(CApi, SettersRefuseNullOptionsAndBadValues) {
  EXPECT_EQ(tavrin_options_set_ca_file(nullptr, "x"), -1);
  EXPECT_EQ(tavrin_options_set_log(nullptr, nullptr, nullptr), -1);
  const auto made = options();
  EXPECT_EQ(tavrin_options_set_deadline_ms(made.get(), -1), -1);
  EXPECT_EQ(tavrin_options_add_resolve(made.get(), nullptr), -1);
  EXPECT_EQ(tavrin_options_set_deadline_ms(made.get(), 60000), 0);
  const Owned<tavrin_service> service(
      tavrin_service_new(server.url().c_str(), "sandbox-key", made.get(), nullptr));
  EXPECT_TRUE(service);
}

// Cancelled from a callback while the run reads its sources, and before a run:
// both runs stop with the cancelled kind, and the service collects afterwards.
TEST_F(CApi, CancelStopsTheRunInProgressOrTheNext) {
  Seen seen;
  seen.cancelAtFirstSource = true;
  auto made = options();
  const tavrin_observer observer = observerOf(seen);
  tavrin_options_set_observer(made.get(), &observer);
  const Owned<tavrin_service> service(
      tavrin_service_new(server.url().c_str(), "sandbox-key", made.get(), nullptr));
  ASSERT_TRUE(service);
  seen.service = service.get();
  tavrin_error* raw = nullptr;
  EXPECT_EQ(tavrin_service_collect(service.get(), "x-1", &raw), nullptr);
  const Owned<tavrin_error> during(raw);
  EXPECT_EQ(tavrin_error_kind(during.get()), TAVRIN_ERROR_CANCELLED);
  EXPECT_EQ(seen.datasetBytes, 0u);

  seen.cancelAtFirstSource = false;
  tavrin_service_cancel(service.get());
  EXPECT_EQ(tavrin_service_collect(service.get(), "x-1", &raw), nullptr);
  const Owned<tavrin_error> before(raw);
  EXPECT_EQ(tavrin_error_kind(before.get()), TAVRIN_ERROR_CANCELLED);
  const Owned<char> answer(tavrin_service_collect(service.get(), "x-1", nullptr));
  EXPECT_TRUE(answer);
  tavrin_service_cancel(nullptr);
}

}  // namespace
}  // namespace tavrin
