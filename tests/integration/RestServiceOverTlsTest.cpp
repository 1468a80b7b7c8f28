#include "TlsTestBed.hpp"

#include "../support/ExpectTavrinError.hpp"
#include "net/CurlTransport.hpp"
#include "net/RestService.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <functional>

namespace tavrin {
namespace {

using namespace testing_support;
using Json = nlohmann::json;

class RestServiceOverTls : public testing::Test {
 protected:
  RestService client(const ServiceOptions& options) {
    return RestService(bed.server.url(), std::make_unique<CurlTransport>(options));
  }

  TlsTestBed bed;
};

TEST_F(RestServiceOverTls, SendsTheThreeRequestsAsTheServiceExpectsThem) {
  RestService service = client(bed.options());
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
    EXPECT_EQ(requests[i].method, "POST");
    EXPECT_EQ(requests[i].target, paths[i]);  // no query
    EXPECT_EQ(requests[i].header("Content-Type"), "application/json");
    EXPECT_EQ(requests[i].header("Authorization"), authorizations[i]);
    EXPECT_EQ(requests[i].header("Expect"), "(absent)");
    EXPECT_EQ(Json::parse(requests[i].body), bodies[i]);
  }
}

struct WireMapping {
  int status;
  std::string body;
  ErrorType type;
  std::optional<std::string> message;
};

class StatusOverTheWire : public RestServiceOverTls,
                          public testing::WithParamInterface<WireMapping> {};

TEST_P(StatusOverTheWire, ReachesTheClientUnchanged) {
  RestService service = client(bed.options());
  service.login("key-1");
  bed.server.script(TestServer::checkPath, {GetParam().status, GetParam().body});
  expectTavrinError([&] { service.checkUniqueness("r-1"); }, GetParam().type, GetParam().message);
  EXPECT_EQ(bed.server.receivedPaths().size(), 2u);  // nothing followed or repeated
}

INSTANTIATE_TEST_SUITE_P(
    Statuses, StatusOverTheWire,
    testing::Values(WireMapping{400, R"({"title":"record_number_not_unique"})",
                                ErrorType::invalidInput,
                                "record_number_not_unique. Record number is not unique"},
                    WireMapping{403, "<html>no</html>", ErrorType::accessDenied, "403"},
                    WireMapping{503, R"({"title":"auth_key_invalid"})", ErrorType::serverRejected,
                                std::nullopt}));

// Ways in which the server is not the one the client may talk to.
struct Distrust {
  const char* name;
  std::function<void(ServiceOptions&, const TlsTestBed&)> adjust;
};

class UntrustedServer : public RestServiceOverTls, public testing::WithParamInterface<Distrust> {};

TEST_P(UntrustedServer, IsAConnectionFailure) {
  ServiceOptions options = bed.options();
  GetParam().adjust(options, bed);
  RestService service = client(options);
  expectTavrinError([&] { service.login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
  EXPECT_TRUE(bed.server.received().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Settings, UntrustedServer,
    testing::Values(Distrust{"AnotherAuthority",
                             [](ServiceOptions& options, const TlsTestBed& testBed) {
                               testing_support::TestAuthority("Another CA")
                                   .writePem(testBed.directory.path() / "other.pem");
                               options.caFile = (testBed.directory.path() / "other.pem").string();
                             }},
                    Distrust{"SystemStore", [](ServiceOptions& options,
                                               const TlsTestBed&) { options.caFile.clear(); }},
                    Distrust{"PinnedKeyOfAnotherServer",
                             [](ServiceOptions& options, const TlsTestBed& testBed) {
                               options.pinnedPublicKey =
                                   testBed.authority.issue("api.tavrin.com").publicKeyPin();
                             }}),
    [](const testing::TestParamInfo<Distrust>& param) { return std::string(param.param.name); });

TEST_F(RestServiceOverTls, PinnedKeyOfTheServerIsAccepted) {
  ServiceOptions options = bed.options();
  options.pinnedPublicKey = bed.serverCertificate.publicKeyPin();
  RestService service = client(options);
  service.login("key-1");
  EXPECT_EQ(bed.server.receivedPaths(), std::vector<std::string>{TestServer::loginPath});
}

TEST_F(RestServiceOverTls, CertificateForAnotherHostIsRefused) {
  const auto certificate = bed.authority.issue("other.tavrin.com");
  TestServer impostor(certificate.certificate.get(), certificate.key.get());
  ServiceOptions options = bed.options();
  options.resolve = {impostor.resolveEntry()};
  RestService service(impostor.url(), std::make_unique<CurlTransport>(options));

  expectTavrinError([&] { service.login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
  EXPECT_TRUE(impostor.received().empty());
}

TEST_F(RestServiceOverTls, ServerThatNeverAnswersTimesOut) {
  RestService service = client(bed.options(std::chrono::seconds(1)));
  bed.server.script(TestServer::loginPath, ScriptedAnswer{200, "", true});
  expectTavrinError([&] { service.login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
  EXPECT_EQ(bed.server.receivedPaths(), std::vector<std::string>{TestServer::loginPath});
}

TEST_F(RestServiceOverTls, TokenThatWouldSplitTheHeaderIsNeverSent) {
  RestService service = client(bed.options());
  bed.server.script(TestServer::loginPath,
                    {200, R"({"token_type":"Bearer","access_token":"t\r\nX-Injected: 1"})"});
  service.login("key-1");
  expectTavrinError([&] { service.checkUniqueness("r-1"); }, ErrorType::connectionFailed,
                    std::nullopt);
  EXPECT_EQ(bed.server.receivedPaths(), std::vector<std::string>{TestServer::loginPath});
}

TEST_F(RestServiceOverTls, EndlessAnswerIsCutOff) {
  RestService service = client(bed.options());
  bed.server.script(TestServer::loginPath, {200, std::string(17u << 20, ' ')});
  expectTavrinError([&] { service.login("key-1"); }, ErrorType::connectionFailed, std::nullopt);
}

}  // namespace
}  // namespace tavrin
