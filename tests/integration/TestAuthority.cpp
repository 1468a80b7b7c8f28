#include "TestAuthority.hpp"

#include <openssl/bio.h>
#include <openssl/pem.h>
#include <openssl/sha.h>
#include <openssl/x509v3.h>

#include <stdexcept>
#include <vector>

namespace tavrin::testing_support {
namespace {

void check(bool ok, const char* what) {
  if (!ok) throw std::runtime_error(std::string("OpenSSL: cannot ") + what);
}

KeyPtr newKey() {
  KeyPtr key(EVP_PKEY_Q_keygen(nullptr, nullptr, "EC", "P-256"), &EVP_PKEY_free);
  check(key != nullptr, "make a key");
  return key;
}

void addExtension(X509* certificate, X509* issuer, int nid, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  const std::unique_ptr<X509_EXTENSION, decltype(&X509_EXTENSION_free)> extension(
      X509V3_EXT_conf_nid(nullptr, &context, nid, value), &X509_EXTENSION_free);
  check(extension && X509_add_ext(certificate, extension.get(), -1) == 1, "add an extension");
}

// A certificate for `subjectKey` named `commonName`; self-signed when issuer is null.
X509Ptr newCertificate(EVP_PKEY* subjectKey, const std::string& commonName, X509* issuer) {
  static long serial = 1;
  X509Ptr certificate(X509_new(), &X509_free);
  X509* x509 = certificate.get();
  check(x509 && X509_set_version(x509, 2) == 1 &&
            ASN1_INTEGER_set(X509_get_serialNumber(x509), serial++) == 1 &&
            X509_gmtime_adj(X509_getm_notBefore(x509), -3600) &&
            X509_gmtime_adj(X509_getm_notAfter(x509), 86400) &&
            X509_set_pubkey(x509, subjectKey) == 1,
        "fill a certificate");
  X509_NAME* name = X509_get_subject_name(x509);
  check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_UTF8,
                                   reinterpret_cast<const unsigned char*>(commonName.c_str()), -1,
                                   -1, 0) == 1,
        "name a certificate");
  X509* signer = issuer != nullptr ? issuer : x509;
  check(X509_set_issuer_name(x509, X509_get_subject_name(signer)) == 1, "set the issuer");
  addExtension(x509, signer, NID_subject_key_identifier, "hash");
  addExtension(x509, signer, NID_authority_key_identifier, "keyid:always");
  return certificate;
}

void sign(X509* certificate, EVP_PKEY* key) {
  check(X509_sign(certificate, key, EVP_sha256()) > 0, "sign a certificate");
}

}  // namespace

std::string IssuedCertificate::publicKeyPin() const {
  unsigned char* der = nullptr;
  const int length = i2d_PUBKEY(key.get(), &der);
  check(length > 0, "encode a public key");
  const std::unique_ptr<unsigned char, void (*)(unsigned char*)> owned(
      der, [](unsigned char* bytes) { OPENSSL_free(bytes); });
  unsigned char digest[SHA256_DIGEST_LENGTH];
  SHA256(der, static_cast<std::size_t>(length), digest);
  std::vector<unsigned char> text(4 * ((SHA256_DIGEST_LENGTH + 2) / 3) + 1);
  const int written = EVP_EncodeBlock(text.data(), digest, SHA256_DIGEST_LENGTH);
  return "sha256//" + std::string(text.begin(), text.begin() + written);
}

TestAuthority::TestAuthority(const std::string& commonName)
    : _key(newKey()), _certificate(newCertificate(_key.get(), commonName, nullptr)) {
  addExtension(_certificate.get(), _certificate.get(), NID_basic_constraints, "critical,CA:TRUE");
  addExtension(_certificate.get(), _certificate.get(), NID_key_usage,
               "critical,keyCertSign,cRLSign");
  sign(_certificate.get(), _key.get());
}

IssuedCertificate TestAuthority::issue(const std::string& dnsName) const {
  KeyPtr key = newKey();
  X509Ptr certificate = newCertificate(key.get(), dnsName, _certificate.get());
  addExtension(certificate.get(), _certificate.get(), NID_basic_constraints, "CA:FALSE");
  addExtension(certificate.get(), _certificate.get(), NID_ext_key_usage, "serverAuth");
  addExtension(certificate.get(), _certificate.get(), NID_subject_alt_name,
               ("DNS:" + dnsName).c_str());
  sign(certificate.get(), _key.get());
  return {std::move(certificate), std::move(key)};
}

void TestAuthority::writePem(const std::filesystem::path& path) const {
  const std::unique_ptr<BIO, decltype(&BIO_free)> file(BIO_new_file(path.c_str(), "w"), &BIO_free);
  check(file && PEM_write_bio_X509(file.get(), _certificate.get()) == 1, "write a PEM file");
}

}  // namespace tavrin::testing_support
