#pragma once

#include "TestAuthority.hpp"
#include "TestServer.hpp"

#include <tavrin/options.hpp>

#include <chrono>
#include <filesystem>

namespace tavrin::testing_support {

// A directory of its own under the system's temporary directory, removed with its content.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::filesystem::path& path() const { return _path; }

 private:
  std::filesystem::path _path;
};

// Everything a test needs to reach a scoring service over real TLS: a CA made
// now, whose PEM lies in a temporary directory, and a test server that shows a
// certificate for api.tavrin.com signed by it.
class TlsTestBed {
 public:
  TlsTestBed();

  // Trusts the CA, leads api.tavrin.com to the server and bounds every request.
  ServiceOptions options(std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  TemporaryDirectory directory;
  std::filesystem::path caFile;
  TestAuthority authority;
  IssuedCertificate serverCertificate;
  TestServer server;
};

}  // namespace tavrin::testing_support
