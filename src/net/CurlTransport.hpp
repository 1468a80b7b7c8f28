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
// a new connection resumes the TLS session of the last one. A transfer stops
// within moments when the run on the sending thread is cancelled or passes its
// deadline, and after the request timeout of idleness. Not for use from two
// threads at once.
class CurlTransport final : public HttpTransport {
 public:
  // Whether requests share a connection.
  enum class Connections {
    kept,        // the one connection, while the server keeps it alive
    perRequest,  // a new TCP connection and a full TLS handshake for every request,
                 // as the library once made them: the benchmarks' reference
  };

  // Takes the trust, resolve, pinning and timeout settings of the options, and
  // the User-Agent of every request (empty: libcurl sends none).
  // Throws TavrinError(invalidInput) when the request timeout is not positive.
  CurlTransport(const ServiceOptions& options, std::string userAgent,
                Connections connections = Connections::kept);

  HttpOutcome send(const HttpRequest& request) override;

 private:
  struct HandleCleanup {
    void operator()(void* handle) const noexcept;
  };
  struct MultiCleanup {
    void operator()(void* multi) const noexcept;
  };

  std::string _caFile;
  std::vector<std::string> _resolve;
  std::string _pinnedPublicKey;
  std::chrono::milliseconds _requestTimeout;
  std::string _userAgent;
  Connections _connections;
  // libcurl's multi handle, which keeps the connections, and its easy handle,
  // which keeps the TLS session cache.
  std::unique_ptr<void, MultiCleanup> _multi;
  std::unique_ptr<void, HandleCleanup> _handle;
};

}  // namespace tavrin
