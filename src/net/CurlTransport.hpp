#pragma once

#include "net/HttpTransport.hpp"

#include <tavrin/options.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace tavrin {

// The production transport on libcurl: a new easy handle, and so a new
// connection, for every request; full TLS verification always; proxies from
// the environment as libcurl reads them; redirects are not followed. A
// transfer stops within moments when the run on the sending thread is
// cancelled or passes its deadline, and after the request timeout of idleness.
class CurlTransport final : public HttpTransport {
 public:
  // Takes the trust, resolve, pinning and timeout settings of the options, and
  // the User-Agent of every request (empty: libcurl sends none).
  // Throws TavrinError(invalidInput) when the request timeout is not positive.
  CurlTransport(const ServiceOptions& options, std::string userAgent);

  HttpOutcome send(const HttpRequest& request) override;

 private:
  std::string _caFile;
  std::vector<std::string> _resolve;
  std::string _pinnedPublicKey;
  std::chrono::milliseconds _requestTimeout;
  std::string _userAgent;
};

}  // namespace tavrin
