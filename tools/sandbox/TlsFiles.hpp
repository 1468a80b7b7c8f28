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

// A certificate authority and a server certificate that it signed, as PEM text.
struct TlsCertificates {
  std::string authority;    // the authority's certificate, which clients trust
  std::string certificate;  // the server's certificate
  std::string privateKey;   // the server's private key
};

// Makes a fresh certificate authority and a server certificate that it signs,
// valid for `hostName` and for 127.0.0.1. Keys are P-256. Throws
// std::runtime_error with OpenSSL's reason when a step fails.
TlsCertificates makeCertificates(const std::string& hostName);

// Writes the three as ca.pem, server.pem and server-key.pem (readable by its
// owner only) into `directory`, made when missing. Throws std::runtime_error.
TlsFiles writeTlsFiles(const TlsCertificates& certificates, const std::filesystem::path& directory);

// Throws std::runtime_error with `what` and OpenSSL's reason for its last
// failure, which is cleared.
[[noreturn]] void throwOpenSslError(const std::string& what);

// The text of a PEM file. Throws std::runtime_error when it cannot be read.
std::string readPem(const std::filesystem::path& path);

// Writes PEM text to a file, readable by its owner only when `secret`.
void writePem(const std::filesystem::path& path, const std::string& text, bool secret = false);

}  // namespace tavrin::sandbox
