// `tavrin collect` run as a process against the test server: what it prints,
// the files it writes and its exit codes.
#include "TlsTestBed.hpp"
#include "ToolProcess.hpp"

#include <gtest/gtest.h>

#include <fstream>

namespace tavrin {
namespace {

using namespace testing_support;

class CollectCommand : public testing::Test {
 protected:
  // `tavrin collect` against the test server, with the test profile; without
  // progress lines unless asked for, and trusting the test CA unless told not to.
  ToolRun collect(std::vector<std::string> extra = {}, bool quiet = true, bool trust = true) {
    std::vector<std::string> arguments{"collect",  "--url", bed.server.url(), "--key", "key-1",
                                       "--record", "r-1"};
    arguments.insert(arguments.end(), {"--profile", collectionProfile, "--resolve",
                                       bed.server.resolveEntry(), "--timeout", "10"});
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    if (quiet) arguments.push_back("--quiet");
    if (trust) arguments.insert(arguments.end(), {"--ca-file", bed.tls.authority.string()});
    return runTool(arguments);
  }

  TlsTestBed bed;
};

TEST_F(CollectCommand, PrintsTheServersAnswerAndWritesTheUploadedDocument) {
  const auto datasetFile = bed.directory / "dataset.json";
  const ToolRun result = collect({"--dataset-out", datasetFile.string()});

  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "received\n");
  EXPECT_EQ(result.errors, "");
  const auto requests = bed.server.received();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(readFile(datasetFile), uploadedDocument(requests[2]));
}

TEST_F(CollectCommand, ShowsEachSourceAndExchangeAsAPlainLineWhenNotOnATerminal) {
  const ToolRun result = collect({}, false);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "received\n");
  const std::string& lines = result.errors;
  const auto at = [&lines](const std::string& text) {
    const auto found = lines.find(text);
    EXPECT_NE(found, std::string::npos) << text << " in\n" << lines;
    return found;
  };
  // In run order, each on a line of its own and none rewritten in place.
  EXPECT_LT(at("exchange login: HTTP 200 in "), at("exchange check: HTTP 200 in "));
  EXPECT_LT(at("exchange check: HTTP 200 in "), at("\nsource 1: "));
  EXPECT_LT(at("\nsource 1: "), at(": Permissions, 4 entries in "));
  EXPECT_LT(at(": Permissions, 4 entries in "), at("exchange upload: HTTP 200 in "));
  EXPECT_EQ(lines.find('\r'), std::string::npos);

  // A refused exchange is shown as refused, and the error still ends the output.
  bed.server.script(TestServer::checkPath, {403, ""});
  const ToolRun refused = collect({}, false);
  EXPECT_EQ(refused.exitCode, 12);
  EXPECT_NE(refused.errors.find("exchange check: HTTP 403, refused in "), std::string::npos);
  EXPECT_TRUE(refused.errors.ends_with("\nerror: accessDenied: 403\n")) << refused.errors;
}

struct ToolFailure {
  const char* name;
  const char* path;  // the exchange that fails; none: the server is not trusted
  int status;
  const char* body;
  int exitCode;
  std::string errors;
};

class CollectCommandFailure : public CollectCommand,
                              public testing::WithParamInterface<ToolFailure> {};

TEST_P(CollectCommandFailure, ExitsWithTheKindAndSaysWhy) {
  if (GetParam().path) bed.server.script(GetParam().path, {GetParam().status, GetParam().body});
  const ToolRun result = collect({}, true, GetParam().path != nullptr);
  EXPECT_EQ(result.exitCode, GetParam().exitCode);
  EXPECT_EQ(result.output, "");
  EXPECT_EQ(result.errors, GetParam().errors);
}

INSTANTIATE_TEST_SUITE_P(
    Exits, CollectCommandFailure,
    testing::Values(
        ToolFailure{"WrongKey", TestServer::loginPath, 401, R"({"title":"auth_key_invalid"})", 10,
                    "error: invalidInput: invalid_grant_key. Authentication key is invalid\n"},
        ToolFailure{"UntrustedServer", nullptr, 0, "", 11, "error: connectionFailed\n"},
        ToolFailure{"Forbidden", TestServer::checkPath, 403, "", 12, "error: accessDenied: 403\n"},
        ToolFailure{
            "RecordTaken", TestServer::checkPath, 200, "false", 13,
            "error: serverRejected: record_number_not_unique. Record number is not unique\n"},
        ToolFailure{"UnreadableAnswer", TestServer::uploadPath, 200, "[]", 14,
                    "error: processingFailed\n"}),
    [](const testing::TestParamInfo<ToolFailure>& param) { return std::string(param.param.name); });

TEST_F(CollectCommand, BadArgumentsStopBeforeAnyTraffic) {
  const auto brokenProfile = bed.directory / "broken.json";
  std::ofstream(brokenProfile) << "{\"device\": ";
  const auto withRequired = [&](std::vector<std::string> extra) {
    extra.insert(extra.begin(),
                 {"collect", "--url", bed.server.url(), "--key", "k", "--record", "r"});
    return runTool(extra).exitCode;
  };

  EXPECT_EQ(runTool({"collect", "--url", bed.server.url(), "--key", "k"}).exitCode, 2);
  EXPECT_EQ(withRequired({"--timeout", "0"}), 2);
  EXPECT_EQ(withRequired({"--profile", (bed.directory / "missing.json").string()}), 2);
  EXPECT_EQ(withRequired({"--profile", brokenProfile.string()}), 3);
  EXPECT_TRUE(bed.server.received().empty());
}

}  // namespace
}  // namespace tavrin
