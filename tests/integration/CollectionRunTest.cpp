#include "TlsTestBed.hpp"

#include "../support/ExpectTavrinError.hpp"
#include "service/TavrinServiceCore.hpp"

#include <tavrin/service.hpp>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tavrin {
namespace sandbox {
void PrintTo(const HandshakeCounts& counts, std::ostream* out) {
  *out << counts.connections << " connections, " << counts.full << " full handshakes, "
       << counts.resumed << " resumed";
}
}  // namespace sandbox
namespace {

using namespace testing_support;
using Paths = std::vector<std::string>;

const std::string login = TestServer::loginPath;
const std::string check = TestServer::checkPath;
const std::string upload = TestServer::uploadPath;

class CollectionRun : public testing::Test {
 protected:
  ServiceOptions options() const {
    ServiceOptions chosen = bed.options();
    chosen.platform = platform::loadDeviceProfile(collectionProfile);
    return chosen;
  }

  TlsTestBed bed;
};

TEST_F(CollectionRun, UploadsExactlyTheDocumentItBuilt) {
  TavrinServiceCore core(bed.server.url(), "key-1", options());
  std::string built;
  EXPECT_EQ(core.collectData("r-1", [&](std::string_view json) { built = json; }), "received");

  const auto requests = bed.server.received();
  ASSERT_EQ(bed.server.receivedPaths(), (Paths{login, check, upload}));
  EXPECT_EQ(nlohmann::json::parse(requests[2].body).at("recordNumber"), "r-1");
  EXPECT_EQ(uploadedDocument(requests[2]), built);
  const auto document = nlohmann::json::parse(built);
  ASSERT_TRUE(document.is_array() && !document.empty());
  EXPECT_TRUE(document[0].contains("GeneralInfo"));
}

TEST_F(CollectionRun, ReturnsTheServersStringLogsInOnceAndOutlivesAFailedRun) {
  TavrinService tavrin(bed.server.url(), "key-1", options());
  bed.server.script(check, {503, "maintenance"});
  expectTavrinError([&] { tavrin.collectData("r-1"); }, ErrorType::serverRejected, std::nullopt);
  bed.server.script(upload, {200, R"("score \"7\" é")"});
  EXPECT_EQ(tavrin.collectData("r-1"), "score \"7\" é");
  EXPECT_EQ(tavrin.collectData("r-2"), "received");
  EXPECT_EQ(bed.server.receivedPaths(), (Paths{login, check, check, upload, check, upload}));
}

TEST_F(CollectionRun, TakenRecordNumberStopsTheRunBeforeExtraction) {
  TavrinServiceCore core(bed.server.url(), "key-1", options());
  bed.server.script(check, {200, "false"});
  bool extracted = false;
  expectTavrinError([&] { core.collectData("r-1", [&](std::string_view) { extracted = true; }); },
                    ErrorType::serverRejected,
                    "record_number_not_unique. Record number is not unique");
  EXPECT_FALSE(extracted);
  EXPECT_EQ(bed.server.receivedPaths(), (Paths{login, check}));
}

TEST_F(CollectionRun, BareUnauthorizedUploadIsRepeatedOnceAfterANewLogin) {
  TavrinService tavrin(bed.server.url(), "key-1", options());
  bed.server.script(upload, {401, ""});
  EXPECT_EQ(tavrin.collectData("r-1"), "received");

  const auto requests = bed.server.received();
  ASSERT_EQ(bed.server.receivedPaths(), (Paths{login, check, upload, login, upload}));
  EXPECT_EQ(requests[3].body, R"({"authKey":"key-1"})");
  EXPECT_EQ(requests[2].header("Authorization"), "Bearer token-1");
  EXPECT_EQ(requests[4].header("Authorization"), "Bearer token-2");
  EXPECT_EQ(requests[4].body, requests[2].body);
}

TEST(CollectionRunConnections, OneConnectionPerServiceObjectWithItsTlsSessionResumed) {
  using Handshakes = sandbox::HandshakeCounts;  // connections, full, resumed
  struct Case {
    std::size_t requestsPerConnection;
    Handshakes afterFirstRun, afterSecondRun;
  };
  for (const auto& [requestsPerConnection, afterFirstRun, afterSecondRun] : {
           // The login, the first run and the second run's check and upload on one connection.
           Case{5, {1, 1, 0}, {1, 1, 0}},
           // The server ends the connection after the first run; the second opens
           // another and resumes the session of the first.
           Case{3, {1, 1, 0}, {2, 1, 1}},
       }) {
    SCOPED_TRACE(requestsPerConnection);
    TlsTestBed bed(requestsPerConnection);
    ServiceOptions options = bed.options();
    options.platform = platform::loadDeviceProfile(collectionProfile);
    TavrinServiceCore core(bed.server.url(), "key-1", options);
    EXPECT_EQ(core.collectData("r-1"), "received");
    EXPECT_EQ(bed.server.handshakes(), afterFirstRun);
    EXPECT_EQ(core.collectData("r-2"), "received");
    EXPECT_EQ(bed.server.handshakes(), afterSecondRun);
  }
}

TEST_F(CollectionRun, RejectedUrlThrowsBeforeAnyTraffic) {
  const std::string service = bed.server.url();
  // The check refuses the first two; the others it accepts, as the service URL
  // ends them, but they lead elsewhere (kept on loopback here).
  auto toHere = options();
  toHere.resolve.push_back("evil.example:443:127.0.0.1");
  for (const std::string& url :
       {service + "/", "http" + service.substr(5), "https://evil.example/?" + service,
        "https://evil.example?" + service, "https://evil.example/" + service,
        "https://evil.example#" + service, "https://evil.example@" + service,
        "https://user@evil.example/?" + service, "https://api.tavrin.com:1/?" + service}) {
    SCOPED_TRACE(url);
    expectTavrinError([&] { TavrinService(url, "key-1", toHere); }, ErrorType::invalidInput,
                      "Url is incorrect");
  }
  EXPECT_TRUE(bed.server.received().empty());
}

}  // namespace
}  // namespace tavrin
