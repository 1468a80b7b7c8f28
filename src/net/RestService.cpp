#include "net/RestService.hpp"

#include "collection/StatusResource.hpp"
#include "net/RequestUrl.hpp"
#include "net/errorFromBody.hpp"

#include <algorithm>
#include <cstdint>
#include <span>
#include <utility>

namespace tavrin {
namespace {

constexpr std::string_view loginPath = "v4.0/account/tavrinLogin";
constexpr std::string_view checkUniquenessPath = "v4.0/datasets/recordNumber/checkuniqueness";
constexpr std::string_view uploadPath = "v4.0/datasets/upload";

using Json = nlohmann::json;

TavrinError failure(ErrorType type) { return TavrinError(type, std::nullopt); }

std::span<const std::uint8_t> bytesOf(const std::string& text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// Compact JSON of an object whose members are all strings.
std::string serialize(const Json& body) {
  try {
    return body.dump();
  } catch (const Json::type_error&) {
    // Only text that is not UTF-8 can make the writer fail.
    throw TavrinError(ErrorType::invalidInput, "Request text is not valid UTF-8");
  }
}

// Text that the JSON writer copies unchanged between quotes.
bool needsNoEscaping(std::string_view text) {
  return std::all_of(text.begin(), text.end(),
                     [](char c) { return c >= 0x20 && c < 0x7F && c != '"' && c != '\\'; });
}

// {"data":…,"recordNumber":…}. The base64 text is large and needs no escaping,
// so it is written straight into the body once instead of being copied into a
// JSON value and out again.
std::string uploadBody(const std::string& data, const std::string& recordNumber) {
  if (!needsNoEscaping(data))
    return serialize(Json{{"data", data}, {"recordNumber", recordNumber}});

  // Members are written in key order, so "data" comes first.
  const std::string skeleton = serialize(Json{{"data", ""}, {"recordNumber", recordNumber}});
  constexpr std::string_view dataStart = R"({"data":")";
  std::string body;
  body.reserve(skeleton.size() + data.size());
  body.append(dataStart).append(data).append(skeleton, dataStart.size());
  return body;
}

// Only a flat object of strings is a login answer, whatever else it holds,
// and it must name both parts of the token pair.
bool isTokenPair(const Json& answer) {
  if (!answer.is_object() || !answer.contains("token_type") || !answer.contains("access_token")) {
    return false;
  }
  return std::all_of(answer.begin(), answer.end(),
                     [](const Json& member) { return member.is_string(); });
}

}  // namespace

RestService::RestService(std::string url, std::unique_ptr<HttpTransport> transport)
    : _url(std::move(url)), _transport(std::move(transport)) {}

void RestService::login(std::string authKey) {
  ExchangeReport report(*_events, "login");
  HttpOutcome outcome;
  const Answer answer = exchange(
      makeRequest(loginPath, true, serialize(Json{{"authKey", authKey}})), outcome, report);

  if (!isTokenPair(answer.body)) {
    fail(report, failure(ErrorType::processingFailed), &answer.response);
  }
  _tokenType = answer.body.at("token_type").get<std::string>();
  _accessToken = answer.body.at("access_token").get<std::string>();
  _authKey = std::move(authKey);
  report.succeeded();
}

bool RestService::checkUniqueness(const std::string& recordNumber) {
  ExchangeReport report(*_events, "check");
  HttpOutcome outcome;
  const Answer answer =
      exchange(makeAuthorizedRequest(checkUniquenessPath, true,
                                     serialize(Json{{"recordNumber", recordNumber}})),
               outcome, report);
  if (!answer.body.is_boolean()) {
    fail(report, failure(ErrorType::processingFailed), &answer.response);
  }
  report.succeeded();
  return answer.body.get<bool>();
}

std::string RestService::upload(const std::string& data, const std::string& recordNumber) {
  ExchangeReport report(*_events, "upload");
  HttpOutcome outcome;
  Answer answer = exchange(makeAuthorizedRequest(uploadPath, true, uploadBody(data, recordNumber)),
                           outcome, report);
  if (!answer.body.is_string()) {
    fail(report, failure(ErrorType::processingFailed), &answer.response);
  }
  report.succeeded();
  return std::move(answer.body.get_ref<std::string&>());
}

HttpRequest RestService::makeRequest(std::string_view path, bool isPost, std::string body) const {
  auto url = requestUrl(_url, path);
  if (!url)
    throw TavrinError(ErrorType::invalidInput, std::string(StatusResource::urlIncorrectMessage));
  HttpRequest request{std::move(*url), isPost ? "POST" : "GET", {}, {}};
  if (isPost) request.body = std::move(body);
  request.headers.emplace_back("Content-Type", "application/json");
  return request;
}

HttpRequest RestService::makeAuthorizedRequest(std::string_view path, bool isPost,
                                               std::string body) const {
  HttpRequest request = makeRequest(path, isPost, std::move(body));
  request.headers.emplace_back("Authorization",
                               _tokenType.value_or("") + " " + _accessToken.value_or(""));
  return request;
}

RestService::Answer RestService::exchange(const HttpRequest& request, HttpOutcome& outcome,
                                          ExchangeReport& report) {
  outcome = _transport->send(request);
  if (const auto* stopped = std::get_if<TransferStopped>(&outcome)) {
    fail(report, stopError(stopped->reason));
  }
  if (const auto* broken = std::get_if<TransportFailure>(&outcome)) {
    fail(report, TavrinError(ErrorType::connectionFailed, std::nullopt, 0, {}, broken->reason));
  }
  const auto& response = std::get<HttpResponse>(outcome);
  report.answered(response.status, response.requestId);
  if (response.status < 200 || response.status > 299) {
    fail(report, errorFromResponse(response), &response);
  }
  // A success that carries nothing is an empty completion, as a failed transfer is.
  if (response.body.empty()) fail(report, failure(ErrorType::connectionFailed), &response);

  Json answer = Json::parse(response.body, nullptr, false);
  if (answer.is_discarded()) fail(report, failure(ErrorType::processingFailed), &response);
  return {std::move(answer), response};
}

void RestService::fail(ExchangeReport& report, const TavrinError& error,
                       const HttpResponse* response) {
  std::string why = error.what();
  if (!error.transportReason().empty()) why += " (" + error.transportReason() + ")";
  report.failed(std::move(why));
  if (response == nullptr) throw error;
  throw TavrinError(error.getErrorType(), error.getErrorMessage(),
                    static_cast<int>(response->status), response->requestId, {});
}

TavrinError RestService::errorFromResponse(const HttpResponse& response) {
  const long status = response.status;
  if (status == 400 || status == 404) {
    return errorFromBody(bytesOf(response.body)).value_or(failure(ErrorType::invalidInput));
  }
  if (status == 401 || status == 403) {
    return errorFromBody(bytesOf(response.body))
        .value_or(TavrinError(ErrorType::accessDenied, std::to_string(status)));
  }
  if (status >= 500) return failure(ErrorType::serverRejected);

  const Json document = Json::parse(response.body, nullptr, false);
  if (document.is_object()) {
    const auto title = document.find("title");
    if (title != document.end()) {
      return TavrinError(ErrorType::processingFailed, title->is_string()
                                                          ? std::optional(title->get<std::string>())
                                                          : std::nullopt);
    }
  }
  return failure(ErrorType::processingFailed);
}

bool RestService::isBare401(const TavrinError& error) {
  return error.getErrorType() == ErrorType::accessDenied && error.getErrorMessage() == "401";
}

}  // namespace tavrin
