// The sandbox run as the `tavrin sandbox` process, reached over real TLS.
#include "SandboxFixture.hpp"
#include "ToolProcess.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <pty.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <sstream>

extern char** environ;

namespace tavrin::testing {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

class SandboxProcess {
 public:
  explicit SandboxProcess(std::vector<std::string> options = {})
      : _process(withCommand(std::move(options))) {
    const auto line = _process.readLine(60s);
    if (!line) throw std::runtime_error("no ready line; stderr: " + _process.errors());
    const auto endpoint = SandboxEndpoint::fromReadyLine(*line);
    if (!endpoint) throw std::runtime_error("unreadable ready line: " + *line);
    _endpoint = *endpoint;
  }

  const SandboxEndpoint& endpoint() const { return _endpoint; }
  SandboxClient client() const { return {_endpoint.port, _endpoint.caFile}; }
  ToolProcess& process() { return _process; }

 private:
  static std::vector<std::string> withCommand(std::vector<std::string> options) {
    options.insert(options.begin(), {"sandbox", "--port", "0"});
    return options;
  }

  ToolProcess _process;
  SandboxEndpoint _endpoint;
};

std::string encoded(const std::function<void(json&)>& change) {
  json document = validDataset();
  change(document);
  return encodePayload(document.dump());
}

json& section(json& document, std::size_t index) { return document[index].begin().value(); }

TEST(SandboxProcess, TellsHowToReachItAndStopsOnTerm) {
  SandboxProcess sandbox;
  const auto& endpoint = sandbox.endpoint();
  EXPECT_EQ(endpoint.url, "https://api.tavrin.com:" + std::to_string(endpoint.port));
  EXPECT_EQ(endpoint.resolve, "api.tavrin.com:" + std::to_string(endpoint.port) + ":127.0.0.1");
  EXPECT_TRUE(std::filesystem::exists(endpoint.caFile));
  EXPECT_FALSE(sandbox.client().login().empty());
  EXPECT_EQ(sandbox.process().stop(SIGTERM), 0);
  EXPECT_NE(sandbox.process().errors().find("stopped by SIGTERM"), std::string::npos);
  // The certificate directory it made for itself goes with it.
  EXPECT_FALSE(std::filesystem::exists(endpoint.caFile));
}

TEST(SandboxProcess, RefusesMalformedPayloadsNamingTheSpotAndKeepsServing) {
  struct Case {
    const char* record;
    std::string data;
    std::string detail;  // the start of the expected detail
  };
  const std::vector<Case> cases{
      {"bad-base64", "not*base64!!",
       "payload: not base64: character 4 is not in the base64 alphabet"},
      {"not-deflate", "//////////8=", "payload: not a raw DEFLATE stream (invalid block type)"},
      {"not-json", encodePayload(R"({"GeneralInfo")"), "payload: not JSON: parse error at line 1"},
      {"section-missing", encoded([](json& d) { d.erase(3); }),
       R"(section 4: expected "MediaAlbums", got "Video")"},
      {"row-short", encoded([](json& d) { section(d, 4)[0].erase(12); }),
       "section Video, row 1: expected 13 values, got 12"},
      {"string-for-number", encoded([](json& d) { section(d, 0)[2] = "soon"; }),
       R"(section GeneralInfo, position 3: expected number, got string "soon")"},
  };
  SandboxProcess sandbox;
  auto client = sandbox.client();
  const std::string token = client.login();
  for (const auto& c : cases) {
    const auto reply = client.upload(token, c.record, c.data);
    EXPECT_EQ(reply.status, 400) << c.record;
    EXPECT_EQ(reply.title(), "dataset_invalid") << c.record;
    EXPECT_EQ(reply.detail().substr(0, c.detail.size()), c.detail) << reply.detail();
  }
  // A refused record number is still free, and the sandbox still serves.
  EXPECT_EQ(client.check(token, "bad-base64").body, "true");
  EXPECT_EQ(client.upload(token, "bad-base64", encodePayload(validDataset().dump())).status, 200);
  EXPECT_EQ(sandbox.process().stop(SIGINT), 0);
  const std::string log = sandbox.process().errors();
  for (const auto& c : cases) {
    EXPECT_NE(log.find("record \"" + std::string(c.record) + "\": dataset_invalid: " + c.detail),
              std::string::npos)
        << log;
  }
}

class StoredSandbox : public ::testing::Test {
 protected:
  void SetUp() override {
    _directory = std::filesystem::temp_directory_path() /
                 ("tavrin-sandbox-test-" + std::to_string(getpid()));
    std::filesystem::create_directories(_directory);
    _database = (_directory / "uploads.db").string();
  }
  void TearDown() override { std::filesystem::remove_all(_directory); }

  std::filesystem::path _directory;
  std::string _database;
};

TEST_F(StoredSandbox, KeepsAnAcceptedUploadForInspectAndRefusesItsRecordAgain) {
  SandboxProcess sandbox({"--db", _database});
  auto client = sandbox.client();
  const std::string token = client.login();
  const std::string data = encodePayload(validDataset().dump());
  ASSERT_EQ(client.check(token, "order-7").body, "true");
  const auto accepted = client.upload(token, "order-7", data);
  ASSERT_EQ(accepted.status, 200) << accepted.body;
  EXPECT_EQ(json::parse(accepted.body), "accepted record \"order-7\" as upload 1");

  EXPECT_EQ(client.check(token, "order-7").body, "false");
  const auto again = client.upload(token, "order-7", data);
  EXPECT_EQ(again.status, 400);
  EXPECT_EQ(again.title(), "record_number_not_unique");

  // inspect reads the database while the sandbox still has it open.
  const auto table = runTool({"inspect", "--db", _database, "--record", "order-7"});
  EXPECT_EQ(table.exitCode, 0) << table.errors;
  EXPECT_NE(table.output.find("record order-7: upload 1 received"), std::string::npos);
  EXPECT_NE(table.output.find("accepted"), std::string::npos);
  EXPECT_NE(table.output.find("Contacts                     3  error"), std::string::npos)
      << table.output;
  EXPECT_NE(table.output.find("verdict: valid"), std::string::npos);

  const auto dataset = runTool({"inspect", "--db", _database, "--record", "order-7", "--json"});
  EXPECT_EQ(dataset.exitCode, 0);
  EXPECT_EQ(json::parse(dataset.output), validDataset());

  const auto listing = runTool({"inspect", "--db", _database});
  EXPECT_EQ(listing.exitCode, 0);
  EXPECT_NE(listing.output.find("order-7"), std::string::npos);
  EXPECT_EQ(runTool({"inspect", "--db", _database, "--record", "order-8"}).exitCode, 2);
  EXPECT_EQ(sandbox.process().stop(), 0);
}

// `tavrin collect` (the library's real client) against `tavrin sandbox`.
std::vector<std::string> collectFrom(const SandboxEndpoint& endpoint, const std::string& record) {
  return {"collect",   "--quiet",
          "--url",     endpoint.url,
          "--key",     "sandbox-key",
          "--record",  record,
          "--resolve", endpoint.resolve,
          "--ca-file", endpoint.caFile,
          "--profile", TAVRIN_SOURCE_DIR "/examples/profiles/iphone-realistic.json",
          "--timeout", "20"};
}

std::size_t countLines(const std::string& text, const std::string& start) {
  std::size_t count = 0;
  std::istringstream lines(text);
  for (std::string line; std::getline(lines, line);) count += line.starts_with(start);
  return count;
}

TEST_F(StoredSandbox, KeepsWhatTheToolCollectedAndRefusesTheRecordNumberAgain) {
  SandboxProcess sandbox({"--db", _database});
  const auto first = runTool(collectFrom(sandbox.endpoint(), "tool-1"));
  EXPECT_EQ(first.exitCode, 0) << first.errors;
  EXPECT_EQ(first.output, "accepted record \"tool-1\" as upload 1\n");

  const auto second = runTool(collectFrom(sandbox.endpoint(), "tool-1"));
  EXPECT_EQ(second.exitCode, 13);
  EXPECT_EQ(second.errors,
            "error: serverRejected: record_number_not_unique. Record number is not unique\n");

  const auto table = runTool({"inspect", "--db", _database, "--record", "tool-1"});
  EXPECT_EQ(table.exitCode, 0) << table.errors;
  EXPECT_NE(table.output.find("Contacts                     5"), std::string::npos) << table.output;
  EXPECT_NE(table.output.find("verdict: valid"), std::string::npos);
  EXPECT_EQ(sandbox.process().stop(), 0);
  EXPECT_EQ(countLines(sandbox.process().errors(), "sandbox: upload 200 "), 1u);
}

TEST(SandboxProcess, ExpiredTokensGiveTheToolOneNewLoginAndThenThe401) {
  SandboxProcess sandbox({"--token-ttl", "0"});
  const auto run = runTool(collectFrom(sandbox.endpoint(), "ttl-1"));
  EXPECT_EQ(run.exitCode, 12);
  EXPECT_EQ(run.errors, "error: accessDenied: 401\n");
  EXPECT_EQ(sandbox.process().stop(), 0);
  const std::string log = sandbox.process().errors();
  EXPECT_EQ(countLines(log, "sandbox: login 200 "), 2u) << log;
  EXPECT_EQ(countLines(log, "sandbox: check 401 "), 2u) << log;
}

TEST(SandboxInspect, DecodesAPayloadFromStandardInput) {
  const auto valid = runTool({"inspect", "-"}, encodePayload(validDataset().dump()) + "\n");
  EXPECT_EQ(valid.exitCode, 0) << valid.errors;
  EXPECT_NE(valid.output.find("Images                       1  access denied"), std::string::npos)
      << valid.output;
  EXPECT_NE(valid.output.find("verdict: valid"), std::string::npos);

  // An upload's request body is read for its "data" member.
  const json body{{"recordNumber", "x"}, {"data", encoded([](json& d) { d.erase(13); })}};
  const auto invalid = runTool({"inspect"}, body.dump());
  EXPECT_EQ(invalid.exitCode, 1);
  EXPECT_NE(invalid.output.find("verdict: invalid: section 14: expected \"Permissions\""),
            std::string::npos)
      << invalid.output;
}

TEST(SandboxProcess, AnswersBodiesOverTheLimitWith413) {
  SandboxProcess sandbox({"--max-body", "2000"});
  auto client = sandbox.client();
  const std::string token = client.login();
  const auto refused = client.upload(token, "big", std::string(4000, 'A'));
  EXPECT_EQ(refused.status, 413);
  EXPECT_EQ(refused.title(), "payload_too_large");
  EXPECT_EQ(client.check(token, "big").status, 200);
}

TEST(SandboxProcess, ExpiresEveryTokenAtOnceWithZeroLifetime) {
  SandboxProcess sandbox({"--token-ttl", "0"});
  auto client = sandbox.client();
  const std::string token = client.login();
  ASSERT_FALSE(token.empty());
  const auto reply = client.check(token, "r");
  EXPECT_EQ(reply.status, 401);
  EXPECT_EQ(reply.body, "");
}

TEST(SandboxProcess, CutsOffAClientThatSendsNothing) {
  SandboxProcess sandbox({"--io-timeout", "1"});
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(sandbox.endpoint().port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  // The sandbox closes the connection once the timeout passes; wait for that
  // end of stream, far longer than the timeout but bounded.
  pollfd closed{connection, POLLIN, 0};
  ASSERT_EQ(poll(&closed, 1, 20000), 1);
  char byte;
  EXPECT_EQ(read(connection, &byte, 1), 0);
  close(connection);
  EXPECT_FALSE(sandbox.client().login().empty());
}

TEST(SandboxProcess, AppliesFaultRulesGivenOnTheCommandLine) {
  SandboxProcess sandbox({"--fault", "upload:status=401*1", "--fault", "check:error=409/busy"});
  auto client = sandbox.client();
  const std::string token = client.login();
  const std::string data = encodePayload(validDataset().dump());
  const auto first = client.upload(token, "f-1", data);
  EXPECT_EQ(first.status, 401);
  EXPECT_EQ(first.body, "");
  EXPECT_EQ(client.upload(token, "f-1", data).status, 200);
  const auto check = client.check(token, "f-2");
  EXPECT_EQ(check.status, 409);
  EXPECT_EQ(check.title(), "busy");
}

TEST(SandboxProcess, RefusesAnUnreadableFaultRule) {
  const auto run = runTool({"sandbox", "--fault", "upload:explode"});
  EXPECT_EQ(run.exitCode, 2);
  EXPECT_NE(run.errors.find("\"upload:explode\""), std::string::npos) << run.errors;
}

TEST(DemoCommand, CollectsTheBuiltInPhoneIntoASandboxAndShowsTheVerdict) {
  // From another directory: the demonstration needs no file of the checkout.
  const auto demo =
      runTool({"demo", "--record", "demo-7"}, {}, std::filesystem::temp_directory_path());

  EXPECT_EQ(demo.exitCode, 0) << demo.output << demo.errors;
  EXPECT_NE(demo.output.find("The server answered: accepted record \"demo-7\" as upload 1"),
            std::string::npos)
      << demo.output;
  EXPECT_NE(demo.output.find("JSON "), std::string::npos);
  EXPECT_NE(demo.output.find(" bytes -> DEFLATE "), std::string::npos);
  EXPECT_NE(demo.output.find("Permissions                  4"), std::string::npos);
  EXPECT_TRUE(demo.output.ends_with("verdict: valid\n")) << demo.output;
  // Standard error is not a terminal here, so the progress comes as plain lines.
  EXPECT_NE(demo.errors.find("\nsource 1: "), std::string::npos) << demo.errors;
  EXPECT_NE(demo.errors.find("exchange upload: HTTP 200 in "), std::string::npos);
}

// Runs the tool with standard error on a pseudo-terminal, as a person at a
// terminal sees it, and returns what reached that terminal.
std::string errorsOnATerminal(const std::vector<std::string>& arguments) {
  int terminal = -1, device = -1;
  if (openpty(&terminal, &device, nullptr, nullptr, nullptr) != 0) return "no pseudo-terminal";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, device, 2);
  posix_spawn_file_actions_addclose(&actions, terminal);
  std::vector<std::string> command{TAVRIN_TOOL_PATH};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (auto& argument : command) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  const int spawned = posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  close(device);
  std::string text;
  char buffer[4096];
  // Reading ends with an error once the child has exited and the terminal has no writer.
  for (ssize_t size; spawned == 0 && (size = read(terminal, buffer, sizeof buffer)) > 0;) {
    text.append(buffer, static_cast<std::size_t>(size));
  }
  close(terminal);
  int status = 0;
  if (spawned == 0) waitpid(pid, &status, 0);
  return text;
}

TEST(DemoCommand, RewritesOneProgressLineOnATerminal) {
  const std::string shown = errorsOnATerminal({"demo"});
  // Every update returns to the start of the line and clears it; the finished
  // line ends with a summary.
  EXPECT_NE(shown.find("\r\033[Ksource 1: "), std::string::npos) << shown;
  EXPECT_NE(shown.find("\r\033[Kexchange upload: HTTP 200 in "), std::string::npos);
  EXPECT_NE(shown.find("\r\033[K13 sources ("), std::string::npos);
  EXPECT_EQ(shown.find("\nsource "), std::string::npos) << "a progress line was not rewritten";
}

}  // namespace
}  // namespace tavrin::testing
