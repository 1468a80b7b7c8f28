#pragma once

#include "net/HttpTransport.hpp"

#include <tavrin/options.hpp>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace tavrin {

// The production transport on libcurl: full TLS verification always; proxies
// from the environment as libcurl reads them; redirects are not followed. One
// libcurl handle serves every request, so the exchanges of a service object
// share one kept-alive connection for as long as the server keeps it open, and
// a new connection resumes the TLS session of the last one. Not for use from
// two threads at once.
class CurlTransport final : public HttpTransport {
 public:
  // Whether requests share a connection.
  enum class Connections {
    kept,        // the one connection, while the server keeps it alive
    perRequest,  // a new TCP connection and a full TLS handshake for every request,
                 // as the library once made them: the benchmarks' reference
  };

  // Takes the trust, resolve, pinning and timeout settings of the options.
  // Throws TavrinError(invalidInput) when the request timeout is not positive.
  explicit CurlTransport(const ServiceOptions& options,
                         Connections connections = Connections::kept);

  HttpOutcome send(const HttpRequest& request) override;

 private:
  struct HandleCleanup {
    void operator()(void* handle) const noexcept;
  };

  std::string _caFile;
  std::vector<std::string> _resolve;
  std::string _pinnedPublicKey;
  std::chrono::milliseconds _requestTimeout;
  Connections _connections;
  // libcurl's easy handle: it holds the connection and the TLS session cache.
  std::unique_ptr<void, HandleCleanup> _handle;
};

}  // namespace tavrin
