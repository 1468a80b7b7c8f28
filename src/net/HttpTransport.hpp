#pragma once

#include "dataset/RunStop.hpp"

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

// The status and body of whatever response the server sent, 2xx or not, and
// the X-Request-Id it carried (empty when none), which the server's operators
// look requests up by.
struct HttpResponse {
  long status = 0;
  std::string body;
  std::string requestId{};
};

// The exchange produced no response: no connection, a TLS failure, a timeout.
// The reason is for people debugging, in libcurl's words.
struct TransportFailure {
  std::string reason;
};

// The run on the sending thread stopped (cancel, deadline) before the response
// was complete; the exchange was abandoned.
struct TransferStopped {
  StopReason reason;
};

using HttpOutcome = std::variant<HttpResponse, TransportFailure, TransferStopped>;

// Moves one request over the wire and back. Protocol rules (status mapping,
// re-login) live above this seam, so a test can script it.
class HttpTransport {
 public:
  virtual ~HttpTransport() = default;

  // Sends the request and blocks until the response has arrived, the exchange
  // has failed or the run on this thread stops. Never throws except std::bad_alloc.
  virtual HttpOutcome send(const HttpRequest& request) = 0;
};

}  // namespace tavrin
