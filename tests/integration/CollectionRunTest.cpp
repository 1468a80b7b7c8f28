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

// Keeps the dataset a run hands its observer.
class DatasetCatcher : public CollectionObserver {
 public:
  void datasetReady(std::string_view json) override { dataset = json; }
  std::string dataset;
};

class CollectionRun : public testing::Test {
 protected:
  ServiceOptions options() const {
    ServiceOptions chosen = bed.options();
    chosen.setPlatform(platform::loadDeviceProfile(collectionProfile)).setObserver(caught);
    return chosen;
  }

  TlsTestBed bed;
  std::shared_ptr<DatasetCatcher> caught = std::make_shared<DatasetCatcher>();
};

TEST_F(CollectionRun, UploadsExactlyTheDocumentItBuiltAndItsPreview) {
  TavrinService tavrin(bed.server.url(), "key-1", options().setUserAgent("Host/2.1"));
  const std::string preview = tavrin.previewDataset();
  EXPECT_EQ(bed.server.receivedPaths(), (Paths{login}));
  EXPECT_EQ(tavrin.collectData("r-1"), "received");

  const auto requests = bed.server.received();
  ASSERT_EQ(bed.server.receivedPaths(), (Paths{login, check, upload}));
  EXPECT_EQ(nlohmann::json::parse(requests[2].body).at("recordNumber"), "r-1");
  EXPECT_EQ(uploadedDocument(requests[2]), caught->dataset);
  // The profile fixes every draw, so the previews are the upload but for the
  // header's start and end times, which the profile's clock moves on.
  const auto withoutTimes = [](const std::string& dataset) {
    auto document = nlohmann::json::parse(dataset);
    auto& header = document.at(0).at("GeneralInfo");
    header.erase(header.begin() + 2, header.begin() + 4);
    return document;
  };
  EXPECT_EQ(withoutTimes(preview), withoutTimes(caught->dataset));
  EXPECT_EQ(withoutTimes(previewDataset(options())), withoutTimes(caught->dataset));
  for (const auto& request : requests) {
    EXPECT_EQ(request.header("User-Agent"), "Host/2.1 tavrinsdk/1.0.0 (iOS 14.2; iPhone12,1)");
  }
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
  TavrinService tavrin(bed.server.url(), "key-1", options());
  bed.server.script(check, {200, "false"});
  expectTavrinError([&] { tavrin.collectData("r-1"); }, ErrorType::serverRejected,
                    "record_number_not_unique. Record number is not unique");
  EXPECT_EQ(caught->dataset, "");
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
    options.setPlatform(platform::loadDeviceProfile(collectionProfile));
    TavrinServiceCore core(bed.server.url(), "key-1", options);
    EXPECT_EQ(core.collectData("r-1"), "received");
    EXPECT_EQ(bed.server.handshakes(), afterFirstRun);
    EXPECT_EQ(core.collectData("r-2"), "received");
    EXPECT_EQ(bed.server.handshakes(), afterSecondRun);
  }
}

TEST_F(CollectionRun, RejectedUrlOrOptionThrowsBeforeAnyTraffic) {
  using namespace std::chrono_literals;
  const std::string service = bed.server.url();
  // The check refuses the first two URLs; the others it accepts, as the service
  // URL ends them, but they lead elsewhere (kept on loopback here).
  const ServiceOptions toHere =
      options().setResolve({bed.server.resolveEntry(), "evil.example:443:127.0.0.1"});
  struct Rejected {
    std::string url;
    ServiceOptions options;
    const char* message;
  };
  std::vector<Rejected> rejected = {
      {service, options().setDeadline(-1ms), "Deadline must not be negative"},
      {service, options().setRequestTimeout(0ms), "Request timeout must be positive"},
      {service, options().setUserAgent("App/1\r\nX-Injected: 1"),
       "User agent must be printable ASCII"},
  };
  for (const std::string& url :
       {service + "/", "http" + service.substr(5), "https://evil.example/?" + service,
        "https://evil.example?" + service, "https://evil.example/" + service,
        "https://evil.example#" + service, "https://evil.example@" + service,
        "https://user@evil.example/?" + service, "https://api.tavrin.com:1/?" + service}) {
    rejected.push_back({url, toHere, "Url is incorrect"});
  }
  for (const auto& r : rejected) {
    SCOPED_TRACE(r.url);
    expectTavrinError([&] { TavrinService(r.url, "key-1", r.options); }, ErrorType::invalidInput,
                      r.message);
  }
  EXPECT_TRUE(bed.server.received().empty());
}

}  // namespace
}  // namespace tavrin
