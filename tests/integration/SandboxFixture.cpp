#include "SandboxFixture.hpp"

#include <httplib.h>
#include <tavrin/codec.hpp>

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
  // The certificate names 127.0.0.1 too, so no resolve override is needed.
  httplib::SSLClient client("127.0.0.1", _port);
  client.set_ca_cert_path(_caFile.c_str());
  client.enable_server_certificate_verification(true);
  client.set_connection_timeout(10);
  client.set_read_timeout(30);
  httplib::Headers headers;
  if (!token.empty()) headers.emplace("Authorization", "Bearer " + token);
  const auto result = client.Post(path.c_str(), headers, body.dump(), "application/json");
  if (!result) return {};
  return {result->status, result->body};
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
