// What the server answers comes from the network: any status and body must
// give the operation's result or the TavrinError the status mapping names,
// never a crash. The first input byte picks the exchange (and whether the
// transport fails), the next two the status, the rest is the body; the
// expected outcome is worked out here from the mapping rules, independently
// of RestService's own code.

#include "net/RestService.hpp"
#include "net/errorFromBody.hpp"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <variant>

namespace {

using Json = nlohmann::json;
using tavrin::ErrorType;

void require(bool condition) {
  if (!condition) std::abort();
}

// Answers a good login first when the fuzzed exchange needs one, then the
// fuzzed outcome.
class OneAnswer final : public tavrin::HttpTransport {
 public:
  OneAnswer(tavrin::HttpOutcome outcome, bool loginFirst)
      : _outcome(std::move(outcome)), _loggedIn(!loginFirst) {}
  tavrin::HttpOutcome send(const tavrin::HttpRequest&) override {
    if (!_loggedIn) {
      _loggedIn = true;
      return tavrin::HttpResponse{200, R"({"token_type":"Bearer","access_token":"t"})"};
    }
    return _outcome;
  }

 private:
  tavrin::HttpOutcome _outcome;
  bool _loggedIn;
};

struct Expected {
  std::optional<ErrorType> error;
  std::optional<std::string> message;
};

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

Expected fromError(const tavrin::TavrinError& error) {
  return {error.getErrorType(), error.getErrorMessage()};
}

// The error a non-2xx answer stands for.
Expected statusError(long status, const std::string& body) {
  if (status == 400 || status == 404) {
    if (const auto known = tavrin::errorFromBody(bytesOf(body))) return fromError(*known);
    return {ErrorType::invalidInput, std::nullopt};
  }
  if (status == 401 || status == 403) {
    if (const auto known = tavrin::errorFromBody(bytesOf(body))) return fromError(*known);
    return {ErrorType::accessDenied, std::to_string(status)};
  }
  if (status >= 500) return {ErrorType::serverRejected, std::nullopt};
  const Json document = Json::parse(body, nullptr, false);
  if (document.is_object() && document.contains("title")) {
    const auto& title = document["title"];
    if (title.is_string()) return {ErrorType::processingFailed, title.get<std::string>()};
  }
  return {ErrorType::processingFailed, std::nullopt};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const int exchange = data[0] % 3;  // login, check, upload
  const bool transportFails = data[0] >= 0xF0;
  const long status = (data[1] << 8 | data[2]) % 700;
  const std::string body(reinterpret_cast<const char*>(data) + 3, size - 3);

  tavrin::HttpOutcome outcome = tavrin::TransportFailure{"refused"};
  if (!transportFails) outcome = tavrin::HttpResponse{status, body};
  tavrin::RestService client("https://api.tavrin.com",
                             std::make_unique<OneAnswer>(outcome, exchange != 0));

  // What the answer must give.
  Expected expected;
  Json parsed;
  if (transportFails) {
    expected = {ErrorType::connectionFailed, std::nullopt};
  } else if (status < 200 || status > 299) {
    expected = statusError(status, body);
  } else if (body.empty()) {
    expected = {ErrorType::connectionFailed, std::nullopt};
  } else if (parsed = Json::parse(body, nullptr, false); parsed.is_discarded()) {
    expected = {ErrorType::processingFailed, std::nullopt};
  }

  try {
    client.login("key");  // the fuzzed answer when the exchange is the login
    if (exchange == 0) {
      require(!expected.error && parsed.is_object() && parsed.contains("token_type") &&
              parsed.contains("access_token"));
      for (const auto& member : parsed) require(member.is_string());
    } else if (exchange == 1) {
      const bool unique = client.checkUniqueness("r");
      require(!expected.error && parsed.is_boolean() && parsed.get<bool>() == unique);
    } else {
      const std::string answer = client.upload("ZGF0YQ==", "r");
      require(!expected.error && parsed.is_string() && parsed.get<std::string>() == answer);
    }
  } catch (const tavrin::TavrinError& error) {
    if (!expected.error) {
      // A 2xx answer of the wrong shape.
      require(error.getErrorType() == ErrorType::processingFailed && !error.getErrorMessage());
    } else {
      require(error.getErrorType() == *expected.error &&
              error.getErrorMessage() == expected.message);
    }
  }
  return 0;
}
