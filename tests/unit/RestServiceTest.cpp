#include "net/RestService.hpp"

#include "../support/ExpectTavrinError.hpp"

#include <gtest/gtest.h>

#include <deque>

namespace tavrin {
namespace {

using testing_support::expectTavrinError;

constexpr const char* baseUrl = "https://api.tavrin.com:8443";
constexpr const char* firstTokens = R"({"token_type":"Bearer","access_token":"first"})";
constexpr const char* secondTokens = R"({"token_type":"Bearer","access_token":"second"})";
constexpr const char* keyInvalid = "invalid_grant_key. Authentication key is invalid";

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

enum class Exchange { login, check, upload };
using enum Exchange;

class RestServiceTest : public testing::Test {
 protected:
  RestServiceTest() {
    auto scripted = std::make_unique<ScriptedTransport>();
    transport = scripted.get();
    service = std::make_unique<RestService>(baseUrl, std::move(scripted));
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

  // Runs one exchange and gives its result as text; for a login, the Authorization
  // header that the next request carries.
  std::string perform(Exchange exchange) {
    switch (exchange) {
      case login:
        service->login("key-1");
        answer(200, "true");
        service->checkUniqueness("r-1");
        return header(transport->requests.back(), "Authorization");
      case check: return service->checkUniqueness("r-1") ? "true" : "false";
      case upload: return service->upload("QUJD", "r-1");
    }
    return "";
  }

  std::string uploadWithRelogin() {
    return service->withRelogin([&] { return service->upload("QUJD", "r-1"); });
  }

  ScriptedTransport* transport = nullptr;
  std::unique_ptr<RestService> service;
};

// --- the three request shapes

TEST_F(RestServiceTest, SendsEachRequestWithItsExactBody) {
  answer(200, firstTokens);
  answer(200, "true");
  answer(200, R"("ok")");
  service->login("key \"1\"");
  service->checkUniqueness("r-1");
  service->upload("QUJD+/8=", "r\"1\\é");

  // Paths and methods are checked over the wire; here the exact bytes.
  const std::string expected[][2] = {
      {"(absent)", R"({"authKey":"key \"1\""})"},
      {"Bearer first", R"({"recordNumber":"r-1"})"},
      {"Bearer first", R"({"data":"QUJD+/8=","recordNumber":"r\"1\\é"})"}};
  ASSERT_EQ(transport->requests.size(), 3u);
  for (std::size_t i = 0; i < 3; ++i) {
    const HttpRequest& request = transport->requests[i];
    EXPECT_EQ(request.headers.size(), i == 0 ? 1u : 2u);
    EXPECT_EQ(header(request, "Content-Type"), "application/json");
    EXPECT_EQ(header(request, "Authorization"), expected[i][0]);
    EXPECT_EQ(request.body, expected[i][1]);
  }
}

// Any request would be unscripted, and fail the test.
TEST_F(RestServiceTest, BadTextOrBaseUrlFailsBeforeAnyTraffic) {
  expectTavrinError([&] { service->login("key\xFF"); }, ErrorType::invalidInput,
                    "Request text is not valid UTF-8");
  RestService unparsable("leading text https://api.tavrin.com",
                         std::make_unique<ScriptedTransport>());
  expectTavrinError([&] { unparsable.login("key-1"); }, ErrorType::invalidInput,
                    "Url is incorrect");
}

// --- status mapping, the same for all three exchanges

struct MappingRow {
  long status;  // 0: the transport fails
  std::string body;
  ErrorType type;
  std::optional<std::string> message;
};

class StatusMapping : public RestServiceTest,
                      public testing::WithParamInterface<std::tuple<Exchange, MappingRow>> {};

TEST_P(StatusMapping, GivesTheErrorOfTheRow) {
  const auto& [exchange, row] = GetParam();
  logIn();
  row.status == 0 ? failInTransport() : answer(row.status, row.body);
  expectTavrinError([&, exchange = exchange] { perform(exchange); }, row.type, row.message);
  EXPECT_EQ(transport->requests.size(), 1u);
}

const std::string notUnique = R"({"title":"record_number_not_unique"})";

const MappingRow mappingRows[] = {
    {400, notUnique, ErrorType::invalidInput,
     "record_number_not_unique. Record number is not unique"},
    {404, "", ErrorType::invalidInput, std::nullopt},
    {401, "", ErrorType::accessDenied, "401"},
    {401, R"({"title":"auth_key_invalid"})", ErrorType::invalidInput, keyInvalid},
    {403, "<html>forbidden</html>", ErrorType::accessDenied, "403"},
    {403, R"({"title":"Action_Forbidden"})", ErrorType::accessDenied, "403"},
    {409, notUnique, ErrorType::processingFailed, "record_number_not_unique"},
    {302, R"({"title":"moved"})", ErrorType::processingFailed, "moved"},
    {405, R"({"title":5})", ErrorType::processingFailed, std::nullopt},
    {199, R"({"title":"early"})", ErrorType::processingFailed, "early"},
    {499, R"({"title":"auth_key_invalid"})", ErrorType::processingFailed, "auth_key_invalid"},
    {500, R"({"title":"auth_key_invalid"})", ErrorType::serverRejected, std::nullopt},
    {599, R"({"title":"x"})", ErrorType::serverRejected, std::nullopt},
    {0, "", ErrorType::connectionFailed, std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(AllExchanges, StatusMapping,
                         testing::Combine(testing::Values(login, check, upload),
                                          testing::ValuesIn(mappingRows)));

// --- what a 2xx body must be

struct AnswerRow {
  Exchange exchange;
  std::string body;
  std::optional<std::string> result = std::nullopt;  // empty: the exchange fails
  ErrorType failure = ErrorType::processingFailed;
};

class SuccessAnswer : public RestServiceTest, public testing::WithParamInterface<AnswerRow> {};

// A login must be a flat object of strings with both tokens, a check a bare boolean
// and an upload a bare string.
TEST_P(SuccessAnswer, IsAcceptedOnlyInTheShapeOfItsExchange) {
  const AnswerRow& row = GetParam();
  logIn();
  answer(row.exchange == login ? 201 : 200, row.body);
  if (row.result) {
    EXPECT_EQ(perform(row.exchange), *row.result);
  } else {
    expectTavrinError([&] { perform(row.exchange); }, row.failure, std::nullopt);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, SuccessAnswer,
    testing::Values(
        AnswerRow{login, R"({"token_type":"Bearer","access_token":"t"})", "Bearer t"},
        AnswerRow{login, R"({"access_token":"t","scope":"all","token_type":"Bearer"})", "Bearer t"},
        AnswerRow{login, R"({"token_type":"Bearer","access_token":"t","expires_in":3600})"},
        AnswerRow{login, R"({"token_type":"Bearer"})"},
        AnswerRow{login, R"({"token_type":"Bearer","access_token":{"v":"t"}})"},
        AnswerRow{login, R"([{"token_type":"Bearer","access_token":"t"}])"}, AnswerRow{login, "{"},
        AnswerRow{login, "", {}, ErrorType::connectionFailed}, AnswerRow{check, "true", "true"},
        AnswerRow{check, "false", "false"}, AnswerRow{check, " \nfalse ", "false"},
        AnswerRow{check, R"("true")"}, AnswerRow{check, "1"}, AnswerRow{check, "null"},
        AnswerRow{check, "", {}, ErrorType::connectionFailed},
        AnswerRow{upload, R"("score 42")", "score 42"}, AnswerRow{upload, R"("")", ""},
        AnswerRow{upload, R"("caf\u00e9 \"x\"")", "café \"x\""}, AnswerRow{upload, "42"},
        AnswerRow{upload, "true"}, AnswerRow{upload, R"(["a"])"},
        AnswerRow{upload, R"("unterminated)"}));

// --- the token pair, and what an observer hears

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

TEST_F(RestServiceTest, ObserverHearsEveryExchangeAndAFailedLoginKeepsTheOldTokensAndKey) {
  ExchangeLog log;
  service->setObserver(&log);
  logIn();
  answer(500, "");
  expectTavrinError([&] { service->login("key-2"); }, ErrorType::serverRejected, std::nullopt);
  answerAfterRelogin("false");
  EXPECT_FALSE(service->withRelogin([&] { return service->checkUniqueness("r-1"); }));
  ASSERT_EQ(transport->requests.size(), 4u);
  EXPECT_EQ(header(transport->requests[1], "Authorization"), "Bearer first");
  EXPECT_EQ(transport->requests[2].body, R"({"authKey":"key-1"})");
  answer(200, "42");
  EXPECT_THROW(service->upload("QUJD", "r-1"), TavrinError);
  failInTransport();
  EXPECT_THROW(service->checkUniqueness("r-1"), TavrinError);

  EXPECT_TRUE(log.open.empty());
  EXPECT_EQ(log.finished, (std::vector<std::string>{"login 200 succeeded", "login 500 refused",
                                                    "check 401 refused", "login 200 succeeded",
                                                    "check 200 succeeded", "upload 200 refused",
                                                    "check 0 refused"}));
}

// How the wrapped upload ends, after how many requests, when the server gives these
// answers after a login.
struct ReloginCase {
  const char* name;
  ErrorType type;
  std::optional<std::string> message;
  std::size_t requests;
  std::vector<HttpOutcome> outcomes;
};

class ReloginRule : public RestServiceTest, public testing::WithParamInterface<ReloginCase> {};

TEST_P(ReloginRule, EndsAsTheRuleSays) {
  logIn();
  for (const auto& outcome : GetParam().outcomes) transport->outcomes.push_back(outcome);
  expectTavrinError([&] { uploadWithRelogin(); }, GetParam().type, GetParam().message);
  EXPECT_EQ(transport->requests.size(), GetParam().requests);
  EXPECT_TRUE(transport->outcomes.empty());
}

const HttpResponse bare401{401, ""}, newTokens{200, secondTokens};
const HttpResponse keyRejected{401, R"({"title":"auth_key_invalid"})"};
const HttpResponse loginRejected{400, keyRejected.body};
const HttpResponse suspended{401, R"({"title":"subscription_suspended"})"};
const TransportFailure unreachable{"refused"};

INSTANTIATE_TEST_SUITE_P(
    Sequences, ReloginRule,
    testing::Values(
        ReloginCase{"RejectedKey", ErrorType::invalidInput, keyInvalid, 1, {keyRejected}},
        ReloginCase{
            "Suspended", ErrorType::accessDenied, "subscription_suspended. ", 1, {suspended}},
        ReloginCase{"Forbidden", ErrorType::accessDenied, "403", 1, {HttpResponse{403, ""}}},
        ReloginCase{"ServerDown", ErrorType::serverRejected, {}, 1, {HttpResponse{500, ""}}},
        ReloginCase{"ReloginRejected", ErrorType::accessDenied, "401", 2, {bare401, loginRejected}},
        ReloginCase{
            "ReloginUnreachable", ErrorType::accessDenied, "401", 2, {bare401, unreachable}},
        ReloginCase{
            "SecondBare401", ErrorType::accessDenied, "401", 3, {bare401, newTokens, bare401}},
        ReloginCase{"RepeatUnreachable",
                    ErrorType::connectionFailed,
                    {},
                    3,
                    {bare401, newTokens, unreachable}}),
    [](const testing::TestParamInfo<ReloginCase>& param) { return std::string(param.param.name); });

TEST_F(RestServiceTest, WithoutAnEarlierLoginTheUnauthorizedIsThrown) {
  answer(401, "");
  expectTavrinError([&] { uploadWithRelogin(); }, ErrorType::accessDenied, "401");
  EXPECT_EQ(transport->requests.size(), 1u);
}

}  // namespace
}  // namespace tavrin
