#include "TlsTestBed.hpp"

#include <openssl/evp.h>
#include <stdlib.h>
#include <zlib.h>
#include <nlohmann/json.hpp>

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavrin::testing_support {

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "tavrin-test-XXXXXX").string();
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("cannot make " + pattern);
  _path = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(_path, ignored);
}

TlsTestBed::TlsTestBed()
    : caFile(directory.path() / "ca.pem"),
      authority("Tavrin Test CA"),
      serverCertificate(authority.issue("api.tavrin.com")),
      server(serverCertificate.certificate.get(), serverCertificate.key.get()) {
  authority.writePem(caFile);
}

ServiceOptions TlsTestBed::options(std::chrono::milliseconds timeout) const {
  ServiceOptions options;
  options.caFile = caFile.string();
  options.resolve = {server.resolveEntry()};
  options.requestTimeout = timeout;
  return options;
}

namespace {

// Decoded with OpenSSL and zlib rather than the library's own codec, so that a
// fault there cannot cancel itself out.
std::vector<unsigned char> decodeBase64(const std::string& text) {
  if (text.size() % 4 != 0) throw std::runtime_error("the uploaded data is not base64");
  std::vector<unsigned char> bytes(text.size() / 4 * 3);
  const int length =
      EVP_DecodeBlock(bytes.data(), reinterpret_cast<const unsigned char*>(text.data()),
                      static_cast<int>(text.size()));
  if (length < 0) throw std::runtime_error("the uploaded data is not base64");
  // EVP_DecodeBlock counts the padding as zero bytes.
  const std::size_t padding = text.ends_with("==") ? 2 : text.ends_with("=") ? 1 : 0;
  bytes.resize(static_cast<std::size_t>(length) - padding);
  return bytes;
}

std::string inflateRaw(std::vector<unsigned char>& compressed) {
  z_stream stream{};
  if (inflateInit2(&stream, -MAX_WBITS) != Z_OK) throw std::runtime_error("zlib cannot start");
  const std::unique_ptr<z_stream, int (*)(z_streamp)> end(&stream, &inflateEnd);
  stream.next_in = compressed.data();
  stream.avail_in = static_cast<uInt>(compressed.size());
  std::string text;
  int status = Z_OK;
  while (status == Z_OK) {
    char chunk[16384];
    stream.next_out = reinterpret_cast<Bytef*>(chunk);
    stream.avail_out = sizeof chunk;
    status = inflate(&stream, Z_FINISH);
    text.append(chunk, sizeof chunk - stream.avail_out);
    if (status == Z_BUF_ERROR && stream.avail_out == 0) status = Z_OK;
  }
  if (status != Z_STREAM_END || stream.avail_in != 0) {
    throw std::runtime_error("the uploaded data is not one raw DEFLATE stream");
  }
  return text;
}

}  // namespace

std::string uploadedDocument(const ReceivedRequest& upload) {
  auto compressed = decodeBase64(nlohmann::json::parse(upload.body).at("data").get<std::string>());
  return inflateRaw(compressed);
}

}  // namespace tavrin::testing_support
