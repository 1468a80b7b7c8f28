#include "TestServer.hpp"

#include <chrono>
#include <cstdlib>
#include <stdexcept>

namespace tavrin::testing_support {
namespace {

// The tests talk to loopback only; a proxy from the environment must not get in between.
const bool proxiesBypassed = [] {
  for (const char* name : {"https_proxy", "HTTPS_PROXY", "all_proxy", "ALL_PROXY"}) {
    unsetenv(name);
  }
  return true;
}();

}  // namespace

TestServer::TestServer(const sandbox::TlsFiles& tls, std::size_t requestsPerConnection)
    : _server(tls.certificate.c_str(), tls.privateKey.c_str()) {
  (void)proxiesBypassed;
  if (!_server.is_valid()) throw std::runtime_error("the TLS server cannot be set up");
  // Without it, small answers written in pieces wait for delayed acknowledgements.
  _server.set_tcp_nodelay(true);
  _server.set_keep_alive_max_count(requestsPerConnection);
  _server.Post(".*", [this](const httplib::Request& request, httplib::Response& response,
                            const httplib::ContentReader& reader) {
    handle(request, readBody(reader), response);
  });

  _port = _server.bind_to_any_port("127.0.0.1");
  if (_port <= 0) throw std::runtime_error("the TLS server cannot bind");
  _thread = std::thread([this] {
    _server.listen_after_bind();
    _listenerDone = true;
  });
  // stop() only acts on a server that has entered its accept loop.
  while (!_server.is_running() && !_listenerDone) std::this_thread::yield();
}

TestServer::~TestServer() {
  _server.stop();
  _thread.join();
}

void TestServer::script(const std::string& path, ScriptedAnswer answer) {
  const std::lock_guard lock(_mutex);
  _scripts[path].push_back(std::move(answer));
}

std::vector<ReceivedRequest> TestServer::received() const {
  const std::lock_guard lock(_mutex);
  return _received;
}

std::vector<std::string> TestServer::receivedPaths() const {
  std::vector<std::string> paths;
  for (const auto& request : received()) paths.push_back(request.path);
  return paths;
}

std::string TestServer::readBody(const httplib::ContentReader& reader) const {
  std::string body;
  const auto started = std::chrono::steady_clock::now();
  const std::size_t pace = _pace;
  reader([&](const char* data, std::size_t length) {
    body.append(data, length);
    // Pacing, not synchronisation: the next bytes are taken once the link would have carried these.
    if (pace > 0) {
      std::this_thread::sleep_until(started + std::chrono::microseconds(static_cast<std::int64_t>(
                                                  body.size() * 1000000 / pace)));
    }
    return true;
  });
  return body;
}

void TestServer::handle(const httplib::Request& request, std::string body,
                        httplib::Response& response) {
  const std::lock_guard lock(_mutex);
  _received.push_back({request.path, request.target, request.headers, std::move(body)});
  if (request.path == loginPath) ++_logins;

  ScriptedAnswer answer{404, ""};
  if (auto& script = _scripts[request.path]; !script.empty()) {
    answer = std::move(script.front());
    script.pop_front();
  } else if (request.path == loginPath) {
    answer = {200,
              R"({"token_type":"Bearer","access_token":"token-)" + std::to_string(_logins) + "\"}"};
  } else if (request.path == checkPath || request.path == uploadPath) {
    answer = {200, request.path == checkPath ? "true" : R"("received")"};
  }
  response.status = answer.first;
  response.set_content(answer.second, "application/json");
}

}  // namespace tavrin::testing_support
