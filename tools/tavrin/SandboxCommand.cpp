#include "Commands.hpp"

#include "SandboxServer.hpp"
#include "platform/profile/printableExcerpt.hpp"

#include <csignal>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace tavrin::tool {

namespace {

struct SandboxArguments {
  sandbox::SandboxOptions options;
  long tokenLifetime = 3600;
  long requestTimeout = 30;
  long ioTimeout = 10;
  long idleTimeout = 5;
  long busyTimeout = 2000;
  std::string tlsCertificate, tlsKey, caFile, certificateDirectory;
  std::vector<std::string> keys, faults;
  bool noUi = false;
};

// An option whose default is shown and whose value is bounded, so that no
// arithmetic on a limit can overflow.
template <typename T>
void bounded(CLI::App* command, const char* name, T& value, const char* help, T low, T high) {
  command->add_option(name, value, help)->capture_default_str()->check(CLI::Range(low, high));
}

// The signals that stop the sandbox in order, removing what it made.
sigset_t stopSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&signals, signal);
  return signals;
}

int runSandbox(SandboxArguments& arguments) {
  auto& options = arguments.options;
  try {
    for (const auto& fault : arguments.faults) {
      options.faults.push_back(sandbox::parseFaultRule(fault));
    }
  } catch (const std::invalid_argument& error) {
    std::cerr << "error: " << platform::printableExcerpt(error.what(), 1024) << '\n';
    return 2;
  }
  if (!arguments.keys.empty()) options.authKeys = arguments.keys;
  options.tokenLifetime = std::chrono::seconds(arguments.tokenLifetime);
  options.limits.requestTimeout = std::chrono::seconds(arguments.requestTimeout);
  options.limits.ioTimeout = std::chrono::seconds(arguments.ioTimeout);
  options.limits.idleTimeout = std::chrono::seconds(arguments.idleTimeout);
  options.limits.busyTimeout = std::chrono::milliseconds(arguments.busyTimeout);
  options.certificateDirectory = arguments.certificateDirectory;
  options.dashboard = !arguments.noUi;
  if (!arguments.tlsCertificate.empty()) {
    options.tlsFiles =
        sandbox::TlsFiles{arguments.tlsCertificate, arguments.tlsKey, arguments.caFile};
  }
  options.log = [](const std::string& line) { std::cerr << "sandbox: " << line << std::endl; };

  // The serving threads inherit this mask, so the signals reach only the wait
  // below and the sandbox stops in order: every wait of a request in flight
  // ends at once, and a temporary certificate directory is removed.
  const sigset_t signals = stopSignals();
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);

  std::unique_ptr<sandbox::SandboxServer> server;
  try {
    server = std::make_unique<sandbox::SandboxServer>(options);
  } catch (const std::exception& error) {
    // The messages name the database's path and the files given, as typed.
    std::cerr << "error: " << platform::printableExcerpt(error.what(), 1024) << '\n';
    return 1;
  }
  server->start();
  std::cout << "sandbox ready: " << server->clientOptions() << std::endl;
  if (options.dashboard)
    std::cerr << "sandbox: dashboard at " << server->dashboardUrl() << std::endl;
  int received = 0;
  sigwait(&signals, &received);
  server->stop();
  server.reset();
  std::cerr << "sandbox: stopped by SIG" << sigabbrev_np(received) << std::endl;
  return 0;
}

}  // namespace

// Runs the sandbox scoring service until SIGINT or SIGTERM.
Command addSandboxCommand(CLI::App& app) {
  auto* command = app.add_subcommand(
      "sandbox",
      "Run a local stand-in for the scoring service: HTTPS on loopback, every upload validated "
      "and stored, faults on demand (docs/sandbox.md)");
  auto arguments = std::make_shared<SandboxArguments>();
  auto& options = arguments->options;
  command->add_option("--host", options.hostName, "Service host name of the certificate")
      ->capture_default_str();
  command->add_option("--bind", options.bindAddress, "Address to listen on")->capture_default_str();
  command->add_option("--port", options.port, "Port to listen on; 0 picks a free one")
      ->capture_default_str()
      ->check(CLI::Range(0, 65535));
  command->add_option("--key", arguments->keys,
                      "An authentication key that logs in (repeatable; default: sandbox-key)");
  command->add_option("--token-type", options.tokenType, "Token type issued at login")
      ->capture_default_str();
  bounded(command, "--token-ttl", arguments->tokenLifetime,
          "Seconds an issued token is honoured; 0 expires it at once", 0L, 10L * 366 * 86400);
  command->add_option("--cert-dir", arguments->certificateDirectory,
                      "Directory for the made CA and certificate (default: a temporary one)");
  auto* certificate = command
                          ->add_option("--tls-cert", arguments->tlsCertificate,
                                       "Serve with this certificate (PEM) instead")
                          ->check(CLI::ExistingFile);
  auto* key = command->add_option("--tls-key", arguments->tlsKey, "Private key of --tls-cert")
                  ->check(CLI::ExistingFile);
  auto* authority =
      command->add_option("--ca-file", arguments->caFile, "CA of --tls-cert, told to clients")
          ->check(CLI::ExistingFile);
  certificate->needs(key, authority);
  key->needs(certificate);
  authority->needs(certificate);
  command->add_option("--db", options.database, "SQLite database file of the uploads")
      ->capture_default_str();
  constexpr std::size_t gib = std::size_t{1} << 30;
  auto& limits = options.limits;
  bounded(command, "--max-body", limits.maxUploadBody,
          "Largest upload body in bytes, chunked or not (413 above)", std::size_t{1}, 4 * gib);
  bounded(command, "--max-dataset", limits.maxDataset, "Largest inflated dataset in bytes",
          std::size_t{1}, 16 * gib);
  bounded(command, "--max-inflation-ratio", limits.maxInflationRatio,
          "Most times its DEFLATE bytes a dataset may inflate to, beyond 1 MiB", std::size_t{1},
          gib);
  bounded(command, "--max-json-values", limits.maxDatasetValues,
          "Most values a dataset's JSON may hold", std::size_t{1}, gib);
  bounded(command, "--request-timeout", arguments->requestTimeout,
          "Seconds a whole request (headers and body) may take to arrive", 1L, 86400L);
  bounded(command, "--io-timeout", arguments->ioTimeout,
          "Seconds a client may send or take nothing", 1L, 86400L);
  bounded(command, "--idle-timeout", arguments->idleTimeout,
          "Seconds an idle kept-alive connection stays open", 1L, 86400L);
  bounded(command, "--threads", limits.threads, "Requests processed at once", std::size_t{1},
          std::size_t{1024});
  bounded(command, "--max-connections", limits.maxConnections,
          "Connections served, and connections waiting, in all", std::size_t{1}, std::size_t{4096});
  bounded(command, "--max-connections-per-address", limits.maxConnectionsPerAddress,
          "Connections served at once from one client address", std::size_t{1}, std::size_t{4096});
  bounded(command, "--busy-timeout", arguments->busyTimeout,
          "Milliseconds a write waits for a database another process holds (503 after)", 0L,
          60000L);
  bounded(command, "--max-db-size", limits.maxDatabaseSize,
          "Largest size of the database in bytes; 0: no limit (507 beyond)", std::uint64_t{0},
          std::uint64_t{1} << 50);
  command->add_flag("--no-ui", arguments->noUi,
                    "Serve no dashboard (the page at / and the API under /api/)");
  // Hidden: brings back the delay of Nagle's algorithm, for measuring it.
  command->add_flag_callback("--tcp-delay", [&options] { options.tcpNoDelay = false; })->group("");
  command->add_option("--fault", arguments->faults,
                      "A fault rule TARGET:ACTION[*TIMES] (repeatable; see docs/sandbox.md)");
  return {command, [arguments] { return runSandbox(*arguments); }};
}

}  // namespace tavrin::tool
