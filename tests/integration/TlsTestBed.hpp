#pragma once

#include "TestAuthority.hpp"
#include "TestServer.hpp"

#include <tavrin/options.hpp>

#include <chrono>
#include <filesystem>
#include <string>

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

// The device profile the collection runs of these tests read.
inline const std::string collectionProfile = TAVRIN_TEST_DATA_DIR "/profiles/collection-run.json";

// The JSON text an upload request carries: its "data" member decoded from
// base64 and inflated from raw DEFLATE. Throws when any step fails.
std::string uploadedDocument(const ReceivedRequest& upload);

}  // namespace tavrin::testing_support
