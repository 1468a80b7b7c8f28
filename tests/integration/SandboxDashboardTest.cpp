// The dashboard's API over the sandbox's own HTTPS port, beside the clients.
#include "SandboxFixture.hpp"
#include "SandboxServer.hpp"

#include <tavrin/service.hpp>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <httplib.h>

#include <future>

namespace tavrin::testing_support {
namespace {

using namespace std::chrono_literals;
using nlohmann::json;

// A browser's view of the sandbox: GET requests that trust only its CA.
struct Browser {
  explicit Browser(const sandbox::SandboxServer& server) : client("127.0.0.1", server.port()) {
    client.set_ca_cert_path(server.tlsFiles().authority.c_str());
    client.enable_server_certificate_verification(true);
    client.set_read_timeout(30s);
  }
  std::pair<int, std::string> get(const std::string& path) {
    const auto result = client.Get(path);
    return result ? std::pair(result->status, result->body) : std::pair(-1, std::string());
  }
  json getJson(const std::string& path) { return json::parse(get(path).second); }
  httplib::SSLClient client;
};

// A page polling for news holds one of its address's connections, yet a
// collection from that address goes through with only one more allowed, and
// its first exchange ends the poll.
TEST(SandboxDashboard, APollingPageLeavesCollectionsTheirConnections) {
  sandbox::SandboxOptions options;
  options.limits.maxConnectionsPerAddress = 2;
  sandbox::SandboxServer server(std::move(options));
  server.start();
  Browser page(server);
  auto poll = std::async(std::launch::async,
                         [&] { return page.getJson("/api/exchanges?after=0&wait=25"); });

  ServiceOptions service;
  // The request timeout is far shorter than the poll's wait: a connection kept
  // from the collection until the poll gave up would fail it.
  service
      .setPlatform(
          platform::loadDeviceProfile(TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json"))
      .setCaFile(server.tlsFiles().authority.string())
      .setResolve({server.resolve()})
      .setRequestTimeout(5s);
  const std::string answer =
      TavrinService(server.url(), "sandbox-key", service).collectData("live-1");
  EXPECT_EQ(answer, "accepted record \"live-1\" as upload 1");
  const json news = poll.get();
  ASSERT_FALSE(news["exchanges"].empty());
  EXPECT_EQ(news["exchanges"][0]["exchange"], "login");
  EXPECT_EQ(news["exchanges"][0]["status"], 200);

  // The same browser reads what came, and downloads the payload as received.
  Browser reader(server);
  const json uploads = reader.getJson("/api/uploads")["uploads"];
  ASSERT_EQ(uploads.size(), 1U);
  EXPECT_EQ(uploads[0]["recordNumber"], "live-1");
  EXPECT_EQ(reader.get("/api/uploads/1/payload").second, server.store().find("live-1")->payload);
  const json dataset = json::parse(reader.get("/api/uploads/1/dataset").second);
  EXPECT_EQ(reader.getJson("/api/uploads/1/sections/3?limit=2")["rows"][1],
            dataset[2]["ContactGroups"][1]);
  EXPECT_EQ(reader.getJson("/api/exchanges?after=2")["exchanges"][0]["exchange"], "upload");
}

TEST(SandboxDashboard, RefusesWhatItCannotShowWithADocument) {
  sandbox::SandboxServer server(sandbox::SandboxOptions{});
  server.start();
  SandboxClient client(server.port(), server.tlsFiles().authority);
  const std::string token = client.login();
  // Stored, but it never inflates to a dataset.
  ASSERT_EQ(client.upload(token, "broken", "AAAA").status, 400);
  Browser browser(server);
  struct Case {
    std::string path;
    int status;
    std::string title;
  };
  for (const Case& c : std::vector<Case>{
           {"/api/uploads/2", 404, "upload_not_found"},
           {"/api/uploads/1/sections/1", 404, "dataset_unavailable"},
           {"/api/exchanges?after=x", 400, "request_malformed"},
           {"/api/nothing", 404, "request_not_found"},
       }) {
    const auto [status, body] = browser.get(c.path);
    EXPECT_EQ(status, c.status) << c.path;
    EXPECT_EQ(json::parse(body).value("title", ""), c.title) << c.path;
  }
  EXPECT_EQ(browser.getJson("/api/uploads/1")["problem"]["stage"], "payload");
  EXPECT_THAT(browser.get("/").second, testing::HasSubstr("/dashboard.js"));

  sandbox::SandboxOptions withoutUi;
  withoutUi.dashboard = false;
  sandbox::SandboxServer plain(std::move(withoutUi));
  plain.start();
  EXPECT_EQ(Browser(plain).get("/").first, 404);
  EXPECT_EQ(Browser(plain).get("/api/uploads").first, 404);
}

}  // namespace
}  // namespace tavrin::testing_support
