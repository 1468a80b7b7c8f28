// `tavrin collect` run as a process against the test server: what it prints,
// the files it writes and its exit codes.
#include "TlsTestBed.hpp"
#include "ToolProcess.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <tuple>

namespace tavrin {
namespace {

using namespace testing_support;

class CollectCommand : public testing::Test {
 protected:
  // `tavrin collect` against the test server, with the test profile; without
  // progress lines unless asked for, and trusting the test CA unless told not to.
  ToolRun collect(std::vector<std::string> extra = {}, bool quiet = true, bool trust = true,
                  const std::vector<std::string>& environment = {}) {
    extra.insert(extra.begin(),
                 {"collect", "--url", bed.server.url(), "--record", "r-1", "--profile",
                  collectionProfile, "--resolve", bed.server.resolveEntry(), "--timeout", "10"});
    extra.insert(extra.end(), key.begin(), key.end());
    if (quiet) extra.push_back("--quiet");
    if (trust) extra.insert(extra.end(), {"--ca-file", bed.tls.authority.string()});
    return runTool(extra, {}, {}, environment);
  }

  TlsTestBed bed;
  std::vector<std::string> key{"--key", "key-1"};  // how collect() passes the key
};

TEST_F(CollectCommand, PrintsTheAnswerShowsEachStepAsAPlainLineAndWritesTheUploadedDocument) {
  const auto datasetFile = bed.directory / "dataset.json";
  const ToolRun result = collect({"--dataset-out", datasetFile.string()}, false);
  EXPECT_EQ(result.exitCode, 0) << result.errors;
  EXPECT_EQ(result.output, "received\n");
  const auto requests = bed.server.received();
  ASSERT_EQ(requests.size(), 3u);
  EXPECT_EQ(readFile(datasetFile), uploadedDocument(requests[2]));

  // Not on a terminal: in run order, each on a line of its own and none rewritten in place.
  const std::string& lines = result.errors;
  std::size_t at = 0;
  for (const char* step :
       {"exchange login: HTTP 200 in ", "exchange check: HTTP 200 in ",
        "\nsource 1: ", ": Permissions, 4 entries in ", "exchange upload: HTTP 200 in "}) {
    at = lines.find(step, at);
    ASSERT_NE(at, std::string::npos) << step << " in\n" << lines;
  }
  EXPECT_EQ(lines.find('\r'), std::string::npos);

  // A refused exchange is shown as refused, and the error still ends the output.
  bed.server.script(TestServer::checkPath, {403, ""});
  const ToolRun refused = collect({}, false);
  EXPECT_EQ(refused.exitCode, 12);
  EXPECT_NE(refused.errors.find("exchange check: HTTP 403, refused in "), std::string::npos);
  EXPECT_TRUE(refused.errors.ends_with("\nerror: accessDenied: 403\n")) << refused.errors;

  // A dataset file that cannot be written stops the run before the upload.
  const ToolRun unwritable = collect({"--dataset-out", bed.directory.path().string()});
  EXPECT_EQ(unwritable.exitCode, 1);
  EXPECT_EQ(unwritable.errors, "error: cannot write " + bed.directory.path().string() + "\n");
  EXPECT_EQ(bed.server.receivedPaths().back(), TestServer::checkPath);
}

// The key from a file or the environment stays out of ps; --verbose prints the
// library's log, and text from the server is printed with its controls escaped.
TEST_F(CollectCommand, TakesTheKeyFromAFileOrTheEnvironmentAndEscapesTheServersText) {
  std::ofstream(bed.directory / "key") << "key-from-file\r\nsecond line\n";
  const struct {
    std::vector<std::string> key;
    std::vector<std::string> environment;
    int exitCode;
    const char* sent;  // the login's key; nullptr: no login
  } sources[] = {
      {{"--key-file", (bed.directory / "key").string()}, {"TAVRIN_KEY=k"}, 0, "key-from-file"},
      {{"--key", "key-2"}, {"TAVRIN_KEY=k"}, 0, "key-2"},
      {{}, {"TAVRIN_KEY=key-from-env"}, 0, "key-from-env"},
      {{}, {}, 1, nullptr},
      {{"--key", "a", "--key-file", (bed.directory / "key").string()}, {}, 2, nullptr},
  };
  for (const auto& source : sources) {
    key = source.key;
    bed.server.script(TestServer::uploadPath, {200, R"("ok\u001b[2J\n\\")"});
    const auto logins = bed.server.receivedPaths().size();
    const ToolRun result =
        collect({"--verbose", "--deadline", "5"}, true, true, source.environment);
    EXPECT_EQ(result.exitCode, source.exitCode) << result.errors;
    if (!source.sent) continue;
    EXPECT_EQ(result.output, "ok\\x1b[2J\\n\\\\\n");
    EXPECT_EQ(nlohmann::json::parse(bed.server.received()[logins].body).at("authKey"), source.sent);
    EXPECT_NE(result.errors.find("tavrin: info: login: HTTP 200 in "), std::string::npos);
  }
}

// Quiet: standard error holds the error line alone. A refused exchange (exit code 12) is
// shown above.
TEST_F(CollectCommand, FailuresExitWithTheKindAndSayWhy) {
  const struct {
    const char* path;  // the exchange that fails; none: the server is not trusted
    int status;
    const char* body;
    int exitCode;
    const char* errors;
  } failures[] = {
      {TestServer::loginPath, 401, R"({"title":"auth_key_invalid"})", 10,
       "error: invalidInput: invalid_grant_key. Authentication key is invalid\n"},
      {TestServer::checkPath, 403, R"({"title":"action_forbidden","detail":"a\u0007\nb"})", 12,
       "error: accessDenied: action_forbidden. a\\x07\\nb\n"},
      {nullptr, 0, "", 11, "error: connectionFailed\n"},
      {TestServer::checkPath, 200, "false", 13,
       "error: serverRejected: record_number_not_unique. Record number is not unique\n"},
      {TestServer::uploadPath, 200, "[]", 14, "error: processingFailed\n"},
  };
  for (const auto& failure : failures) {
    SCOPED_TRACE(failure.errors);
    if (failure.path) bed.server.script(failure.path, {failure.status, failure.body});
    const ToolRun result = collect({}, true, failure.path != nullptr);
    EXPECT_EQ(result.exitCode, failure.exitCode);
    EXPECT_EQ(result.output, "");
    EXPECT_EQ(result.errors, failure.errors);
  }
}

TEST_F(CollectCommand, BadArgumentsStopBeforeAnyTraffic) {
  std::ofstream(bed.directory / "broken.json") << "{\"device\": ";
  const std::vector<std::string> withoutRecord{"collect", "--url", bed.server.url(), "--key", "k"};
  EXPECT_EQ(runTool(withoutRecord).exitCode, 2);
  for (const auto& [option, value, exitCode] : {std::tuple{"--timeout", "0", 2},
                                                {"--deadline", "-1", 2},
                                                {"--profile", "missing.json", 2},
                                                {"--profile", "broken.json", 3}}) {
    auto arguments = withoutRecord;
    arguments.insert(arguments.end(), {"--record", "r", option, value});
    EXPECT_EQ(runTool(arguments, {}, bed.directory.path()).exitCode, exitCode) << option << value;
  }
  EXPECT_TRUE(bed.server.received().empty());
}

}  // namespace
}  // namespace tavrin
