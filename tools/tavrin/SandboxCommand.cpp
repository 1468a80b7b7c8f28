#include "Commands.hpp"

#include "SandboxServer.hpp"

#include <csignal>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace tavrin::tool {

namespace {

struct SandboxArguments {
  sandbox::SandboxOptions options;
  long tokenLifetime = 3600;
  long ioTimeout = 10;
  long idleTimeout = 5;
  std::string tlsCertificate, tlsKey, caFile, certificateDirectory;
  std::vector<std::string> keys, faults;
};

int runSandbox(SandboxArguments& arguments) {
  auto& options = arguments.options;
  try {
    for (const auto& fault : arguments.faults) {
      options.faults.push_back(sandbox::parseFaultRule(fault));
    }
  } catch (const std::invalid_argument& error) {
    std::cerr << "error: " << error.what() << '\n';
    return 2;
  }
  if (!arguments.keys.empty()) options.authKeys = arguments.keys;
  options.tokenLifetime = std::chrono::seconds(arguments.tokenLifetime);
  options.ioTimeout = std::chrono::seconds(arguments.ioTimeout);
  options.idleTimeout = std::chrono::seconds(arguments.idleTimeout);
  options.certificateDirectory = arguments.certificateDirectory;
  if (!arguments.tlsCertificate.empty()) {
    options.tlsFiles =
        sandbox::TlsFiles{arguments.tlsCertificate, arguments.tlsKey, arguments.caFile};
  }
  options.log = [](const std::string& line) { std::cerr << "sandbox: " << line << std::endl; };

  // The serving threads inherit this mask, so the two signals reach only the
  // wait below and the sandbox stops in order.
  sigset_t stopSignals;
  sigemptyset(&stopSignals);
  sigaddset(&stopSignals, SIGINT);
  sigaddset(&stopSignals, SIGTERM);
  pthread_sigmask(SIG_BLOCK, &stopSignals, nullptr);

  std::unique_ptr<sandbox::SandboxServer> server;
  try {
    server = std::make_unique<sandbox::SandboxServer>(options);
  } catch (const std::exception& error) {
    std::cerr << "error: " << error.what() << '\n';
    return 1;
  }
  server->start();
  std::cout << "sandbox ready: " << server->clientOptions() << std::endl;
  int received = 0;
  sigwait(&stopSignals, &received);
  server->stop();
  std::cerr << "sandbox: stopped by " << (received == SIGINT ? "SIGINT" : "SIGTERM") << std::endl;
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
  command
      ->add_option("--token-ttl", arguments->tokenLifetime,
                   "Seconds an issued token is honoured; 0 expires it at once")
      ->capture_default_str()
      ->check(CLI::NonNegativeNumber);
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
  command
      ->add_option("--max-body", options.maxBodySize, "Largest request body in bytes (413 above)")
      ->capture_default_str();
  command->add_option("--max-dataset", options.maxDatasetSize, "Largest inflated dataset in bytes")
      ->capture_default_str();
  command
      ->add_option("--io-timeout", arguments->ioTimeout,
                   "Seconds a client may send or take nothing")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  command
      ->add_option("--idle-timeout", arguments->idleTimeout,
                   "Seconds an idle kept-alive connection stays open")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  command->add_option("--threads", options.threads, "Connections served at once")
      ->capture_default_str()
      ->check(CLI::PositiveNumber);
  // Hidden: brings back the delay of Nagle's algorithm, for measuring it.
  command->add_flag_callback("--tcp-delay", [&options] { options.tcpNoDelay = false; })->group("");
  command->add_option("--fault", arguments->faults,
                      "A fault rule TARGET:ACTION[*TIMES] (repeatable; see docs/sandbox.md)");
  return {command, [arguments] { return runSandbox(*arguments); }};
}

}  // namespace tavrin::tool
