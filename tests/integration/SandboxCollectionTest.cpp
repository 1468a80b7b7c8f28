// Whole collection runs of the library against the sandbox, in-process, over
// real TLS: what the sandbox keeps, how its tokens expire, the error its fault
// rules give the host, and how deadlines and cancel() end runs that hang.
#include "../support/ExpectTavrinError.hpp"
#include "SandboxServer.hpp"

#include <tavrin/service.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <mutex>
#include <tuple>

namespace tavrin {
namespace {

using sandbox::parseFaultRule;
using testing_support::expectTavrinError;
using namespace std::chrono_literals;

std::shared_ptr<platform::Platform> realisticPhone() {
  return platform::loadDeviceProfile(TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json");
}

class SandboxCollection : public testing::Test {
 protected:
  // The sandbox's threads log until it stops: stop it while its log is still there.
  ~SandboxCollection() override { server.reset(); }

  void start(void (*change)(sandbox::SandboxOptions&) = nullptr) {
    sandbox::SandboxOptions options;
    if (change) change(options);
    options.clock = [this] { return now.load(); };
    options.log = [this](const std::string& line) {
      const std::lock_guard lock(_logMutex);
      _log += line + '\n';
      _logged.notify_all();
    };
    server = std::make_unique<sandbox::SandboxServer>(std::move(options));
    server->start();
  }

  // Connects with the realistic phone unless `options` names a platform.
  std::unique_ptr<TavrinService> connect(const std::string& key = "sandbox-key",
                                         std::chrono::milliseconds timeout = 10s,
                                         ServiceOptions options = {}) const {
    if (!options.platform()) options.setPlatform(realisticPhone());
    options.setCaFile(server->tlsFiles().authority.string())
        .setResolve({server->resolve()})
        .setRequestTimeout(timeout);
    return std::make_unique<TavrinService>(server->url(), key, options);
  }

  // The sandbox's log so far.
  std::string log() {
    const std::lock_guard lock(_logMutex);
    return _log;
  }
  // Blocks until the sandbox's log holds `text`.
  void waitForLog(const std::string& text) {
    std::unique_lock lock(_logMutex);
    _logged.wait(lock, [&] { return _log.find(text) != std::string::npos; });
  }

  // The sandbox's token clock, moved by hand.
  std::atomic<std::chrono::steady_clock::time_point> now{std::chrono::steady_clock::time_point{}};
  std::unique_ptr<sandbox::SandboxServer> server;

 private:
  std::mutex _logMutex;
  std::condition_variable _logged;
  std::string _log;
};

TEST_F(SandboxCollection, StoresAnAcceptedDatasetAndRefusesItsRecordNumberAgainOrEmpty) {
  start();
  const auto service = connect();
  EXPECT_EQ(service->collectData("order-1"), "accepted record \"order-1\" as upload 1");
  const auto stored = server->store().find("order-1");
  ASSERT_TRUE(stored && stored->accepted);
  EXPECT_TRUE(stored->decoded.valid()) << *stored->decoded.problem;
  EXPECT_EQ(stored->decoded.sections.size(), 14u);

  // The check answers false: nothing is extracted or uploaded.
  expectTavrinError([&] { service->collectData("order-1"); }, ErrorType::serverRejected,
                    "record_number_not_unique. Record number is not unique");
  EXPECT_EQ(server->counts().uploads, 1u);
  expectTavrinError([&] { service->collectData(""); }, ErrorType::invalidInput,
                    "record_number_required. Record number is required");
}

TEST_F(SandboxCollection, AnExpiredTokenLeadsToExactlyOneNewLogin) {
  start([](sandbox::SandboxOptions& options) { options.tokenLifetime = 60s; });
  const auto service = connect();
  now = now.load() + 61s;  // the token from the constructor's login has expired
  EXPECT_EQ(service->collectData("late-1"), "accepted record \"late-1\" as upload 1");
  const auto counts = server->counts();
  EXPECT_EQ(std::tie(counts.logins, counts.checks, counts.uploads), std::tuple(2u, 2u, 1u));
}

TEST_F(SandboxCollection, AnInvalidDatasetIsRefusedWithoutAMessageAndKeptWithItsReason) {
  start([](sandbox::SandboxOptions& options) { options.limits.maxDataset = 1000; });
  expectTavrinError([&] { connect()->collectData("big-1"); }, ErrorType::invalidInput,
                    std::nullopt);
  const auto stored = server->store().find("big-1");
  ASSERT_TRUE(stored && !stored->accepted);
  EXPECT_EQ(stored->decoded.problem.value_or(""),
            "payload: it inflates to more than the limit of 1000 bytes");
}

// Fault rules over the wire, and the error the host sees from collectData.
// How each status and body maps to an error is tested against a scripted
// transport (RestServiceTest). Here each kind arrives through the future of
// collectDataAsync, with the answer's status and the request id the sandbox
// logged, or the transport's reason when no answer came.
TEST_F(SandboxCollection, FaultRulesGiveTheErrorsTheStatusMappingPredicts) {
  const struct {
    const char* rule;
    ErrorType type;
    std::optional<std::string> message;
    std::size_t logins;  // including the constructor's
    int status;
  } faults[] = {
      {"upload:status=401", ErrorType::accessDenied, "401", 2, 401},
      {"upload:error=403/action_forbidden/Plan expired", ErrorType::accessDenied,
       "action_forbidden. Plan expired", 1, 403},
      {"check:status=400", ErrorType::invalidInput, std::nullopt, 1, 400},
      {"check:status=503", ErrorType::serverRejected, std::nullopt, 1, 503},
      {"upload:status=302", ErrorType::processingFailed, std::nullopt, 1, 302},
      {"check:drop", ErrorType::connectionFailed, std::nullopt, 1, 0},
      {"upload:drop", ErrorType::connectionFailed, std::nullopt, 1, 0},
      // Held without an answer: fails once the request timeout runs out.
      {"check:stall", ErrorType::connectionFailed, std::nullopt, 1, 0},
  };
  for (const auto& fault : faults) {
    SCOPED_TRACE(fault.rule);
    start();  // afresh: a rule without a count stays
    const auto service = connect("sandbox-key", 2s);
    server->addFault(parseFaultRule(fault.rule));
    auto run = service->collectDataAsync("f-1");
    const auto error = expectTavrinError([&] { run.get(); }, fault.type, fault.message);
    EXPECT_EQ(server->counts().logins, fault.logins);
    ASSERT_TRUE(error);
    EXPECT_EQ(error->httpStatus(), fault.status);
    EXPECT_EQ(error->transportReason().empty(), fault.status != 0);
    EXPECT_EQ(error->requestId().empty(), fault.status == 0);
    if (fault.status != 0) {
      EXPECT_NE(log().find("(request " + error->requestId() + ")"), std::string::npos);
    }
  }
}

// A phone whose address book hangs the way a real one might: a permission
// prompt nobody answers, or an enumeration that goes on until the run stops
// (as a port may, by checking platform::stopRequested()).
class HangingPhone final : public platform::Platform, public platform::ContactStore {
 public:
  enum class Hang { none, prompt, enumeration };

  platform::DeviceInfo& device() override { return _phone->device(); }
  platform::ContactStore& contacts() override { return *this; }
  platform::EventStore& events() override { return _phone->events(); }
  platform::PhotoLibrary& photos() override { return _phone->photos(); }
  platform::CaptureDeviceSource& captureDevices() override { return _phone->captureDevices(); }
  platform::LocationServices& location() override { return _phone->location(); }
  platform::Clock& clock() override { return _phone->clock(); }
  platform::RandomSource& random() override { return _phone->random(); }

  std::int64_t authorizationStatus(std::int64_t type) override {
    if (hang == Hang::none) return _phone->contacts().authorizationStatus(type);
    return hang == Hang::prompt ? platform::AuthorizationStatus::notDetermined
                                : platform::AuthorizationStatus::authorized;
  }
  void requestAccess(std::int64_t type, platform::AccessHandler handler) override {
    if (hang != Hang::prompt) return _phone->contacts().requestAccess(type, std::move(handler));
    unanswered = std::move(handler);
    hanging.set_value();
  }
  std::optional<platform::PlatformError> enumerateContacts(
      const std::vector<std::string>& keys,
      const std::function<void(const platform::Contact&)>& visit) override {
    if (hang != Hang::enumeration) return _phone->contacts().enumerateContacts(keys, visit);
    platform::Contact contact;
    contact.identifier = "again";
    for (int n = 1; !platform::stopRequested(); ++n) {
      visit(contact);
      if (n == 1000) hanging.set_value();
    }
    return std::nullopt;
  }
  std::variant<std::vector<platform::ContactGroup>, platform::PlatformError> groups() override {
    return _phone->contacts().groups();
  }

  std::atomic<Hang> hang{Hang::none};
  std::promise<void> hanging;          // set once the run hangs
  platform::AccessHandler unanswered;  // the prompt's handler, kept

 private:
  std::shared_ptr<platform::Platform> _phone = realisticPhone();
};

// Each hang is cancelled from the test's thread while the run waits on the
// library's: it ends within 100 ms, and the object then runs normally.
TEST_F(SandboxCollection, CancelEndsAHangingPromptTransferOrExtractionAtOnce) {
  using Hang = HangingPhone::Hang;
  start();
  const auto phone = std::make_shared<HangingPhone>();
  const auto service = connect("sandbox-key", 10s, ServiceOptions().setPlatform(phone));
  const struct {
    const char* what;
    Hang hang;
  } hangs[] = {{"a prompt nobody answers", Hang::prompt},
               {"a transfer the server holds", Hang::none},
               {"an address book without end", Hang::enumeration}};
  int record = 0;
  for (const auto& c : hangs) {
    SCOPED_TRACE(c.what);
    phone->hang = c.hang;
    phone->hanging = {};
    auto hanging = phone->hanging.get_future();
    if (c.hang == Hang::none) server->addFault(parseFaultRule("check:stall*1"));
    auto run = service->collectDataAsync("c-" + std::to_string(++record));
    c.hang == Hang::none ? waitForLog("check no answer") : hanging.wait();
    if (c.hang == Hang::none) {
      // One run at a time.
      auto second = service->collectDataAsync("second");
      expectTavrinError([&] { second.get(); }, ErrorType::invalidInput,
                        "A collection of this service is already running");
    }

    const auto cancelled = std::chrono::steady_clock::now();
    service->cancel();
    ASSERT_EQ(run.wait_for(10s), std::future_status::ready);
    EXPECT_LT(std::chrono::steady_clock::now() - cancelled, 100ms);
    expectTavrinError([&] { run.get(); }, ErrorType::cancelled, "Cancelled");

    phone->hang = Hang::none;
    if (phone->unanswered) phone->unanswered(true, std::nullopt);  // late, and harmless
    const std::string next = "n-" + std::to_string(record);
    EXPECT_EQ(service->collectData(next),
              "accepted record \"" + next + "\" as upload " + std::to_string(record));
  }
  // Cancelled with no run in progress, the next run stops at its start: no
  // check beyond the two hangs that came after it and the three normal runs.
  service->cancel();
  expectTavrinError([&] { service->collectData("n-4"); }, ErrorType::cancelled, "Cancelled");
  EXPECT_EQ(server->counts().checks, 5u);
}

// The deadline ends a run on a server that never answers or that answers one
// byte a second, and the constructor's login on its own.
TEST_F(SandboxCollection, ADeadlineEndsAStalledOrDrippingExchangeWithinASecond) {
  start();
  const auto deadline = ServiceOptions().setDeadline(1s);
  const auto service = connect("sandbox-key", 10s, deadline);
  for (const char* rule : {"check:stall*1", "check:drip*1", "login:drip*1"}) {
    SCOPED_TRACE(rule);
    server->addFault(parseFaultRule(rule));
    const auto started = std::chrono::steady_clock::now();
    expectTavrinError(
        [&] {
          std::string_view(rule).starts_with("login") ? (void)connect("sandbox-key", 10s, deadline)
                                                      : (void)service->collectData("d-1");
        },
        ErrorType::connectionFailed, "Deadline exceeded");
    const auto took = std::chrono::steady_clock::now() - started;
    EXPECT_GE(took, 1s);
    EXPECT_LT(took, 2s);
  }
}

TEST_F(SandboxCollection, AFailedLoginLeavesNoService) {
  start();
  expectTavrinError([&] { connect("wrong-key"); }, ErrorType::invalidInput,
                    "invalid_grant_key. Authentication key is invalid");
  server->addFault(parseFaultRule("login:numeric-member"));
  expectTavrinError([&] { connect(); }, ErrorType::processingFailed, std::nullopt);
}

}  // namespace
}  // namespace tavrin
