// Whole collection runs of the library against the sandbox, in-process, over
// real TLS: what the sandbox keeps, and the error each fault rule gives the host.
#include "../support/ExpectTavrinError.hpp"
#include "SandboxServer.hpp"

#include <tavrin/service.hpp>

#include <gtest/gtest.h>

#include <atomic>

namespace tavrin {
namespace {

using sandbox::parseFaultRule;
using testing_support::expectTavrinError;
using namespace std::chrono_literals;

constexpr const char* realisticPhone = TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json";

class SandboxCollection : public testing::Test {
 protected:
  void start(sandbox::SandboxOptions options = {}) {
    options.clock = [this] { return now.load(); };
    server = std::make_unique<sandbox::SandboxServer>(std::move(options));
    server->start();
  }

  ServiceOptions serviceOptions(std::chrono::milliseconds timeout = 10s) const {
    ServiceOptions options;
    options.platform = platform::loadDeviceProfile(realisticPhone);
    options.caFile = server->tlsFiles().authority.string();
    options.resolve = {server->resolve()};
    options.requestTimeout = timeout;
    return options;
  }

  std::unique_ptr<TavrinService> connect(const std::string& key = "sandbox-key") const {
    return std::make_unique<TavrinService>(server->url(), key, serviceOptions());
  }

  // The sandbox's token clock, moved by hand.
  std::atomic<std::chrono::steady_clock::time_point> now{std::chrono::steady_clock::time_point{}};
  std::unique_ptr<sandbox::SandboxServer> server;
};

TEST_F(SandboxCollection, StoresAnAcceptedDatasetAndRefusesItsRecordNumberAgain) {
  start();
  const auto service = connect();
  EXPECT_EQ(service->collectData("order-1"), "accepted record \"order-1\" as upload 1");
  const auto stored = server->store().find("order-1");
  ASSERT_TRUE(stored.has_value());
  EXPECT_TRUE(stored->accepted);
  EXPECT_TRUE(stored->decoded.valid()) << *stored->decoded.problem;
  EXPECT_EQ(stored->decoded.sections.size(), 14u);

  // The check answers false: nothing is extracted or uploaded.
  expectTavrinError([&] { service->collectData("order-1"); }, ErrorType::serverRejected,
                    "record_number_not_unique. Record number is not unique");
  EXPECT_EQ(server->counts().uploads, 1u);

  // When the check is made to say yes, the upload itself is refused.
  server->addFault(parseFaultRule("check:body=200/true"));
  expectTavrinError([&] { service->collectData("order-1"); }, ErrorType::invalidInput,
                    "record_number_not_unique. Record number is not unique");
}

TEST_F(SandboxCollection, AnExpiredTokenLeadsToExactlyOneNewLogin) {
  sandbox::SandboxOptions options;
  options.tokenLifetime = 60s;
  start(std::move(options));
  const auto service = connect();
  now = now.load() + 61s;  // the token from the constructor's login has expired
  EXPECT_EQ(service->collectData("late-1"), "accepted record \"late-1\" as upload 1");
  const auto counts = server->counts();
  EXPECT_EQ(counts.logins, 2u);
  EXPECT_EQ(counts.checks, 2u);
  EXPECT_EQ(counts.uploads, 1u);
}

TEST_F(SandboxCollection, TokensThatNeverLiveGiveTheFirst401AfterOneNewLogin) {
  sandbox::SandboxOptions options;
  options.tokenLifetime = 0s;
  start(std::move(options));
  const auto service = connect();
  expectTavrinError([&] { service->collectData("r"); }, ErrorType::accessDenied, "401");
  EXPECT_EQ(server->counts().logins, 2u);
  EXPECT_EQ(server->counts().checks, 2u);
}

TEST_F(SandboxCollection, EmptyRecordNumberIsRefusedByTheCheck) {
  start();
  expectTavrinError([&] { connect()->collectData(""); }, ErrorType::invalidInput,
                    "record_number_required. Record number is required");
}

TEST_F(SandboxCollection, AnInvalidDatasetIsRefusedWithoutAMessageAndKeptWithItsReason) {
  sandbox::SandboxOptions options;
  options.maxDatasetSize = 1000;
  start(std::move(options));
  expectTavrinError([&] { connect()->collectData("big-1"); }, ErrorType::invalidInput,
                    std::nullopt);
  const auto stored = server->store().find("big-1");
  ASSERT_TRUE(stored.has_value());
  EXPECT_FALSE(stored->accepted);
  EXPECT_EQ(stored->decoded.problem.value_or(""),
            "payload: it inflates to more than the limit of 1000 bytes");
}

TEST_F(SandboxCollection, ABodyOverTheLimitIsRefusedAsTooLarge) {
  sandbox::SandboxOptions options;
  options.maxBodySize = 1000;
  start(std::move(options));
  expectTavrinError([&] { connect()->collectData("big-2"); }, ErrorType::processingFailed,
                    "payload_too_large");
}

// A fault rule and the error the host sees from collectData.
struct Fault {
  const char* name;
  const char* rule;
  ErrorType type;
  std::optional<std::string> message;
  std::size_t logins;  // including the constructor's
};

void PrintTo(const Fault& fault, std::ostream* out) { *out << fault.rule; }

class FaultDuringRun : public SandboxCollection, public testing::WithParamInterface<Fault> {};

TEST_P(FaultDuringRun, GivesTheErrorTheStatusMappingPredicts) {
  start();
  const auto service = connect();
  server->addFault(parseFaultRule(GetParam().rule));
  expectTavrinError([&] { service->collectData("f-1"); }, GetParam().type, GetParam().message);
  EXPECT_EQ(server->counts().logins, GetParam().logins);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, FaultDuringRun,
    testing::Values(
        Fault{"Bare401Always", "upload:status=401", ErrorType::accessDenied, "401", 2},
        Fault{"Unavailable", "check:status=503", ErrorType::serverRejected, std::nullopt, 1},
        Fault{"BareBadRequest", "check:status=400", ErrorType::invalidInput, std::nullopt, 1},
        Fault{"BareForbidden", "upload:status=403", ErrorType::accessDenied, "403", 1},
        Fault{"Redirect", "upload:status=302", ErrorType::processingFailed, std::nullopt, 1},
        Fault{"RecordInvalid", "check:error=400/record_number_invalid", ErrorType::invalidInput,
              "record_number_invalid. Record number is invalid", 1},
        Fault{"ConflictWithTitle", "check:error=409/record_number_not_unique",
              ErrorType::processingFailed, "record_number_not_unique", 1},
        Fault{"Forbidden", "upload:error=403/action_forbidden/Plan expired",
              ErrorType::accessDenied, "action_forbidden. Plan expired", 1},
        Fault{"SuspendedWith401", "upload:error=401/subscription_suspended",
              ErrorType::accessDenied, "subscription_suspended. ", 1},
        Fault{"CheckNotBoolean", "check:body=200/\"yes\"", ErrorType::processingFailed,
              std::nullopt, 1},
        Fault{"UploadNotJson", "upload:body=200/not json", ErrorType::processingFailed,
              std::nullopt, 1},
        Fault{"Dropped", "check:drop", ErrorType::connectionFailed, std::nullopt, 1},
        Fault{"DroppedUpload", "upload:drop", ErrorType::connectionFailed, std::nullopt, 1}),
    [](const testing::TestParamInfo<Fault>& test) { return std::string(test.param.name); });

TEST_F(SandboxCollection, ABare401OnceIsHealedByOneNewLogin) {
  start();
  const auto service = connect();
  server->addFault(parseFaultRule("upload:status=401*1"));
  EXPECT_EQ(service->collectData("healed-1"), "accepted record \"healed-1\" as upload 1");
  EXPECT_EQ(server->counts().logins, 2u);
  EXPECT_EQ(server->counts().uploads, 2u);
}

TEST_F(SandboxCollection, AStalledCheckFailsOnceTheRequestTimeoutRunsOut) {
  start();
  auto options = serviceOptions(500ms);
  TavrinService service(server->url(), "sandbox-key", options);
  server->addFault(parseFaultRule("check:stall"));
  expectTavrinError([&] { service.collectData("slow-1"); }, ErrorType::connectionFailed,
                    std::nullopt);
}

struct LoginFault {
  const char* name;
  const char* rule;  // empty: none, with a wrong key
  ErrorType type;
  std::optional<std::string> message;
};

void PrintTo(const LoginFault& fault, std::ostream* out) { *out << fault.name; }

class FaultAtConstruction : public SandboxCollection,
                            public testing::WithParamInterface<LoginFault> {};

TEST_P(FaultAtConstruction, LeavesNoService) {
  sandbox::SandboxOptions options;
  if (*GetParam().rule != '\0') options.faults.push_back(parseFaultRule(GetParam().rule));
  start(std::move(options));
  const std::string key = *GetParam().rule != '\0' ? "sandbox-key" : "wrong-key";
  expectTavrinError([&] { connect(key); }, GetParam().type, GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    Rules, FaultAtConstruction,
    testing::Values(LoginFault{"WrongKey", "", ErrorType::invalidInput,
                               "invalid_grant_key. Authentication key is invalid"},
                    LoginFault{"NumericMember", "login:numeric-member", ErrorType::processingFailed,
                               std::nullopt},
                    LoginFault{"TokenMissing", R"(login:body=200/{"token_type":"Bearer"})",
                               ErrorType::processingFailed, std::nullopt},
                    LoginFault{"Dropped", "any:drop*1", ErrorType::connectionFailed, std::nullopt},
                    LoginFault{"ServerDown", "login:status=500", ErrorType::serverRejected,
                               std::nullopt}),
    [](const testing::TestParamInfo<LoginFault>& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace tavrin
