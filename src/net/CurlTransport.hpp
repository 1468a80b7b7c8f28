#pragma once

#include "net/HttpTransport.hpp"

#include <tavrin/options.hpp>

#include <chrono>
#include <string>
#include <vector>

namespace tavrin {

// The production transport on libcurl: a new easy handle, and so a new
// connection, for every request; full TLS verification always; proxies from
// the environment as libcurl reads them; redirects are not followed.
class CurlTransport final : public HttpTransport {
 public:
  // Takes the trust, resolve, pinning and timeout settings of the options.
  // Throws TavrinError(invalidInput) when the request timeout is not positive.
  explicit CurlTransport(const ServiceOptions& options);

  HttpOutcome send(const HttpRequest& request) override;

 private:
  std::string _caFile;
  std::vector<std::string> _resolve;
  std::string _pinnedPublicKey;
  std::chrono::milliseconds _requestTimeout;
};

}  // namespace tavrin
