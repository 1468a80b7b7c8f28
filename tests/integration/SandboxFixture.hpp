#pragma once

#include <nlohmann/json.hpp>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

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
  // Posts the text as it is; in chunks of the transfer encoding when `chunked`.
  Reply postText(const std::string& path, const std::string& body, const std::string& token = {},
                 bool chunked = false);
  // Logs in with the key and returns the token ("" when refused).
  std::string login(const std::string& key = "sandbox-key");
  Reply check(const std::string& token, const std::string& record);
  Reply upload(const std::string& token, const std::string& record, const std::string& data);

 private:
  int _port;
  std::string _caFile;
};

// Slow-loris clients: each connects from `address` (another loopback address
// than the normal clients' 127.0.0.1), completes the TLS handshake once the
// sandbox takes it on, and then sends a request's headers a byte at a time,
// never finishing them, until destroyed or cut off.
class SlowLoris {
 public:
  SlowLoris(int port, const std::string& caFile, const std::string& address, int count);
  ~SlowLoris();
  // Waits until this many of them are past the handshake.
  void awaitServed(int count);
  int served() const { return _served; }
  // Waits until the sandbox has cut off this many of them.
  void awaitCut(int count);

 private:
  void run(int socket, int port, const std::string& caFile, const std::string& address);

  std::vector<int> _sockets;
  std::atomic<int> _served{0};
  int _cut = 0;
  bool _stopping = false;
  std::mutex _mutex;
  std::condition_variable _changed;
  std::vector<std::thread> _clients;
};

}  // namespace tavrin::testing_support
