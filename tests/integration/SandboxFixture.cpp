#include "SandboxFixture.hpp"

#include <arpa/inet.h>
#include <httplib.h>
#include <openssl/ssl.h>
#include <unistd.h>
#include <tavrin/codec.hpp>

#include <csignal>
#include <fstream>

namespace tavrin::testing_support {

nlohmann::json validDataset() {
  std::ifstream file(TAVRIN_TEST_DATA_DIR "/sandbox/valid-dataset.json");
  return nlohmann::json::parse(file);
}

std::string encodePayload(const std::string& json) {
  return base64Encode(*deflate(std::vector<std::uint8_t>(json.begin(), json.end())));
}

std::string SandboxClient::Reply::member(const char* name) const {
  const auto document = nlohmann::json::parse(body, nullptr, false);
  return document.is_object() ? document.value(name, "") : "";
}

SandboxClient::Reply SandboxClient::post(const std::string& path, const nlohmann::json& body,
                                         const std::string& token) {
  return postText(path, body.dump(), token);
}

SandboxClient::Reply SandboxClient::postText(const std::string& path, const std::string& body,
                                             const std::string& token, bool chunked) {
  // The certificate names 127.0.0.1 too, so no resolve override is needed.
  httplib::SSLClient client("127.0.0.1", _port);
  client.set_ca_cert_path(_caFile.c_str());
  client.enable_server_certificate_verification(true);
  client.set_connection_timeout(10);
  client.set_read_timeout(30);
  httplib::Headers headers;
  if (!token.empty()) headers.emplace("Authorization", "Bearer " + token);
  const auto result =
      chunked ? client.Post(
                    path.c_str(), headers,
                    [&body](std::size_t offset, httplib::DataSink& sink) {
                      if (offset < body.size()) {
                        return sink.write(body.data() + offset,
                                          std::min<std::size_t>(4096, body.size() - offset));
                      }
                      sink.done();
                      return true;
                    },
                    "application/json")
              : client.Post(path.c_str(), headers, body, "application/json");
  if (!result) return {};
  return {result->status, result->body};
}

SlowLoris::SlowLoris(int port, const std::string& caFile, const std::string& address, int count) {
  // A write to a connection the sandbox closed must not end the test.
  std::signal(SIGPIPE, SIG_IGN);
  for (int i = 0; i < count; ++i) {
    const int socket = _sockets.emplace_back(::socket(AF_INET, SOCK_STREAM, 0));
    _clients.emplace_back([=, this] { run(socket, port, caFile, address); });
  }
}

SlowLoris::~SlowLoris() {
  {
    const std::lock_guard lock(_mutex);
    _stopping = true;
  }
  _changed.notify_all();
  // Ends the handshakes of those the sandbox keeps waiting.
  for (const int socket : _sockets) shutdown(socket, SHUT_RDWR);
  for (auto& client : _clients) client.join();
  for (const int socket : _sockets) close(socket);
}

void SlowLoris::awaitServed(int count) {
  std::unique_lock lock(_mutex);
  _changed.wait(lock, [&] { return _served >= count; });
}

void SlowLoris::awaitCut(int count) {
  std::unique_lock lock(_mutex);
  _changed.wait(lock, [&] { return _cut >= count; });
}

void SlowLoris::run(int socket, int port, const std::string& caFile, const std::string& address) {
  sockaddr_in local{AF_INET, 0, {}, {}},
      server{AF_INET, htons(static_cast<std::uint16_t>(port)), {}, {}};
  inet_pton(AF_INET, address.c_str(), &local.sin_addr);
  inet_pton(AF_INET, "127.0.0.1", &server.sin_addr);
  const std::unique_ptr<SSL_CTX, decltype(&SSL_CTX_free)> context(SSL_CTX_new(TLS_client_method()),
                                                                  SSL_CTX_free);
  SSL_CTX_load_verify_locations(context.get(), caFile.c_str(), nullptr);
  SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER, nullptr);
  const std::unique_ptr<SSL, decltype(&SSL_free)> ssl(SSL_new(context.get()), SSL_free);
  SSL_set_fd(ssl.get(), socket);
  // A connection the sandbox keeps waiting ends its handshake only when the
  // sandbox or this object closes it.
  if (bind(socket, reinterpret_cast<sockaddr*>(&local), sizeof local) == 0 &&
      connect(socket, reinterpret_cast<sockaddr*>(&server), sizeof server) == 0 &&
      SSL_connect(ssl.get()) == 1) {
    {
      const std::lock_guard lock(_mutex);
      ++_served;
    }
    _changed.notify_all();
    const std::string head = "POST /v4.0/account/tavrinLogin HTTP/1.1\r\nHost: x\r\nX-Slow: ";
    std::unique_lock lock(_mutex);
    for (std::size_t sent = 0;
         !_changed.wait_for(lock, std::chrono::milliseconds(100), [this] { return _stopping; });
         ++sent) {
      if (SSL_write(ssl.get(), sent < head.size() ? &head[sent] : "a", 1) != 1) {
        ++_cut;
        _changed.notify_all();
        break;
      }
    }
  }
}

std::string SandboxClient::login(const std::string& key) {
  const auto reply = post("/v4.0/account/tavrinLogin", {{"authKey", key}});
  return reply.status == 200 ? reply.member("access_token") : "";
}

SandboxClient::Reply SandboxClient::check(const std::string& token, const std::string& record) {
  return post("/v4.0/datasets/recordNumber/checkuniqueness", {{"recordNumber", record}}, token);
}

SandboxClient::Reply SandboxClient::upload(const std::string& token, const std::string& record,
                                           const std::string& data) {
  return post("/v4.0/datasets/upload", {{"recordNumber", record}, {"data", data}}, token);
}

}  // namespace tavrin::testing_support
