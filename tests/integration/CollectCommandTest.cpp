#include "RunProcess.hpp"
#include "TlsTestBed.hpp"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

namespace tavrin {
namespace {

using namespace testing_support;

class CollectCommand : public testing::Test {
 protected:
  // `tavrin collect` against the test server, with the test CA and profile;
  // without progress lines unless asked for.
  ProcessResult collect(std::vector<std::string> extra = {}, bool quiet = true) {
    std::vector<std::string> arguments{"collect",
                                       "--url",
                                       bed.server.url(),
                                       "--key",
                                       "key-1",
                                       "--record",
                                       "r-1",
                                       "--profile",
                                       testing_support::collectionProfile,
                                       "--resolve",
                                       bed.server.resolveEntry(),
                                       "--timeout",
                                       "10"};
    arguments.insert(arguments.end(), extra.begin(), extra.end());
    if (quiet) arguments.push_back("--quiet");
    return run(arguments);
  }
  ProcessResult run(const std::vector<std::string>& arguments) {
    return testing_support::runProcess(TAVRIN_TOOL_PATH, arguments, bed.directory.path());
  }
  std::string caFileArgument() const { return bed.caFile.string(); }

  TlsTestBed bed;
};

TEST_F(CollectCommand, PrintsTheServersAnswerAndWritesTheUploadedDocument) {
  const auto datasetFile = bed.directory.path() / "dataset.json";
  const ProcessResult result =
      collect({"--ca-file", caFileArgument(), "--dataset-out", datasetFile.string()});

  EXPECT_EQ(result.exitCode, 0) << result.standardError;
  EXPECT_EQ(result.standardOutput, "received\n");
  EXPECT_EQ(result.standardError, "");
  const auto requests = bed.server.received();
  ASSERT_EQ(requests.size(), 3u);
  std::ifstream file(datasetFile, std::ios::binary);
  const std::string written{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  EXPECT_EQ(written, testing_support::uploadedDocument(requests[2]));
}

TEST_F(CollectCommand, ShowsEachSourceAndExchangeAsAPlainLineWhenNotOnATerminal) {
  const ProcessResult result = collect({"--ca-file", caFileArgument()}, false);
  EXPECT_EQ(result.exitCode, 0) << result.standardError;
  EXPECT_EQ(result.standardOutput, "received\n");
  const std::string& lines = result.standardError;
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
  const ProcessResult refused = collect({"--ca-file", caFileArgument()}, false);
  EXPECT_EQ(refused.exitCode, 12);
  EXPECT_NE(refused.standardError.find("exchange check: HTTP 403, refused in "), std::string::npos);
  EXPECT_TRUE(refused.standardError.ends_with("\nerror: accessDenied: 403\n"))
      << refused.standardError;
}

struct ToolFailure {
  const char* name;
  std::string path;  // the exchange that fails, or empty for none
  testing_support::ScriptedAnswer answer;
  bool trustTheServer;
  int exitCode;
  std::string standardError;
};

class CollectCommandFailure : public CollectCommand,
                              public testing::WithParamInterface<ToolFailure> {};

TEST_P(CollectCommandFailure, ExitsWithTheKindAndSaysWhy) {
  if (!GetParam().path.empty()) bed.server.script(GetParam().path, GetParam().answer);
  const ProcessResult result =
      collect(GetParam().trustTheServer ? std::vector<std::string>{"--ca-file", caFileArgument()}
                                        : std::vector<std::string>{});
  EXPECT_EQ(result.exitCode, GetParam().exitCode);
  EXPECT_EQ(result.standardOutput, "");
  EXPECT_EQ(result.standardError, GetParam().standardError);
}

INSTANTIATE_TEST_SUITE_P(
    Exits, CollectCommandFailure,
    testing::Values(
        ToolFailure{"WrongKey",
                    TestServer::loginPath,
                    {401, R"({"title":"auth_key_invalid"})"},
                    true,
                    10,
                    "error: invalidInput: invalid_grant_key. Authentication key is invalid\n"},
        ToolFailure{"UntrustedServer", "", {}, false, 11, "error: connectionFailed\n"},
        ToolFailure{
            "Forbidden", TestServer::checkPath, {403, ""}, true, 12, "error: accessDenied: 403\n"},
        ToolFailure{
            "RecordTaken",
            TestServer::checkPath,
            {200, "false"},
            true,
            13,
            "error: serverRejected: record_number_not_unique. Record number is not unique\n"},
        ToolFailure{"UnreadableAnswer",
                    TestServer::uploadPath,
                    {200, "[]"},
                    true,
                    14,
                    "error: processingFailed\n"}),
    [](const testing::TestParamInfo<ToolFailure>& param) { return std::string(param.param.name); });

TEST_F(CollectCommand, BadArgumentsStopBeforeAnyTraffic) {
  const auto brokenProfile = bed.directory.path() / "broken.json";
  std::ofstream(brokenProfile) << "{\"device\": ";
  const std::vector<std::string> required{"collect",  "--url", bed.server.url(), "--key", "k",
                                          "--record", "r"};
  const auto withRequired = [&](std::vector<std::string> extra) {
    extra.insert(extra.begin(), required.begin(), required.end());
    return run(extra).exitCode;
  };

  EXPECT_EQ(run({"collect", "--url", bed.server.url(), "--key", "k"}).exitCode, 2);
  EXPECT_EQ(withRequired({"--timeout", "0"}), 2);
  EXPECT_EQ(withRequired({"--profile", (bed.directory.path() / "missing.json").string()}), 2);
  EXPECT_EQ(withRequired({"--profile", brokenProfile.string()}), 3);
  EXPECT_TRUE(bed.server.received().empty());
}

}  // namespace
}  // namespace tavrin
