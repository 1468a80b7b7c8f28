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

}  // namespace

RestService::RestService(std::string url, std::unique_ptr<HttpTransport> transport)
    : _url(std::move(url)), _transport(std::move(transport)) {}

void RestService::login(std::string authKey) {
  ExchangeReport report(_observer, "login");
  const Json answer =
      exchange(makeRequest(loginPath, true, serialize(Json{{"authKey", authKey}})), report);

  // Only a flat object of strings is a login answer, whatever else it holds.
  if (!answer.is_object()) throw failure(ErrorType::processingFailed);
  for (const auto& member : answer) {
    if (!member.is_string()) throw failure(ErrorType::processingFailed);
  }
  const auto tokenType = answer.find("token_type");
  const auto accessToken = answer.find("access_token");
  if (tokenType == answer.end() || accessToken == answer.end()) {
    throw failure(ErrorType::processingFailed);
  }
  _tokenType = tokenType->get<std::string>();
  _accessToken = accessToken->get<std::string>();
  _authKey = std::move(authKey);
  report.succeeded();
}

bool RestService::checkUniqueness(const std::string& recordNumber) {
  ExchangeReport report(_observer, "check");
  const Json answer =
      exchange(makeAuthorizedRequest(checkUniquenessPath, true,
                                     serialize(Json{{"recordNumber", recordNumber}})),
               report);
  if (!answer.is_boolean()) throw failure(ErrorType::processingFailed);
  report.succeeded();
  return answer.get<bool>();
}

std::string RestService::upload(const std::string& data, const std::string& recordNumber) {
  ExchangeReport report(_observer, "upload");
  Json answer =
      exchange(makeAuthorizedRequest(uploadPath, true, uploadBody(data, recordNumber)), report);
  if (!answer.is_string()) throw failure(ErrorType::processingFailed);
  report.succeeded();
  return std::move(answer.get_ref<std::string&>());
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

Json RestService::exchange(const HttpRequest& request, ExchangeReport& report) {
  HttpOutcome outcome = _transport->send(request);
  const auto* response = std::get_if<HttpResponse>(&outcome);
  if (response == nullptr) throw failure(ErrorType::connectionFailed);
  report.answered(response->status);
  if (response->status < 200 || response->status > 299) throw errorFromResponse(*response);
  // A success that carries nothing is an empty completion, as a failed transfer is.
  if (response->body.empty()) throw failure(ErrorType::connectionFailed);

  Json answer = Json::parse(response->body, nullptr, false);
  if (answer.is_discarded()) throw failure(ErrorType::processingFailed);
  return answer;
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
