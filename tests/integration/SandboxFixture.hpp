#pragma once

#include <nlohmann/json.hpp>

#include <optional>
#include <string>

namespace tavrin::testing {

// The hand-written valid dataset of the test data, one or two rows a section.
nlohmann::json validDataset();

// A JSON text as the client uploads it: raw DEFLATE, then base64.
std::string encodePayload(const std::string& json);

// How the sandbox's ready line says to reach it.
struct SandboxEndpoint {
  std::string url;
  std::string resolve;
  std::string caFile;
  int port = 0;

  // Reads "sandbox ready: --url URL --resolve HOST:PORT:ADDRESS --ca-file PEM".
  static std::optional<SandboxEndpoint> fromReadyLine(const std::string& line);
};

// Raw HTTPS requests to a sandbox on loopback, for what the library's client
// never sends (malformed payloads, bad tokens). Verifies the certificate
// against the sandbox's CA.
class SandboxClient {
 public:
  struct Reply {
    int status = -1;  // -1: the exchange failed in transport
    std::string body;
    // The document's "title" and "detail", when the body is one.
    std::string title() const;
    std::string detail() const;
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

}  // namespace tavrin::testing
