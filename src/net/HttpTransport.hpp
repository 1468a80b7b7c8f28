#pragma once

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace tavrin {

// One HTTP request as the client builds it.
struct HttpRequest {
  std::string url;
  std::string method;
  std::vector<std::pair<std::string, std::string>> headers;  // name, value
  std::string body;
};

// The status and body of whatever response the server sent, 2xx or not.
struct HttpResponse {
  long status = 0;
  std::string body;
};

// The exchange produced no response: no connection, a TLS failure, a timeout.
// The reason is for people debugging; the client never shows it to the host.
struct TransportFailure {
  std::string reason;
};

using HttpOutcome = std::variant<HttpResponse, TransportFailure>;

// Moves one request over the wire and back. Protocol rules (status mapping,
// re-login) live above this seam, so a test can script it.
class HttpTransport {
 public:
  virtual ~HttpTransport() = default;

  // Sends the request and blocks until the response has arrived or the
  // exchange has failed. Never throws except std::bad_alloc.
  virtual HttpOutcome send(const HttpRequest& request) = 0;
};

}  // namespace tavrin
