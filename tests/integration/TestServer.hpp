#pragma once

#include "HandshakeCounts.hpp"
#include "TlsFiles.hpp"

#include <httplib.h>

#include <atomic>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace tavrin::testing_support {

// What the server answers to one request: its status and body.
using ScriptedAnswer = std::pair<int, std::string>;

// A request as the server received it.
struct ReceivedRequest {
  std::string path;
  std::string target;  // the request line's target, query included
  httplib::Headers headers;
  std::string body;

  std::string header(const std::string& name) const {  // "(absent)" when missing
    const auto found = headers.find(name);
    return found == headers.end() ? "(absent)" : found->second;
  }
};

// An HTTPS server on an ephemeral port of 127.0.0.1 that plays the scoring
// service; it takes POST requests only. Each path answers from its script, in order; once a script
// is used up the path gives the default answer: the token pair of "token-N" for the N-th login
// request, true for the check and "received" for the upload.
class TestServer {
 public:
  static constexpr const char* loginPath = "/v4.0/account/tavrinLogin";
  static constexpr const char* checkPath = "/v4.0/datasets/recordNumber/checkuniqueness";
  static constexpr const char* uploadPath = "/v4.0/datasets/upload";

  // Shows the certificate of `tls` and closes each connection once it has
  // answered `requestsPerConnection` requests.
  explicit TestServer(const sandbox::TlsFiles& tls, std::size_t requestsPerConnection = 5);
  ~TestServer();
  TestServer(const TestServer&) = delete;
  TestServer& operator=(const TestServer&) = delete;

  void script(const std::string& path, ScriptedAnswer answer);
  // The TLS handshakes of the connections made so far.
  sandbox::HandshakeCounts handshakes() const {
    return sandbox::handshakeCounts(_server.ssl_context());
  }
  // Takes request bodies no faster than `bytesPerSecond`, as a slow link would.
  void paceBodies(std::size_t bytesPerSecond) { _pace = bytesPerSecond; }
  std::vector<ReceivedRequest> received() const;
  std::vector<std::string> receivedPaths() const;

  // The service's base URL and the resolve entry that leads its host name here.
  int port() const { return _port; }
  std::string url() const { return "https://api.tavrin.com:" + std::to_string(_port); }
  std::string resolveEntry() const {
    return "api.tavrin.com:" + std::to_string(_port) + ":127.0.0.1";
  }

 private:
  std::string readBody(const httplib::ContentReader& reader) const;
  void handle(const httplib::Request& request, std::string body, httplib::Response& response);

  httplib::SSLServer _server;
  int _port = -1;
  std::thread _thread;
  std::atomic<bool> _listenerDone{false};
  std::atomic<std::size_t> _pace{0};

  mutable std::mutex _mutex;
  std::map<std::string, std::deque<ScriptedAnswer>> _scripts;
  std::vector<ReceivedRequest> _received;
  int _logins = 0;
};

}  // namespace tavrin::testing_support
