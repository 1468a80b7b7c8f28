// The REST client over real TLS against the scripted test server: the
// requests as they go on the wire, which servers it trusts, and answers it
// must not take.
#include "TlsTestBed.hpp"

#include "../support/ExpectTavrinError.hpp"
#include "net/CurlTransport.hpp"
#include "net/RestService.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tavrin {
namespace {

using namespace testing_support;
using Json = nlohmann::json;
using Paths = std::vector<std::string>;

class RestServiceOverTls : public testing::Test {
 protected:
  RestService client(const ServiceOptions& options) {
    return RestService(bed.server.url(), std::make_unique<CurlTransport>(options));
  }

  TlsTestBed bed;
};

TEST_F(RestServiceOverTls, SendsTheThreeRequestsAsTheServiceExpectsThem) {
  ServiceOptions options = bed.options();
  options.pinnedPublicKey = publicKeyPin(bed.tls.privateKey);  // the server's own key passes
  RestService service = client(options);
  service.login("key-1");
  EXPECT_TRUE(service.checkUniqueness("r-1"));
  EXPECT_EQ(service.upload("QUJD+/8=", "r-1"), "received");

  const auto requests = bed.server.received();
  ASSERT_EQ(requests.size(), 3u);
  const std::string paths[] = {TestServer::loginPath, TestServer::checkPath,
                               TestServer::uploadPath};
  const Json bodies[] = {{{"authKey", "key-1"}},
                         {{"recordNumber", "r-1"}},
                         {{"data", "QUJD+/8="}, {"recordNumber", "r-1"}}};
  const std::string authorizations[] = {"(absent)", "Bearer token-1", "Bearer token-1"};
  for (std::size_t i = 0; i < 3; ++i) {
    SCOPED_TRACE(paths[i]);
    EXPECT_EQ(requests[i].target, paths[i]);  // no query
    EXPECT_EQ(requests[i].header("Content-Type"), "application/json");
    EXPECT_EQ(requests[i].header("Authorization"), authorizations[i]);
    EXPECT_EQ(requests[i].header("Expect"), "(absent)");
    EXPECT_EQ(Json::parse(requests[i].body), bodies[i]);
  }
}

TEST_F(RestServiceOverTls, ServerTheClientMayNotTrustIsAConnectionFailure) {
  // Another authority and another server key, made as the test bed's are.
  const auto other =
      sandbox::writeTlsFiles(sandbox::makeCertificates("api.tavrin.com"), bed.directory / "other");
  const auto refused = [&](const char* why, ServiceOptions options,
                           const std::string& host = "api.tavrin.com") {
    SCOPED_TRACE(why);
    const std::string address = host + ":" + std::to_string(bed.server.port());
    options.resolve = {address + ":127.0.0.1"};
    RestService service("https://" + address, std::make_unique<CurlTransport>(options));
    expectTavrinError([&] { service.login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
  };
  ServiceOptions options = bed.options();
  options.caFile = other.authority.string();
  refused("another authority", options);
  options.caFile.clear();
  refused("the system's authorities", options);
  options = bed.options();
  options.pinnedPublicKey = publicKeyPin(other.privateKey);
  refused("the key of another server pinned", options);
  // The certificate names api.tavrin.com and 127.0.0.1 only.
  refused("another host name", bed.options(), "other.tavrin.com");
  EXPECT_TRUE(bed.server.received().empty());
}

TEST_F(RestServiceOverTls, TokenThatWouldSplitTheHeaderIsNeverSent) {
  RestService service = client(bed.options());
  bed.server.script(TestServer::loginPath,
                    {200, R"({"token_type":"Bearer","access_token":"t\r\nX-Injected: 1"})"});
  service.login("key-1");
  expectTavrinError([&] { service.checkUniqueness("r-1"); }, ErrorType::connectionFailed,
                    std::nullopt);
  EXPECT_EQ(bed.server.receivedPaths(), Paths{TestServer::loginPath});
}

// A large upload on a slow link hears nothing back, for longer than the idle
// limit, while its bytes keep going out: it is not cut off.
TEST_F(RestServiceOverTls, SlowUploadThatKeepsSendingIsNotCutOff) {
  RestService service = client(bed.options(std::chrono::seconds(1)));
  service.login("key-1");
  bed.server.paceBodies(std::size_t{4} << 20);
  const auto started = std::chrono::steady_clock::now();
  EXPECT_EQ(service.upload(std::string(std::size_t{8} << 20, 'A'), "r-1"), "received");
  EXPECT_GT(std::chrono::steady_clock::now() - started, std::chrono::milliseconds(1500))
      << "the upload went too fast to outlast the idle limit";
}

TEST_F(RestServiceOverTls, EndlessAnswerIsCutOff) {
  RestService service = client(bed.options());
  bed.server.script(TestServer::loginPath, {200, std::string(17u << 20, ' ')});
  expectTavrinError([&] { service.login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
}

}  // namespace
}  // namespace tavrin
