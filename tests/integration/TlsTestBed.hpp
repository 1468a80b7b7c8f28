#pragma once

#include "TemporaryDirectory.hpp"
#include "TestServer.hpp"
#include "TlsFiles.hpp"

#include <tavrin/options.hpp>

#include <chrono>
#include <filesystem>
#include <string>

namespace tavrin::testing_support {

// Everything a test needs to reach a scoring service over real TLS: a CA and a
// certificate for api.tavrin.com made now in a temporary directory, and a test
// server that shows that certificate.
class TlsTestBed {
 public:
  // The server closes each connection after `requestsPerConnection` requests.
  explicit TlsTestBed(std::size_t requestsPerConnection = 5);

  // Trusts the CA, leads api.tavrin.com to the server and bounds every request.
  ServiceOptions options(std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;

  TemporaryDirectory directory;
  sandbox::TlsFiles tls;
  TestServer server;
};

// The public key of a PEM private key file in libcurl's pinning form:
// "sha256//" + base64 of the SHA-256 of its DER.
std::string publicKeyPin(const std::filesystem::path& privateKeyFile);

// The device profile the collection runs of these tests read.
inline const std::string collectionProfile = TAVRIN_TEST_DATA_DIR "/profiles/collection-run.json";

// The JSON text an upload request carries: its "data" member decoded from
// base64 and inflated from raw DEFLATE. Throws when any step fails.
std::string uploadedDocument(const ReceivedRequest& upload);

}  // namespace tavrin::testing_support
