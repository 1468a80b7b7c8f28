#pragma once

#include <filesystem>
#include <string>

namespace tavrin::sandbox {

// The PEM files a TLS server needs, and the authority clients must trust.
struct TlsFiles {
  std::filesystem::path certificate;  // the server's certificate
  std::filesystem::path privateKey;   // its private key
  std::filesystem::path authority;    // the certificate of the authority that signed it
};

// Makes a fresh certificate authority and a server certificate that it signs,
// valid for `hostName` and for 127.0.0.1, and writes the three files
// (ca.pem, server.pem, server-key.pem) into `directory`. Keys are P-256.
// Throws std::runtime_error with OpenSSL's reason when a step fails.
TlsFiles makeTlsFiles(const std::filesystem::path& directory, const std::string& hostName);

}  // namespace tavrin::sandbox
