#pragma once

#include <nlohmann/json.hpp>

#include <string>

namespace tavrin::testing_support {

// The hand-written valid dataset of the test data, one or two rows a section.
nlohmann::json validDataset();

// A JSON text as the client uploads it: raw DEFLATE, then base64.
std::string encodePayload(const std::string& json);

// Raw HTTPS requests to a sandbox on loopback, for what the library's client
// never sends (malformed payloads, bad tokens). Verifies the certificate
// against the sandbox's CA.
class SandboxClient {
 public:
  struct Reply {
    int status = -1;  // -1: the exchange failed in transport
    std::string body;
    // A text member of the document the body holds; "" when there is none.
    std::string member(const char* name) const;
    std::string title() const { return member("title"); }
  };

  SandboxClient(int port, std::string caFile) : _port(port), _caFile(std::move(caFile)) {}

  Reply post(const std::string& path, const nlohmann::json& body, const std::string& token = {});
  // Logs in with the key and returns the token ("" when refused).
  std::string login(const std::string& key = "sandbox-key");
  Reply check(const std::string& token, const std::string& record);
  Reply upload(const std::string& token, const std::string& record, const std::string& data);

 private:
  int _port;
  std::string _caFile;
};

}  // namespace tavrin::testing_support
