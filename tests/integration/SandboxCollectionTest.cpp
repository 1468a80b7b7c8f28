// Whole collection runs of the library against the sandbox, in-process, over
// real TLS: what the sandbox keeps, how its tokens expire, and the error its
// fault rules give the host.
#include "../support/ExpectTavrinError.hpp"
#include "SandboxServer.hpp"

#include <tavrin/service.hpp>

#include <gtest/gtest.h>

#include <atomic>
#include <tuple>

namespace tavrin {
namespace {

using sandbox::parseFaultRule;
using testing_support::expectTavrinError;
using namespace std::chrono_literals;

class SandboxCollection : public testing::Test {
 protected:
  void start(void (*change)(sandbox::SandboxOptions&) = nullptr) {
    sandbox::SandboxOptions options;
    if (change) change(options);
    options.clock = [this] { return now.load(); };
    server = std::make_unique<sandbox::SandboxServer>(std::move(options));
    server->start();
  }

  std::unique_ptr<TavrinService> connect(const std::string& key = "sandbox-key",
                                         std::chrono::milliseconds timeout = 10s) const {
    ServiceOptions options;
    options.platform =
        platform::loadDeviceProfile(TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json");
    options.caFile = server->tlsFiles().authority.string();
    options.resolve = {server->resolve()};
    options.requestTimeout = timeout;
    return std::make_unique<TavrinService>(server->url(), key, options);
  }

  // The sandbox's token clock, moved by hand.
  std::atomic<std::chrono::steady_clock::time_point> now{std::chrono::steady_clock::time_point{}};
  std::unique_ptr<sandbox::SandboxServer> server;
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
// transport (RestServiceTest).
TEST_F(SandboxCollection, FaultRulesGiveTheErrorsTheStatusMappingPredicts) {
  const struct {
    const char* rule;
    ErrorType type;
    std::optional<std::string> message;
    std::size_t logins;  // including the constructor's
  } faults[] = {
      {"upload:status=401", ErrorType::accessDenied, "401", 2},
      {"upload:error=403/action_forbidden/Plan expired", ErrorType::accessDenied,
       "action_forbidden. Plan expired", 1},
      {"check:drop", ErrorType::connectionFailed, std::nullopt, 1},
      {"upload:drop", ErrorType::connectionFailed, std::nullopt, 1},
      // Held without an answer: fails once the request timeout runs out.
      {"check:stall", ErrorType::connectionFailed, std::nullopt, 1},
  };
  for (const auto& fault : faults) {
    SCOPED_TRACE(fault.rule);
    start();  // afresh: a rule without a count stays
    const auto service = connect("sandbox-key", 2s);
    server->addFault(parseFaultRule(fault.rule));
    expectTavrinError([&] { service->collectData("f-1"); }, fault.type, fault.message);
    EXPECT_EQ(server->counts().logins, fault.logins);
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
