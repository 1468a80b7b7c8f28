// `tavrin sandbox` and `tavrin inspect` run as processes, for what only a
// process shows: the ready line, command-line options, signals, the files
// they write and their exit codes. What the sandbox answers to the library is
// tested in-process (SandboxCollectionTest).
#include "SandboxFixture.hpp"
#include "ToolProcess.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <pty.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <sstream>

namespace tavrin::testing_support {
namespace {

using nlohmann::json;
using namespace std::chrono_literals;

// A `tavrin sandbox` on a free port, reached as its ready line says.
struct SandboxProcess {
  explicit SandboxProcess(std::vector<std::string> options = {})
      : process([&] {
          options.insert(options.begin(), {"sandbox", "--port", "0"});
          return options;
        }()) {
    // "sandbox ready: --url URL --resolve HOST:PORT:ADDRESS --ca-file PEM"
    const auto line = process.readLine(60s);
    if (!line || !line->starts_with("sandbox ready: ")) {
      throw std::runtime_error("no ready line: " + line.value_or(process.errors()));
    }
    std::istringstream words(*line);
    for (std::string word; words >> word;) {
      if (word == "--url") words >> url;
      if (word == "--resolve") words >> resolve;
      if (word == "--ca-file") words >> caFile;
    }
    port = std::stoi(url.substr(url.rfind(':') + 1));
  }

  SandboxClient client() const { return {port, caFile}; }

  ToolProcess process;
  std::string url, resolve, caFile;
  int port = 0;
};

std::string encoded(const std::function<void(json&)>& change) {
  json document = validDataset();
  change(document);
  return encodePayload(document.dump());
}

TEST(SandboxProcess, TellsHowToReachItLogsRefusalsAndStopsOnTerm) {
  SandboxProcess sandbox;
  EXPECT_EQ(sandbox.url, "https://api.tavrin.com:" + std::to_string(sandbox.port));
  EXPECT_EQ(sandbox.resolve, "api.tavrin.com:" + std::to_string(sandbox.port) + ":127.0.0.1");
  EXPECT_TRUE(std::filesystem::exists(sandbox.caFile));

  // A malformed payload is answered with the spot named and logged (the
  // validator's every problem is tested on its own), and its record number stays free.
  const std::string detail = R"(section 4: expected "MediaAlbums", got "Video")";
  auto client = sandbox.client();
  const std::string token = client.login();
  const auto refused = client.upload(token, "bad-1", encoded([](json& d) { d.erase(3); }));
  EXPECT_EQ(refused.status, 400);
  EXPECT_EQ(refused.title(), "dataset_invalid");
  EXPECT_EQ(refused.member("detail").substr(0, detail.size()), detail) << refused.member("detail");
  EXPECT_EQ(client.check(token, "bad-1").body, "true");
  EXPECT_EQ(client.upload(token, "bad-1", encodePayload(validDataset().dump())).status, 200);

  EXPECT_EQ(sandbox.process.stop(SIGTERM), 0);
  const std::string log = sandbox.process.errors();
  EXPECT_NE(log.find("stopped by SIGTERM"), std::string::npos);
  EXPECT_NE(log.find("record \"bad-1\": dataset_invalid: " + detail), std::string::npos) << log;
  // The certificate directory it made for itself goes with it.
  EXPECT_FALSE(std::filesystem::exists(sandbox.caFile));
}

TEST(SandboxProcess, KeepsUploadsInItsDatabaseForInspect) {
  const TemporaryDirectory directory;
  const std::string database = (directory / "uploads.db").string();
  SandboxProcess sandbox({"--db", database});
  auto client = sandbox.client();
  const auto accepted =
      client.upload(client.login(), "order-7", encodePayload(validDataset().dump()));
  ASSERT_EQ(accepted.status, 200) << accepted.body;

  // inspect reads the database while the sandbox still has it open.
  const auto table = runTool({"inspect", "--db", database, "--record", "order-7"});
  EXPECT_EQ(table.exitCode, 0) << table.errors;
  EXPECT_NE(table.output.find("record order-7: upload 1 received"), std::string::npos);
  EXPECT_NE(table.output.find("accepted"), std::string::npos);
  EXPECT_NE(table.output.find("Contacts                     3  error"), std::string::npos)
      << table.output;
  EXPECT_NE(table.output.find("verdict: valid"), std::string::npos);

  const auto dataset = runTool({"inspect", "--db", database, "--record", "order-7", "--json"});
  EXPECT_EQ(dataset.exitCode, 0);
  EXPECT_EQ(json::parse(dataset.output), validDataset());
  const auto listing = runTool({"inspect", "--db", database});
  EXPECT_EQ(listing.exitCode, 0);
  EXPECT_NE(listing.output.find("order-7"), std::string::npos);
  EXPECT_EQ(runTool({"inspect", "--db", database, "--record", "order-8"}).exitCode, 2);
  EXPECT_EQ(sandbox.process.stop(SIGINT), 0);
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

TEST(SandboxProcess, TakesItsLimitsAndFaultRulesFromTheCommandLine) {
  SandboxProcess sandbox({"--max-body", "2000", "--io-timeout", "1", "--fault",
                          "upload:status=401*1", "--fault", "check:error=409/busy"});
  auto client = sandbox.client();
  const std::string token = client.login();
  const auto tooLarge = client.upload(token, "big", std::string(4000, 'A'));
  EXPECT_EQ(tooLarge.status, 413);
  EXPECT_EQ(tooLarge.title(), "payload_too_large");
  const std::string data = encodePayload(validDataset().dump());  // well below 2000 bytes
  const auto first = client.upload(token, "f-1", data);
  EXPECT_EQ(first.status, 401);
  EXPECT_EQ(first.body, "");
  EXPECT_EQ(client.upload(token, "f-1", data).status, 200);
  const auto check = client.check(token, "f-2");
  EXPECT_EQ(check.status, 409);
  EXPECT_EQ(check.title(), "busy");

  // A client that sends nothing is cut off once the I/O timeout passes: wait
  // for that end of stream, far longer than the timeout but bounded.
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<std::uint16_t>(sandbox.port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  ASSERT_EQ(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  pollfd closed{connection, POLLIN, 0};
  ASSERT_EQ(poll(&closed, 1, 20000), 1);
  char byte;
  EXPECT_EQ(read(connection, &byte, 1), 0);
  close(connection);
  EXPECT_FALSE(client.login().empty());
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
}

TEST(DemoCommand, RewritesOneProgressLineOnATerminal) {
  // Standard error on a pseudo-terminal, as a person at a terminal sees it.
  int terminal = -1, device = -1;
  ASSERT_EQ(openpty(&terminal, &device, nullptr, nullptr, nullptr), 0);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, device, 2);
  posix_spawn_file_actions_addclose(&actions, terminal);
  const pid_t pid = spawnTool({"demo"}, actions);
  posix_spawn_file_actions_destroy(&actions);
  close(device);
  std::string shown;
  char buffer[4096];
  // Reading ends with an error once the child has exited and the terminal has no writer.
  for (ssize_t size; pid > 0 && (size = read(terminal, buffer, sizeof buffer)) > 0;) {
    shown.append(buffer, static_cast<std::size_t>(size));
  }
  close(terminal);
  ASSERT_GT(pid, 0);
  waitpid(pid, nullptr, 0);

  // Every update returns to the start of the line and clears it; the finished
  // line ends with a summary.
  EXPECT_NE(shown.find("\r\033[Ksource 1: "), std::string::npos) << shown;
  EXPECT_NE(shown.find("\r\033[Kexchange upload: HTTP 200 in "), std::string::npos);
  EXPECT_NE(shown.find("\r\033[K13 sources ("), std::string::npos);
  EXPECT_EQ(shown.find("\nsource "), std::string::npos) << "a progress line was not rewritten";
}

}  // namespace
}  // namespace tavrin::testing_support
