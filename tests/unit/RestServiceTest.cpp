#include "net/RestService.hpp"

#include "../support/ExpectTavrinError.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <deque>
#include <stdexcept>

namespace tavrin {
namespace {

using testing_support::expectTavrinError;
using Json = nlohmann::json;

constexpr const char* baseUrl = "https://api.tavrin.com:8443";
constexpr const char* firstTokens = R"({"token_type":"Bearer","access_token":"first"})";
constexpr const char* secondTokens = R"({"token_type":"Bearer","access_token":"second"})";

// Plays back scripted outcomes in order and keeps every request it was given.
class ScriptedTransport final : public HttpTransport {
 public:
  HttpOutcome send(const HttpRequest& request) override {
    requests.push_back(request);
    if (outcomes.empty()) {
      ADD_FAILURE() << "unscripted request to " << request.url;
      return TransportFailure{"unscripted"};
    }
    HttpOutcome next = std::move(outcomes.front());
    outcomes.pop_front();
    return next;
  }

  std::deque<HttpOutcome> outcomes;
  std::vector<HttpRequest> requests;
};

std::string header(const HttpRequest& request, const std::string& name) {
  for (const auto& [key, value] : request.headers) {
    if (key == name) return value;
  }
  return "(absent)";
}

class RestServiceTest : public testing::Test {
 protected:
  explicit RestServiceTest(std::string url = baseUrl) {
    auto scripted = std::make_unique<ScriptedTransport>();
    transport = scripted.get();
    service = std::make_unique<RestService>(std::move(url), std::move(scripted));
  }

  void answer(long status, std::string body) {
    transport->outcomes.emplace_back(HttpResponse{status, std::move(body)});
  }
  void failInTransport() { transport->outcomes.emplace_back(TransportFailure{"refused"}); }

  // Logs in with "key-1" (token "first") and forgets that request.
  void logIn() {
    answer(200, firstTokens);
    service->login("key-1");
    transport->requests.clear();
  }

  // A bare 401, a login that hands out token "second", then the given answer.
  void answerAfterRelogin(std::string body) {
    answer(401, "");
    answer(200, secondTokens);
    answer(200, std::move(body));
  }

  std::string uploadWithRelogin() {
    return service->withRelogin([&] { return service->upload("QUJD", "r-1"); });
  }

  ScriptedTransport* transport = nullptr;
  std::unique_ptr<RestService> service;
};

// --- the three request shapes

TEST_F(RestServiceTest, LoginPostsTheKeyAloneWithoutAuthorization) {
  answer(200, firstTokens);
  service->login("key \"1\"");

  ASSERT_EQ(transport->requests.size(), 1u);
  const HttpRequest& request = transport->requests[0];
  EXPECT_EQ(request.url, "https://api.tavrin.com:8443/v4.0/account/tavrinLogin");
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(
      request.headers,
      (std::vector<std::pair<std::string, std::string>>{{"Content-Type", "application/json"}}));
  EXPECT_EQ(request.body, R"({"authKey":"key \"1\""})");
}

TEST_F(RestServiceTest, CheckCarriesTheTokenPairAndTheRecordNumber) {
  logIn();
  answer(200, "true");
  service->checkUniqueness("r-1");

  ASSERT_EQ(transport->requests.size(), 1u);
  const HttpRequest& request = transport->requests[0];
  EXPECT_EQ(request.url, "https://api.tavrin.com:8443/v4.0/datasets/recordNumber/checkuniqueness");
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(header(request, "Content-Type"), "application/json");
  EXPECT_EQ(header(request, "Authorization"), "Bearer first");
  EXPECT_EQ(request.body, R"({"recordNumber":"r-1"})");
}

TEST_F(RestServiceTest, UploadBodyHoldsExactlyDataAndRecordNumber) {
  logIn();
  answer(200, R"("ok")");
  service->upload("QUJD+/8=", "r\"1\\é");

  ASSERT_EQ(transport->requests.size(), 1u);
  const HttpRequest& request = transport->requests[0];
  EXPECT_EQ(request.url, "https://api.tavrin.com:8443/v4.0/datasets/upload");
  EXPECT_EQ(header(request, "Authorization"), "Bearer first");
  EXPECT_EQ(request.body, R"({"data":"QUJD+/8=","recordNumber":"r\"1\\é"})");
}

TEST_F(RestServiceTest, TextThatIsNotUtf8IsRejectedBeforeAnyTraffic) {
  expectTavrinError([&] { service->login("key\xFF"); }, ErrorType::invalidInput,
                    "Request text is not valid UTF-8");
  EXPECT_TRUE(transport->requests.empty());
}

class UnparsableBaseUrl : public RestServiceTest {
 protected:
  UnparsableBaseUrl() : RestServiceTest("leading text https://api.tavrin.com") {}
};

TEST_F(UnparsableBaseUrl, FailsTheRequestBeforeAnyTraffic) {
  expectTavrinError([&] { service->login("key-1"); }, ErrorType::invalidInput, "Url is incorrect");
  EXPECT_TRUE(transport->requests.empty());
}

// --- status mapping, the same for all three exchanges

enum class Exchange { login, check, upload };

struct MappingRow {
  long status;
  std::string body;
  ErrorType type;
  std::optional<std::string> message;
};

class StatusMapping : public RestServiceTest,
                      public testing::WithParamInterface<std::tuple<Exchange, MappingRow>> {};

TEST_P(StatusMapping, GivesTheErrorOfTheRow) {
  const auto& [exchange, row] = GetParam();
  logIn();
  answer(row.status, row.body);
  expectTavrinError(
      [&, exchange = exchange] {
        switch (exchange) {
          case Exchange::login: service->login("key-1"); break;
          case Exchange::check: service->checkUniqueness("r-1"); break;
          case Exchange::upload: service->upload("QUJD", "r-1"); break;
        }
      },
      row.type, row.message);
  EXPECT_EQ(transport->requests.size(), 1u);
}

const MappingRow mappingRows[] = {
    {400, R"({"title":"record_number_not_unique"})", ErrorType::invalidInput,
     "record_number_not_unique. Record number is not unique"},
    {404, "", ErrorType::invalidInput, std::nullopt},
    {401, "", ErrorType::accessDenied, "401"},
    {401, R"({"title":"auth_key_invalid"})", ErrorType::invalidInput,
     "invalid_grant_key. Authentication key is invalid"},
    {403, "<html>forbidden</html>", ErrorType::accessDenied, "403"},
    {403, R"({"title":"Action_Forbidden"})", ErrorType::accessDenied, "403"},
    {409, R"({"title":"record_number_not_unique"})", ErrorType::processingFailed,
     "record_number_not_unique"},
    {302, R"({"title":"moved"})", ErrorType::processingFailed, "moved"},
    {405, R"({"title":5})", ErrorType::processingFailed, std::nullopt},
    {199, R"({"title":"early"})", ErrorType::processingFailed, "early"},
    {499, R"({"title":"auth_key_invalid"})", ErrorType::processingFailed, "auth_key_invalid"},
    {500, R"({"title":"auth_key_invalid"})", ErrorType::serverRejected, std::nullopt},
    {599, R"({"title":"x"})", ErrorType::serverRejected, std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(AllExchanges, StatusMapping,
                         testing::Combine(testing::Values(Exchange::login, Exchange::check,
                                                          Exchange::upload),
                                          testing::ValuesIn(mappingRows)));

TEST_F(RestServiceTest, TransportFailureIsConnectionFailedForEveryExchange) {
  logIn();
  failInTransport();
  failInTransport();
  failInTransport();
  expectTavrinError([&] { service->login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
  expectTavrinError([&] { service->checkUniqueness("r-1"); }, ErrorType::connectionFailed,
                    std::nullopt);
  expectTavrinError([&] { service->upload("QUJD", "r-1"); }, ErrorType::connectionFailed,
                    std::nullopt);
}

// --- what a 2xx body must be

struct LoginBody {
  std::string body;
  std::optional<ErrorType> failure;  // empty: the login succeeds with token "t"
};

class LoginAnswer : public RestServiceTest, public testing::WithParamInterface<LoginBody> {};

TEST_P(LoginAnswer, IsAcceptedOnlyAsAFlatStringObjectWithBothTokens) {
  answer(201, GetParam().body);
  if (GetParam().failure) {
    expectTavrinError([&] { service->login("key-1"); }, *GetParam().failure, std::nullopt);
    return;
  }
  service->login("key-1");
  answer(200, "true");
  service->checkUniqueness("r-1");
  EXPECT_EQ(header(transport->requests.back(), "Authorization"), "Bearer t");
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, LoginAnswer,
    testing::Values(
        LoginBody{R"({"token_type":"Bearer","access_token":"t"})", std::nullopt},
        LoginBody{R"({"access_token":"t","scope":"all","token_type":"Bearer"})", std::nullopt},
        LoginBody{R"({"token_type":"Bearer","access_token":"t","expires_in":3600})",
                  ErrorType::processingFailed},
        LoginBody{R"({"token_type":"Bearer"})", ErrorType::processingFailed},
        LoginBody{R"({"token_type":"Bearer","access_token":{"v":"t"}})",
                  ErrorType::processingFailed},
        LoginBody{R"([{"token_type":"Bearer","access_token":"t"}])", ErrorType::processingFailed},
        LoginBody{"{", ErrorType::processingFailed}, LoginBody{"", ErrorType::connectionFailed}));

struct CheckBody {
  std::string body;
  std::optional<bool> unique;  // empty: the check fails
  ErrorType failure = ErrorType::processingFailed;
};

class CheckAnswer : public RestServiceTest, public testing::WithParamInterface<CheckBody> {};

TEST_P(CheckAnswer, IsABareBoolean) {
  logIn();
  answer(200, GetParam().body);
  if (GetParam().unique) {
    EXPECT_EQ(service->checkUniqueness("r-1"), *GetParam().unique);
  } else {
    expectTavrinError([&] { service->checkUniqueness("r-1"); }, GetParam().failure, std::nullopt);
  }
}

INSTANTIATE_TEST_SUITE_P(Bodies, CheckAnswer,
                         testing::Values(CheckBody{"true", true}, CheckBody{"false", false},
                                         CheckBody{" \nfalse ", false},
                                         CheckBody{R"("true")", std::nullopt},
                                         CheckBody{"1", std::nullopt},
                                         CheckBody{"null", std::nullopt},
                                         CheckBody{"", std::nullopt, ErrorType::connectionFailed}));

struct UploadBody {
  std::string body;
  std::optional<std::string> result;  // empty: the upload fails with processingFailed
};

class UploadAnswer : public RestServiceTest, public testing::WithParamInterface<UploadBody> {};

TEST_P(UploadAnswer, IsABareString) {
  logIn();
  answer(200, GetParam().body);
  if (GetParam().result) {
    EXPECT_EQ(service->upload("QUJD", "r-1"), *GetParam().result);
  } else {
    expectTavrinError([&] { service->upload("QUJD", "r-1"); }, ErrorType::processingFailed,
                      std::nullopt);
  }
}

INSTANTIATE_TEST_SUITE_P(Bodies, UploadAnswer,
                         testing::Values(UploadBody{R"("score 42")", "score 42"},
                                         UploadBody{R"("")", ""},
                                         UploadBody{R"("caf\u00e9 \"x\"")", "café \"x\""},
                                         UploadBody{"42", std::nullopt},
                                         UploadBody{"true", std::nullopt},
                                         UploadBody{R"(["a"])", std::nullopt},
                                         UploadBody{R"("unterminated)", std::nullopt}));

// --- the token pair

TEST_F(RestServiceTest, FailedLoginKeepsThePreviousTokensAndKey) {
  logIn();
  answer(500, "");
  expectTavrinError([&] { service->login("key-2"); }, ErrorType::serverRejected, std::nullopt);

  answerAfterRelogin(R"("ok")");
  EXPECT_EQ(uploadWithRelogin(), "ok");
  ASSERT_EQ(transport->requests.size(), 4u);
  EXPECT_EQ(header(transport->requests[1], "Authorization"), "Bearer first");
  EXPECT_EQ(transport->requests[2].body, R"({"authKey":"key-1"})");
}

// --- the re-login rule

TEST_F(RestServiceTest, BareUnauthorizedLogsInOnceAndRepeatsWithTheNewToken) {
  logIn();
  answerAfterRelogin(R"("accepted")");

  EXPECT_EQ(uploadWithRelogin(), "accepted");
  ASSERT_EQ(transport->requests.size(), 3u);
  EXPECT_EQ(header(transport->requests[0], "Authorization"), "Bearer first");
  EXPECT_EQ(transport->requests[1].url, "https://api.tavrin.com:8443/v4.0/account/tavrinLogin");
  EXPECT_EQ(transport->requests[1].body, R"({"authKey":"key-1"})");
  EXPECT_EQ(header(transport->requests[2], "Authorization"), "Bearer second");
  EXPECT_EQ(transport->requests[2].body, transport->requests[0].body);
}

// --- what an observer hears

// Writes down each finished exchange as "name status succeeded|refused".
class ExchangeLog : public CollectionObserver {
 public:
  void exchangeStarted(std::string_view name) override { open.emplace_back(name); }
  void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) override {
    EXPECT_EQ(open.back(), name) << "finished without having started";
    open.pop_back();
    EXPECT_GE(outcome.elapsed.count(), 0);
    finished.push_back(std::string(name) + " " + std::to_string(outcome.status) +
                       (outcome.succeeded ? " succeeded" : " refused"));
  }
  std::vector<std::string> open, finished;
};

TEST_F(RestServiceTest, ObserverHearsEachExchangeOfAReloginAndHowItEnded) {
  ExchangeLog log;
  service->setObserver(&log);
  logIn();
  answerAfterRelogin(R"("accepted")");
  EXPECT_EQ(uploadWithRelogin(), "accepted");
  answer(200, "42");
  EXPECT_THROW(service->checkUniqueness("r-1"), TavrinError);
  failInTransport();
  EXPECT_THROW(service->checkUniqueness("r-1"), TavrinError);

  EXPECT_TRUE(log.open.empty());
  EXPECT_EQ(log.finished,
            (std::vector<std::string>{"login 200 succeeded", "upload 401 refused",
                                      "login 200 succeeded", "upload 200 succeeded",
                                      "check 200 refused", "check 0 refused"}));
}

TEST_F(RestServiceTest, CheckIsRepeatedAfterReloginToo) {
  logIn();
  answerAfterRelogin("false");

  EXPECT_FALSE(service->withRelogin([&] { return service->checkUniqueness("r-1"); }));
  EXPECT_EQ(transport->requests.size(), 3u);
}

// What the server answers after a login, and how the wrapped upload then ends.
struct ReloginCase {
  const char* name;
  std::vector<HttpOutcome> outcomes;
  ErrorType type;
  std::optional<std::string> message;
  std::size_t requests;
};

class ReloginRule : public RestServiceTest, public testing::WithParamInterface<ReloginCase> {};

TEST_P(ReloginRule, EndsAsTheRuleSays) {
  logIn();
  for (const auto& outcome : GetParam().outcomes) transport->outcomes.push_back(outcome);
  expectTavrinError([&] { uploadWithRelogin(); }, GetParam().type, GetParam().message);
  EXPECT_EQ(transport->requests.size(), GetParam().requests);
  EXPECT_TRUE(transport->outcomes.empty());
}

const HttpResponse bare401{401, ""};
const HttpResponse newTokens{200, secondTokens};

INSTANTIATE_TEST_SUITE_P(
    Sequences, ReloginRule,
    testing::Values(
        ReloginCase{"RejectedKey",
                    {HttpResponse{401, R"({"title":"auth_key_invalid"})"}},
                    ErrorType::invalidInput,
                    "invalid_grant_key. Authentication key is invalid",
                    1},
        ReloginCase{"Suspended",
                    {HttpResponse{401, R"({"title":"subscription_suspended"})"}},
                    ErrorType::accessDenied,
                    "subscription_suspended. ",
                    1},
        ReloginCase{"Forbidden", {HttpResponse{403, ""}}, ErrorType::accessDenied, "403", 1},
        ReloginCase{"ServerDown", {HttpResponse{500, ""}}, ErrorType::serverRejected, {}, 1},
        ReloginCase{"ReloginRejected",
                    {bare401, HttpResponse{400, R"({"title":"auth_key_invalid"})"}},
                    ErrorType::accessDenied,
                    "401",
                    2},
        ReloginCase{"ReloginUnreachable",
                    {bare401, TransportFailure{"refused"}},
                    ErrorType::accessDenied,
                    "401",
                    2},
        ReloginCase{
            "SecondBare401", {bare401, newTokens, bare401}, ErrorType::accessDenied, "401", 3},
        ReloginCase{"RepeatUnreachable",
                    {bare401, newTokens, TransportFailure{"refused"}},
                    ErrorType::connectionFailed,
                    {},
                    3}),
    [](const testing::TestParamInfo<ReloginCase>& param) { return std::string(param.param.name); });

TEST_F(RestServiceTest, WithoutAnEarlierLoginTheUnauthorizedIsThrown) {
  answer(401, "");
  expectTavrinError([&] { uploadWithRelogin(); }, ErrorType::accessDenied, "401");
  EXPECT_EQ(transport->requests.size(), 1u);
}

}  // namespace
}  // namespace tavrin
