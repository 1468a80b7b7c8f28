// `tavrin sandbox` and `tavrin inspect` run as processes, for what only a
// process shows: the ready line, command-line options, signals, the files
// they write and their exit codes. What the sandbox answers to the library is
// tested in-process (SandboxCollectionTest).
#include "SandboxFixture.hpp"
#include "ToolProcess.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <pty.h>
#include <sqlite3.h>
#include <sys/socket.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <sstream>

namespace tavrin::testing_support {
namespace {

using nlohmann::json;
using testing::HasSubstr;
using namespace std::chrono_literals;

// A `tavrin sandbox` on a free port, reached as its ready line says:
// "sandbox ready: --url https://HOST:PORT --resolve HOST:PORT:ADDRESS --ca-file PEM".
struct SandboxProcess {
  explicit SandboxProcess(std::vector<std::string> options = {})
      : process([&] {
          options.insert(options.begin(), {"sandbox", "--port", "0"});
          return options;
        }()),
        ready(process.readLine(60s).value_or(process.errors())) {
    if (!ready.starts_with("sandbox ready: ")) throw std::runtime_error("no ready line: " + ready);
    std::string flag;
    std::istringstream(ready) >> flag >> flag >> flag >> url >> flag >> flag >> flag >> caFile;
    port = std::stoi(url.substr(url.rfind(':') + 1));
  }

  SandboxClient client() const { return {port, caFile}; }

  ToolProcess process;
  std::string ready, url, caFile;
  int port = 0;
};

// A reply's status and title; its body instead when it has no title.
std::string summary(const SandboxClient::Reply& reply) {
  return std::to_string(reply.status) + " " + (reply.title().empty() ? reply.body : reply.title());
}

// The valid dataset with `change` made to it, as a payload.
std::string encoded(void (*change)(json&)) {
  json document = validDataset();
  change(document);
  return encodePayload(document.dump());
}

TEST(SandboxProcess, TellsHowToReachItLogsRefusalsAndStopsOnTerm) {
  SandboxProcess sandbox;
  const std::string host = "api.tavrin.com:" + std::to_string(sandbox.port);
  EXPECT_EQ(sandbox.ready, "sandbox ready: --url https://" + host + " --resolve " + host +
                               ":127.0.0.1 --ca-file " + sandbox.caFile);
  EXPECT_TRUE(std::filesystem::exists(sandbox.caFile));

  // A malformed payload is answered with the spot named and logged (the
  // validator's every problem is tested on its own), and its record number stays free.
  const std::string detail = R"(section 4: expected "MediaAlbums", got "Video")";
  auto client = sandbox.client();
  const std::string token = client.login();
  const auto refused = client.upload(token, "bad-1", encoded([](json& d) { d.erase(3); }));
  EXPECT_EQ(summary(refused), "400 dataset_invalid");
  EXPECT_THAT(refused.member("detail"), testing::StartsWith(detail));
  EXPECT_EQ(client.check(token, "bad-1").body, "true");

  // Its certificate directory is private and holds the authority alone: the
  // key stays in memory.
  const auto certificates = std::filesystem::path(sandbox.caFile).parent_path();
  EXPECT_EQ(std::filesystem::status(certificates).permissions(), std::filesystem::perms::owner_all);
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(certificates), {}), 1);

  // Clients in the middle of their requests do not hold it up.
  SlowLoris loris(sandbox.port, sandbox.caFile, "127.0.0.2", 16);
  loris.awaitServed(16);
  const auto signalled = std::chrono::steady_clock::now();
  EXPECT_EQ(sandbox.process.stop(SIGTERM), 0);
  EXPECT_LT(std::chrono::steady_clock::now() - signalled, 1s);
  EXPECT_THAT(sandbox.process.errors(),
              testing::AllOf(HasSubstr("stopped by SIGTERM"),
                             HasSubstr("record \"bad-1\": dataset_invalid: " + detail)));
  // The certificate directory it made for itself goes with it.
  EXPECT_FALSE(std::filesystem::exists(certificates));
}

TEST(SandboxProcess, LosesNoAcceptedUploadWhenKilledDuringCollections) {
  // Uploads in flight when the sandbox dies write to a closed connection.
  std::signal(SIGPIPE, SIG_IGN);
  const TemporaryDirectory directory;
  const std::string database = (directory / "uploads.db").string();
  const std::string data = encodePayload(validDataset().dump());
  std::mutex mutex;
  std::condition_variable stored;
  std::vector<std::string> accepted;
  std::filesystem::path killedCertificates;
  // Whatever ends a client, the wait for uploads hears of it instead of hanging.
  struct Finished {
    std::mutex& mutex;
    std::condition_variable& changed;
    int& count;
    ~Finished() {
      const std::lock_guard lock(mutex);
      ++count;
      changed.notify_all();
    }
  };
  for (int round = 0; round < 5; ++round) {
    SandboxProcess sandbox({"--db", database});
    // A sandbox killed outright cannot remove its certificate directory; the next one does.
    EXPECT_FALSE(!killedCertificates.empty() && std::filesystem::exists(killedCertificates));
    killedCertificates = std::filesystem::path(sandbox.caFile).parent_path();
    const std::size_t before = accepted.size();
    std::vector<std::future<void>> clients;
    int finished = 0;
    for (int c = 0; c < 2; ++c) {
      clients.push_back(std::async(std::launch::async, [&, c] {
        const Finished finishing{mutex, stored, finished};
        auto client = sandbox.client();
        const std::string token = client.login();
        for (int n = 0;; ++n) {
          const std::string record =
              std::to_string(round) + "-" + std::to_string(c) + "-" + std::to_string(n);
          if (client.upload(token, record, data).status != 200) return;
          const std::lock_guard lock(mutex);
          accepted.push_back(record);
          stored.notify_all();
        }
      }));
    }
    {
      std::unique_lock lock(mutex);
      stored.wait(lock, [&] { return accepted.size() >= before + 3 || finished == 2; });
      EXPECT_GE(accepted.size(), before + 3) << "round " << round << ": the clients stopped early";
    }
    EXPECT_EQ(sandbox.process.stop(SIGKILL), 128 + SIGKILL);
    for (auto& client : clients) client.get();
  }

  sqlite3* db = nullptr;
  ASSERT_EQ(sqlite3_open_v2(database.c_str(), &db, SQLITE_OPEN_READWRITE, nullptr), SQLITE_OK);
  const auto single = [db](const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db, sql.c_str(), -1, &statement, nullptr);
    const bool row = sqlite3_step(statement) == SQLITE_ROW;
    std::string value = row ? reinterpret_cast<const char*>(sqlite3_column_text(statement, 0)) : "";
    sqlite3_finalize(statement);
    return value;
  };
  EXPECT_EQ(single("PRAGMA integrity_check"), "ok");
  for (const auto& record : accepted) {
    EXPECT_EQ(single("SELECT accepted FROM uploads WHERE record_number = '" + record + "'"), "1")
        << record;
  }
  sqlite3_close(db);
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
  EXPECT_THAT(table.output,
              testing::AllOf(HasSubstr("record order-7: upload 1 received"), HasSubstr("accepted"),
                             HasSubstr("Contacts                     3  error"),
                             HasSubstr("verdict: valid")));

  const auto dataset = runTool({"inspect", "--db", database, "--record", "order-7", "--json"});
  EXPECT_EQ(dataset.exitCode, 0);
  EXPECT_EQ(json::parse(dataset.output), validDataset());
  const auto listing = runTool({"inspect", "--db", database});
  EXPECT_EQ(listing.exitCode, 0);
  EXPECT_THAT(listing.output, HasSubstr("order-7"));
  EXPECT_EQ(runTool({"inspect", "--db", database, "--record", "order-8"}).exitCode, 2);
  EXPECT_EQ(sandbox.process.stop(SIGINT), 0);
}

TEST(SandboxInspect, DecodesAPayloadFromStandardInput) {
  const auto valid = runTool({"inspect", "-"}, encodePayload(validDataset().dump()) + "\n");
  EXPECT_EQ(valid.exitCode, 0) << valid.errors;
  EXPECT_THAT(valid.output,
              testing::AllOf(HasSubstr("Images                       1  access denied"),
                             HasSubstr("verdict: valid")));

  // An upload's request body is read for its "data" member.
  const json body{{"recordNumber", "x"}, {"data", encoded([](json& d) { d.erase(13); })}};
  const auto invalid = runTool({"inspect"}, body.dump());
  EXPECT_EQ(invalid.exitCode, 1);
  EXPECT_THAT(invalid.output, HasSubstr("verdict: invalid: section 14: expected \"Permissions\""));
}

TEST(SandboxProcess, TakesItsLimitsAndFaultRulesFromTheCommandLine) {
  // A start-up error names what was typed, with its control characters
  // escaped so that none reaches the terminal.
  const struct {
    std::vector<std::string> arguments;
    int exitCode;
    std::string shown;
  } refusals[] = {
      {{"sandbox", "--fault", "upload:expl\x1b[2Jode"}, 2, R"("upload:expl\u001B[2Jode")"},
      {{"sandbox", "--db", "/nonexistent/\x1b[2J.db"},
       1,
       R"(cannot open /nonexistent/\u001B[2J.db)"},
  };
  for (const auto& refusal : refusals) {
    const auto refused = runTool(refusal.arguments);
    EXPECT_EQ(refused.exitCode, refusal.exitCode);
    EXPECT_THAT(refused.errors, HasSubstr(refusal.shown));
    EXPECT_THAT(refused.errors, testing::Not(HasSubstr("\x1b")));
  }

  SandboxProcess sandbox({"--max-body", "2000", "--io-timeout", "1", "--request-timeout", "2",
                          "--fault", "upload:status=401*1", "--fault", "check:error=409/busy"});
  auto client = sandbox.client();
  const std::string token = client.login();
  EXPECT_EQ(summary(client.upload(token, "big", std::string(4000, 'A'))), "413 payload_too_large");
  const std::string data = encodePayload(validDataset().dump());  // well below 2000 bytes
  EXPECT_EQ(summary(client.upload(token, "f-1", data)), "401 ");  // a bare 401
  EXPECT_EQ(client.upload(token, "f-1", data).status, 200);
  EXPECT_EQ(summary(client.check(token, "f-2")), "409 busy");

  // A client that sends nothing is cut off once the I/O timeout passes: wait
  // for that end of stream, far longer than the timeout but bounded.
  const int connection = socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{
      AF_INET, htons(static_cast<std::uint16_t>(sandbox.port)), {htonl(INADDR_LOOPBACK)}, {}};
  ASSERT_EQ(connect(connection, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  pollfd closed{connection, POLLIN, 0};
  ASSERT_EQ(poll(&closed, 1, 20000), 1);
  char byte;
  EXPECT_EQ(read(connection, &byte, 1), 0);
  close(connection);
  // One that sends a byte of its headers every tenth of a second, never idle
  // for the I/O timeout, is cut off once the request's time is up.
  SlowLoris(sandbox.port, sandbox.caFile, "127.0.0.1", 1).awaitCut(1);
  EXPECT_FALSE(client.login().empty());
  // Out of range, a limit is refused rather than wrapped around.
  EXPECT_EQ(runTool({"sandbox", "--max-dataset", "18446744073709551615"}).exitCode, 2);
}

TEST(SandboxProcess, ExpiresEveryTokenAtOnceWithZeroLifetime) {
  SandboxProcess sandbox({"--token-ttl", "0"});
  auto client = sandbox.client();
  const std::string token = client.login();
  ASSERT_FALSE(token.empty());
  EXPECT_EQ(summary(client.check(token, "r")), "401 ");  // a bare 401
}

TEST(DemoCommand, CollectsTheBuiltInPhoneIntoASandboxShowingProgressAndTheVerdict) {
  // Standard error on a pseudo-terminal, as a person at a terminal sees it; run
  // from another directory: the demonstration needs no file of the checkout.
  int terminal = -1, device = -1;
  ASSERT_EQ(openpty(&terminal, &device, nullptr, nullptr, nullptr), 0);
  ToolProcess demo({"demo", "--record", "demo-7"}, {}, std::filesystem::temp_directory_path(),
                   device);
  close(device);
  std::string shown;
  char buffer[4096];
  // Reading ends with an error once the child has exited and the terminal has no writer.
  for (ssize_t size; (size = read(terminal, buffer, sizeof buffer)) > 0;) {
    shown.append(buffer, static_cast<std::size_t>(size));
  }
  close(terminal);
  EXPECT_EQ(demo.wait(), 0) << shown;
  EXPECT_THAT(
      demo.output(),
      testing::AllOf(HasSubstr("The server answered: accepted record \"demo-7\" as upload 1"),
                     HasSubstr("JSON "), HasSubstr(" bytes -> DEFLATE "),
                     HasSubstr("Permissions                  4"),
                     testing::EndsWith("verdict: valid\n")));

  // Every update returns to the start of the line and clears it; the finished
  // line ends with a summary.
  EXPECT_THAT(shown, testing::AllOf(HasSubstr("\r\033[Ksource 1: "),
                                    HasSubstr("\r\033[Kexchange upload: HTTP 200 in "),
                                    HasSubstr("\r\033[K13 sources (")));
  EXPECT_EQ(shown.find("\nsource "), std::string::npos) << "a progress line was not rewritten";
}

}  // namespace
}  // namespace tavrin::testing_support
