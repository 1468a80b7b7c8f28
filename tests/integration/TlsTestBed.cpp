#include "TlsTestBed.hpp"

#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/sha.h>
#include <zlib.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <stdexcept>
#include <vector>

namespace tavrin::testing_support {

TlsTestBed::TlsTestBed(std::size_t requestsPerConnection)
    : tls(sandbox::writeTlsFiles(sandbox::makeCertificates("api.tavrin.com"), directory.path())),
      server(tls, requestsPerConnection) {}

ServiceOptions TlsTestBed::options(std::chrono::milliseconds timeout) const {
  ServiceOptions options;
  options.caFile = tls.authority.string();
  options.resolve = {server.resolveEntry()};
  options.requestTimeout = timeout;
  return options;
}

std::string publicKeyPin(const std::filesystem::path& privateKeyFile) {
  BIO* file = BIO_new_file(privateKeyFile.c_str(), "r");
  EVP_PKEY* key = file ? PEM_read_bio_PrivateKey(file, nullptr, nullptr, nullptr) : nullptr;
  unsigned char* der = nullptr;
  const int length = key ? i2d_PUBKEY(key, &der) : -1;
  EVP_PKEY_free(key);
  BIO_free(file);
  if (length <= 0) throw std::runtime_error("cannot read the key " + privateKeyFile.string());
  unsigned char digest[SHA256_DIGEST_LENGTH];
  SHA256(der, static_cast<std::size_t>(length), digest);
  OPENSSL_free(der);
  unsigned char text[4 * ((SHA256_DIGEST_LENGTH + 2) / 3) + 1];
  const int written = EVP_EncodeBlock(text, digest, SHA256_DIGEST_LENGTH);
  return "sha256//" + std::string(text, text + written);
}

// Decoded with OpenSSL and zlib rather than the library's own codec, so that a
// fault there cannot cancel itself out.
std::string uploadedDocument(const ReceivedRequest& upload) {
  const auto text = nlohmann::json::parse(upload.body).at("data").get<std::string>();
  std::vector<unsigned char> compressed(text.size() / 4 * 3);
  const int length =
      EVP_DecodeBlock(compressed.data(), reinterpret_cast<const unsigned char*>(text.data()),
                      static_cast<int>(text.size()));
  if (text.size() % 4 != 0 || length < 0) throw std::runtime_error("the data is not base64");
  // EVP_DecodeBlock counts the padding as zero bytes.
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  compressed.resize(static_cast<std::size_t>(length) - padding);

  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) throw std::runtime_error("zlib cannot start");
  const std::unique_ptr<z_stream, int (*)(z_streamp)> end(&stream, &inflateEnd);
  stream.next_in = compressed.data();
  stream.avail_in = static_cast<uInt>(compressed.size());
  std::string json;
  for (int status = Z_OK; status != Z_STREAM_END;) {
    if (status != Z_OK) throw std::runtime_error("the data is not DEFLATE");
    char chunk[16384];
    stream.next_out = reinterpret_cast<Bytef*>(chunk);
    stream.avail_out = sizeof chunk;
    status = inflate(&stream, Z_NO_FLUSH);
    json.append(chunk, sizeof chunk - stream.avail_out);
  }
  if (stream.avail_in != 0) throw std::runtime_error("the data holds more than one DEFLATE stream");
  return json;
}

}  // namespace tavrin::testing_support
