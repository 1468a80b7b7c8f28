#include "TlsFiles.hpp"

#include <fcntl.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rand.h>
#include <openssl/x509v3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>
#include <utility>
#include <vector>

namespace tavrin::sandbox {

namespace {

using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Certificate = std::unique_ptr<X509, decltype(&X509_free)>;
using Bio = std::unique_ptr<BIO, decltype(&BIO_free)>;

// A certificate lives long enough for any session, and starts an hour early
// so that a client whose clock runs slightly behind still accepts it.
constexpr long validFrom = -60L * 60;
constexpr long validFor = 30L * 24 * 60 * 60;

[[noreturn]] void fail(const std::string& step) {
  throwOpenSslError("cannot make the sandbox's TLS files: " + step);
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

// The PEM text that `write` puts into a memory buffer.
template <typename Write>
std::string pemText(Write write, const char* what) {
  const Bio buffer(BIO_new(BIO_s_mem()), BIO_free);
  if (!buffer) fail(what);
  check(write(buffer.get()), what);
  char* data = nullptr;
  const long size = BIO_get_mem_data(buffer.get(), &data);
  return std::string(data, static_cast<std::size_t>(size));
}

std::string certificatePem(X509* certificate) {
  return pemText([certificate](BIO* out) { return PEM_write_bio_X509(out, certificate); },
                 "writing a certificate");
}

}  // namespace

TlsCertificates makeCertificates(const std::string& hostName) {
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
  return {certificatePem(authority.get()), certificatePem(server.get()),
          pemText(
              [&serverKey](BIO* out) {
                return PEM_write_bio_PrivateKey(out, serverKey.get(), nullptr, nullptr, 0, nullptr,
                                                nullptr);
              },
              "writing the private key")};
}

void throwOpenSslError(const std::string& what) {
  char reason[256] = "unknown reason";
  if (const unsigned long code = ERR_get_error(); code != 0) {
    ERR_error_string_n(code, reason, sizeof reason);
  }
  ERR_clear_error();
  throw std::runtime_error(what + ": " + reason);
}

std::string readPem(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + path.string());
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

void writePem(const std::filesystem::path& path, const std::string& text, bool secret) {
  // A secret file is made private before anything is written into it.
  const mode_t mode = secret ? S_IRUSR | S_IWUSR : S_IRUSR | S_IWUSR | S_IRGRP | S_IROTH;
  const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, mode);
  bool written = file >= 0 && fchmod(file, mode) == 0;
  for (std::size_t at = 0; written && at < text.size();) {
    const ssize_t size = ::write(file, text.data() + at, text.size() - at);
    written = size > 0;
    at += written ? static_cast<std::size_t>(size) : 0;
  }
  if (file >= 0 && close(file) != 0) written = false;
  if (!written) throw std::runtime_error("cannot write " + path.string());
}

TlsFiles writeTlsFiles(const TlsCertificates& certificates,
                       const std::filesystem::path& directory) {
  std::filesystem::create_directories(directory);
  TlsFiles files{directory / "server.pem", directory / "server-key.pem", directory / "ca.pem"};
  writePem(files.authority, certificates.authority);
  writePem(files.certificate, certificates.certificate);
  writePem(files.privateKey, certificates.privateKey, true);
  return files;
}

}  // namespace tavrin::sandbox
