#include "TlsTestBed.hpp"

#include <stdlib.h>

#include <stdexcept>
#include <string>

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

}  // namespace tavrin::testing_support
