#pragma once

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <filesystem>
#include <memory>
#include <string>

namespace tavrin::testing_support {

using X509Ptr = std::unique_ptr<X509, decltype(&X509_free)>;
using KeyPtr = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;

// A server certificate and its private key.
struct IssuedCertificate {
  X509Ptr certificate;
  KeyPtr key;

  // The key in libcurl's pinning form: "sha256//" + base64 of the SHA-256 of its DER.
  std::string publicKeyPin() const;
};

// A certificate authority made at test time: a fresh P-256 key and a
// self-signed CA certificate valid from an hour ago for a day.
class TestAuthority {
 public:
  explicit TestAuthority(const std::string& commonName);

  // A server certificate for `dnsName` (its subject alternative name), signed by this CA.
  IssuedCertificate issue(const std::string& dnsName) const;
  // Writes the CA certificate as PEM, for a client to trust.
  void writePem(const std::filesystem::path& path) const;

 private:
  KeyPtr _key;
  X509Ptr _certificate;
};

}  // namespace tavrin::testing_support
