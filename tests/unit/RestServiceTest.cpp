#include "net/RestService.hpp"

#include "../support/ExpectTavrinError.hpp"

#include <gtest/gtest.h>

#include <deque>

namespace tavrin {
namespace {

using testing_support::expectTavrinError;
using enum ErrorType;

constexpr const char* baseUrl = "https://api.tavrin.com:8443";
constexpr const char* firstTokens = R"({"token_type":"Bearer","access_token":"first"})";
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

const HttpResponse bare401{401, ""};
const HttpResponse newTokens{200, R"({"token_type":"Bearer","access_token":"second"})"};
const TransportFailure unreachable{"refused"};

enum class Exchange { login, check, upload };
using enum Exchange;

class RestServiceTest : public testing::Test {
 protected:
  void answer(long status, std::string body) {
    transport->outcomes.emplace_back(HttpResponse{status, std::move(body)});
  }

  // Logs in with "key-1" (token "first") and forgets that request.
  void logIn() {
    answer(200, firstTokens);
    service.login("key-1");
    transport->requests.clear();
  }

  // Runs one exchange and gives its result as text; for a login, the Authorization
  // header that the next request carries.
  std::string perform(Exchange exchange) {
    switch (exchange) {
      case login:
        service.login("key-1");
        answer(200, "true");
        service.checkUniqueness("r-1");
        return header(transport->requests.back(), "Authorization");
      case check: return service.checkUniqueness("r-1") ? "true" : "false";
      case upload: return service.upload("QUJD", "r-1");
    }
    return "";
  }

  ScriptedTransport* transport = new ScriptedTransport;  // owned by the service
  RestService service{baseUrl, std::unique_ptr<HttpTransport>(transport)};
};

// --- the three request shapes

TEST_F(RestServiceTest, SendsEachRequestWithItsExactBody) {
  transport->outcomes = {HttpResponse{200, firstTokens}, HttpResponse{200, "true"},
                         HttpResponse{200, R"("ok")"}};
  service.login("key \"1\"");
  service.checkUniqueness("r-1");
  service.upload("QU\"JD+/8=", "r\"1\\é");

  // Paths and methods are checked over the wire; here the exact headers and bytes: per
  // request, how many headers, the Authorization header and the body.
  std::vector<std::string> sent;
  for (const HttpRequest& r : transport->requests) {
    EXPECT_EQ(header(r, "Content-Type"), "application/json");
    sent.push_back(std::to_string(r.headers.size()) + " " + header(r, "Authorization") + " " +
                   r.body);
  }
  EXPECT_EQ(sent,
            (std::vector<std::string>{
                R"(1 (absent) {"authKey":"key \"1\""})", R"(2 Bearer first {"recordNumber":"r-1"})",
                R"(2 Bearer first {"data":"QU\"JD+/8=","recordNumber":"r\"1\\é"})"}));
}

// Any request would be unscripted, and fail the test.
TEST_F(RestServiceTest, BadTextOrBaseUrlFailsBeforeAnyTraffic) {
  expectTavrinError([&] { service.login("key\xFF"); }, invalidInput,
                    "Request text is not valid UTF-8");
  RestService unparsable("leading text https://api.tavrin.com",
                         std::make_unique<ScriptedTransport>());
  expectTavrinError([&] { unparsable.login("key-1"); }, invalidInput, "Url is incorrect");
}

// --- status mapping, the same for all three exchanges; which bodies are recognised
// is read by ErrorFromBodyTest

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
  row.status == 0 ? transport->outcomes.push_back(unreachable) : answer(row.status, row.body);
  expectTavrinError([&, exchange = exchange] { perform(exchange); }, row.type, row.message);
  EXPECT_EQ(transport->requests.size(), 1u);
}

const MappingRow mappingRows[] = {
    {400, R"({"title":"record_number_not_unique"})", invalidInput,
     "record_number_not_unique. Record number is not unique"},
    {404, "", invalidInput, std::nullopt},
    {401, "", accessDenied, "401"},
    {401, R"({"title":"auth_key_invalid"})", invalidInput, keyInvalid},
    {403, "<html>forbidden</html>", accessDenied, "403"},
    {302, R"({"title":"moved"})", processingFailed, "moved"},
    {405, R"({"title":5})", processingFailed, std::nullopt},
    {199, R"({"title":"early"})", processingFailed, "early"},
    {499, R"({"title":"auth_key_invalid"})", processingFailed, "auth_key_invalid"},
    {500, R"({"title":"auth_key_invalid"})", serverRejected, std::nullopt},
    {0, "", connectionFailed, std::nullopt},
};

INSTANTIATE_TEST_SUITE_P(AllExchanges, StatusMapping,
                         testing::Combine(testing::Values(login, check, upload),
                                          testing::ValuesIn(mappingRows)));

// --- what a 2xx body must be

struct AnswerRow {
  Exchange exchange;
  std::string body;
  std::optional<std::string> result = std::nullopt;  // empty: the exchange fails
  ErrorType failure = processingFailed;
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
        AnswerRow{login, R"({"token_type":"Bearer"})"}, AnswerRow{login, R"({"access_token":"t"})"},
        AnswerRow{login, R"({"token_type":"Bearer","access_token":{"v":"t"}})"},
        AnswerRow{login, R"([{"token_type":"Bearer","access_token":"t"}])"}, AnswerRow{login, "{"},
        AnswerRow{login, "", {}, connectionFailed}, AnswerRow{check, "true", "true"},
        AnswerRow{check, " \nfalse ", "false"}, AnswerRow{check, R"("true")"},
        AnswerRow{check, "1"}, AnswerRow{check, "null"},
        AnswerRow{upload, R"("score 42")", "score 42"}, AnswerRow{upload, R"("")", ""},
        AnswerRow{upload, R"("caf\u00e9 \"x\"")", "café \"x\""}, AnswerRow{upload, "42"},
        AnswerRow{upload, "true"}, AnswerRow{upload, R"(["a"])"}));

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
  service.setObserver(&log);
  logIn();
  answer(500, "");
  expectTavrinError([&] { service.login("key-2"); }, serverRejected, std::nullopt);
  transport->outcomes = {bare401, newTokens, HttpResponse{200, "false"}};
  EXPECT_FALSE(service.withRelogin([&] { return service.checkUniqueness("r-1"); }));
  ASSERT_EQ(transport->requests.size(), 4u);
  EXPECT_EQ(header(transport->requests[1], "Authorization"), "Bearer first");
  EXPECT_EQ(transport->requests[2].body, R"({"authKey":"key-1"})");
  transport->outcomes = {HttpResponse{200, "42"}, unreachable};
  EXPECT_THROW(service.upload("QUJD", "r-1"), TavrinError);
  EXPECT_THROW(service.checkUniqueness("r-1"), TavrinError);

  EXPECT_TRUE(log.open.empty());
  EXPECT_EQ(log.finished, (std::vector<std::string>{"login 200 succeeded", "login 500 refused",
                                                    "check 401 refused", "login 200 succeeded",
                                                    "check 200 succeeded", "upload 200 refused",
                                                    "check 0 refused"}));
}

// How the wrapped upload ends, after how many requests, when the server gives these
// answers (after a login, unless told otherwise).
struct ReloginCase {
  const char* name;
  ErrorType type;
  std::optional<std::string> message;
  std::size_t requests;
  std::vector<HttpOutcome> outcomes;
  bool loggedIn = true;
};

class ReloginRule : public RestServiceTest, public testing::WithParamInterface<ReloginCase> {};

TEST_P(ReloginRule, EndsAsTheRuleSays) {
  const ReloginCase& c = GetParam();
  if (c.loggedIn) logIn();
  transport->outcomes.assign(c.outcomes.begin(), c.outcomes.end());
  expectTavrinError([&] { service.withRelogin([&] { return service.upload("QUJD", "r-1"); }); },
                    c.type, c.message);
  EXPECT_EQ(transport->requests.size(), c.requests);
  EXPECT_TRUE(transport->outcomes.empty());
}

const std::string keyRejected = R"({"title":"auth_key_invalid"})";
const std::string suspended = R"({"title":"subscription_suspended"})";

const ReloginCase reloginCases[] = {
    {"RejectedKey", invalidInput, keyInvalid, 1, {HttpResponse{401, keyRejected}}},
    {"Suspended", accessDenied, "subscription_suspended. ", 1, {HttpResponse{401, suspended}}},
    {"Forbidden", accessDenied, "403", 1, {HttpResponse{403, ""}}},
    {"ReloginRejected", accessDenied, "401", 2, {bare401, HttpResponse{400, keyRejected}}},
    {"ReloginUnreachable", accessDenied, "401", 2, {bare401, unreachable}},
    {"SecondBare401", accessDenied, "401", 3, {bare401, newTokens, bare401}},
    {"RepeatUnreachable", connectionFailed, {}, 3, {bare401, newTokens, unreachable}},
    {"NoEarlierLogin", accessDenied, "401", 1, {bare401}, false},
};

INSTANTIATE_TEST_SUITE_P(Sequences, ReloginRule, testing::ValuesIn(reloginCases),
                         [](const auto& param) { return std::string(param.param.name); });

}  // namespace
}  // namespace tavrin
