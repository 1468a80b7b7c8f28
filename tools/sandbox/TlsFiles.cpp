#include "TlsFiles.hpp"

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tavrin::sandbox {

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using File = std::unique_ptr<BIO, decltype(&BIO_free)>;

// A certificate lives long enough for any session, and starts an hour early
// so that a client whose clock runs slightly behind still accepts it.
constexpr long validFrom = -60L * 60;
constexpr long validFor = 30L * 24 * 60 * 60;

[[noreturn]] void fail(const std::string& step) {
  char reason[256] = "unknown reason";
  if (const unsigned long code = ERR_get_error(); code != 0) {
    ERR_error_string_n(code, reason, sizeof reason);
  }
  ERR_clear_error();
  throw std::runtime_error("cannot make the sandbox's TLS files: " + step + ": " + reason);
}

void check(int status, const char* step) {
  if (status <= 0) fail(step);
}

Key makeKey() {
  Key key(EVP_EC_gen("P-256"), EVP_PKEY_free);
  if (!key) fail("key generation");
  return key;
}

void addExtension(X509* certificate, X509* issuer, int nid, const char* value) {
  X509V3_CTX context;
  X509V3_set_ctx_nodb(&context);
  X509V3_set_ctx(&context, issuer, certificate, nullptr, nullptr, 0);
  X509_EXTENSION* extension = X509V3_EXT_conf_nid(nullptr, &context, nid, value);
  if (extension == nullptr) fail(OBJ_nid2sn(nid));
  const int status = X509_add_ext(certificate, extension, -1);
  X509_EXTENSION_free(extension);
  check(status, "adding an extension");
}

// A certificate for `key` named `commonName`, signed by `issuerKey`; the
// issuer is the certificate itself when `issuer` is null.
Certificate makeCertificate(const std::string& commonName, EVP_PKEY* key, X509* issuer,
                            EVP_PKEY* issuerKey,
                            const std::vector<std::pair<int, std::string>>& extensions) {
  Certificate certificate(X509_new(), X509_free);
  if (!certificate) fail("certificate allocation");
  X509* cert = certificate.get();
  check(X509_set_version(cert, X509_VERSION_3), "version");
  std::uint64_t serial = 0;
  check(RAND_bytes(reinterpret_cast<unsigned char*>(&serial), sizeof serial), "serial number");
  check(ASN1_INTEGER_set_uint64(X509_get_serialNumber(cert), serial >> 1), "serial number");
  if (X509_gmtime_adj(X509_getm_notBefore(cert), validFrom) == nullptr ||
      X509_gmtime_adj(X509_getm_notAfter(cert), validFor) == nullptr) {
    fail("validity");
  }
  check(X509_set_pubkey(cert, key), "public key");
  X509_NAME* name = X509_get_subject_name(cert);
  check(X509_NAME_add_entry_by_txt(name, "O", MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char*>("tavrin sandbox"), -1, -1,
                                   0),
        "subject");
  check(X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC,
                                   reinterpret_cast<const unsigned char*>(commonName.c_str()), -1,
                                   -1, 0),
        "subject");
  check(X509_set_issuer_name(cert, issuer ? X509_get_subject_name(issuer) : name), "issuer");
  for (const auto& [nid, value] : extensions) {
    addExtension(cert, issuer ? issuer : cert, nid, value.c_str());
  }
  check(X509_sign(cert, issuerKey, EVP_sha256()), "signature");
  return certificate;
}

File openForWriting(const std::filesystem::path& path) {
  File file(BIO_new_file(path.c_str(), "w"), BIO_free);
  if (!file) fail("writing " + path.string());
  return file;
}

void writeCertificate(const std::filesystem::path& path, X509* certificate) {
  check(PEM_write_bio_X509(openForWriting(path).get(), certificate), "writing a certificate");
}

}  // namespace

TlsFiles makeTlsFiles(const std::filesystem::path& directory, const std::string& hostName) {
  const Key authorityKey = makeKey();
  const Certificate authority =
      makeCertificate("tavrin sandbox authority", authorityKey.get(), nullptr, authorityKey.get(),
                      {{NID_basic_constraints, "critical,CA:TRUE,pathlen:0"},
                       {NID_key_usage, "critical,keyCertSign,cRLSign"},
                       {NID_subject_key_identifier, "hash"}});
  const Key serverKey = makeKey();
  const Certificate server =
      makeCertificate(hostName, serverKey.get(), authority.get(), authorityKey.get(),
                      {{NID_basic_constraints, "critical,CA:FALSE"},
                       {NID_key_usage, "critical,digitalSignature"},
                       {NID_ext_key_usage, "serverAuth"},
                       {NID_subject_key_identifier, "hash"},
                       {NID_authority_key_identifier, "keyid:always"},
                       {NID_subject_alt_name, "DNS:" + hostName + ",IP:127.0.0.1"}});

  std::filesystem::create_directories(directory);
  TlsFiles files{directory / "server.pem", directory / "server-key.pem", directory / "ca.pem"};
  writeCertificate(files.authority, authority.get());
  writeCertificate(files.certificate, server.get());
  {
    const File key = openForWriting(files.privateKey);
    std::filesystem::permissions(
        files.privateKey, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
    check(
        PEM_write_bio_PrivateKey(key.get(), serverKey.get(), nullptr, nullptr, 0, nullptr, nullptr),
        "writing the private key");
  }
  return files;
}

}  // namespace tavrin::sandbox
