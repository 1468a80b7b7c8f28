#pragma once

#include "net/ExchangeReport.hpp"
#include "net/HttpTransport.hpp"

#include <tavrin/error.hpp>

#include <nlohmann/json.hpp>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>

namespace tavrin {

// Speaks the scoring service's three exchanges (login, record-number check,
// upload) and keeps the token pair between them. Every operation sends one
// request, blocks until it is answered and throws TavrinError on failure; an
// error made from an answer carries its status and request id, one of
// transport its reason. Not for use from two threads at once: the operations
// write the token pair.
class RestService {
 public:
  // `url` is the base URL as the service accepted it: scheme, host, optional port.
  RestService(std::string url, std::unique_ptr<HttpTransport> transport);

  // Tells `events` (which must outlive the client) when each exchange starts
  // and ends, and logs each new login.
  void setEvents(const RunEvents& events) { _events = &events; }

  // Trades the key for a token pair. On success the pair and the key are kept;
  // on failure the previous ones stay.
  void login(std::string authKey);
  // Whether the server has not seen the record number yet. Needs a login.
  bool checkUniqueness(const std::string& recordNumber);
  // Uploads the base64 text of a compressed dataset; returns the server's answer.
  // Needs a login.
  std::string upload(const std::string& data, const std::string& recordNumber);

  // Runs the operation. When it fails with a bare 401 (accessDenied "401"), logs
  // in once more with the stored key and runs it once more; if that login fails,
  // the first 401 is thrown (the stop error instead when the run stopped). Every
  // other outcome passes through unchanged.
  template <typename Operation>
  std::invoke_result_t<Operation&> withRelogin(Operation&& operation);

 private:
  // A 2xx answer: its parsed body and where it came from.
  struct Answer {
    nlohmann::json body;
    const HttpResponse& response;
  };

  HttpRequest makeRequest(std::string_view path, bool isPost, std::string body) const;
  HttpRequest makeAuthorizedRequest(std::string_view path, bool isPost, std::string body) const;
  // Sends the request; the 2xx answer, or throws its error. `outcome` keeps
  // what the transport gave, which the answer refers to.
  Answer exchange(const HttpRequest& request, HttpOutcome& outcome, ExchangeReport& report);
  // Throws `error` with what `response` left behind, noted in the report.
  [[noreturn]] static void fail(ExchangeReport& report, const TavrinError& error,
                                const HttpResponse* response = nullptr);
  static TavrinError errorFromResponse(const HttpResponse& response);
  static bool isBare401(const TavrinError& error);

  std::optional<std::string> _authKey;
  std::optional<std::string> _accessToken;
  std::optional<std::string> _tokenType;
  std::string _url;
  std::unique_ptr<HttpTransport> _transport;
  const RunEvents* _events = &RunEvents::nobody();
};

template <typename Operation>
std::invoke_result_t<Operation&> RestService::withRelogin(Operation&& operation) {
  try {
    return operation();
  } catch (const TavrinError& first) {
    // Without a key from an earlier login there is nothing to log in with.
    if (!isBare401(first) || !_authKey) throw;
    _events->log(LogLevel::warning, "the token was refused (a bare 401); logging in again");
    const std::string authKey = *_authKey;  // login replaces the stored key
    try {
      login(authKey);
    } catch (const TavrinError&) {
      checkRunStop();
      throw first;
    }
  }
  return operation();
}

}  // namespace tavrin
