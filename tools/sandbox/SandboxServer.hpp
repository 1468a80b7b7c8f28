#pragma once

#include "DatasetValidator.hpp"
#include "FaultRule.hpp"
#include "SandboxStore.hpp"
#include "TlsFiles.hpp"

#include <atomic>
#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

namespace httplib {
class SSLServer;
struct Request;
struct Response;
}  // namespace httplib

namespace tavrin::sandbox {

// How a sandbox is set up. Every field has a default that suits a local run.
struct SandboxOptions {
  // The service host name its certificate is made for; clients resolve it to
  // the bound address.
  std::string hostName = "api.tavrin.com";
  std::string bindAddress = "127.0.0.1";
  int port = 0;  // 0: a free port chosen by the system
  // Keys that log in; any other key is answered with auth_key_invalid.
  std::vector<std::string> authKeys = {"sandbox-key"};
  std::string tokenType = "Bearer";
  // How long an issued token is honoured; an expired one gets a bare 401.
  std::chrono::seconds tokenLifetime{3600};
  // Where the made CA and certificate go; empty: a fresh temporary directory,
  // removed with the sandbox. Ignored when `tlsFiles` is given.
  std::filesystem::path certificateDirectory;
  std::optional<TlsFiles> tlsFiles;  // existing files to serve with instead
  std::string database = ":memory:";
  std::size_t maxBodySize = std::size_t{64} << 20;  // larger request bodies get 413
  std::size_t maxDatasetSize = DatasetValidator::defaultMaxJsonSize;  // inflated JSON bound
  // A client that sends or takes nothing for this long is cut off.
  std::chrono::seconds ioTimeout{10};
  // An idle kept-alive connection is closed after this long.
  std::chrono::seconds idleTimeout{5};
  std::size_t threads = 8;  // requests served at once
  std::vector<FaultRule> faults;
  // Receives one line per exchange and per refusal; empty: no log. Called
  // from the serving threads, one call at a time.
  std::function<void(const std::string&)> log;
  // The clock tokens expire by; empty: std::chrono::steady_clock.
  std::function<std::chrono::steady_clock::time_point()> clock;
};

// How many requests of each exchange the sandbox received.
struct ExchangeCounts {
  std::size_t logins = 0;
  std::size_t checks = 0;
  std::size_t uploads = 0;
};

// A local stand-in for the scoring service: the three exchanges over HTTPS
// on a loopback port, every upload validated and stored, and scripted faults.
class SandboxServer {
 public:
  // Makes (or loads) the TLS files, opens the store and binds the port.
  // Throws std::runtime_error when any of these fails.
  explicit SandboxServer(SandboxOptions options);
  // Stops serving and removes a temporary certificate directory.
  ~SandboxServer();
  SandboxServer(const SandboxServer&) = delete;
  SandboxServer& operator=(const SandboxServer&) = delete;

  // Serves on a background thread until stop(); returns at once.
  void start();
  // Stops accepting, releases held requests and waits for the serving thread.
  void stop();

  int port() const { return _port; }
  // The base URL a client uses, for example https://api.tavrin.com:41234.
  std::string url() const;
  // The resolve override that sends the host name here: HOST:PORT:ADDRESS.
  std::string resolve() const;
  const TlsFiles& tlsFiles() const { return _tlsFiles; }
  // The line that tells a client how to reach the sandbox, as options of
  // `tavrin collect`: "--url URL --resolve HOST:PORT:ADDRESS --ca-file PEM".
  std::string clientOptions() const;

  SandboxStore& store() { return _store; }
  ExchangeCounts counts() const;
  // Adds a fault rule after the configured ones.
  void addFault(FaultRule rule);

 private:
  struct Answer;

  void serve(Exchange exchange, const httplib::Request& request, httplib::Response& response);
  Answer login(const httplib::Request& request);
  Answer check(const httplib::Request& request);
  Answer upload(const httplib::Request& request);
  bool authorized(const httplib::Request& request);
  std::optional<FaultRule> takeFault(Exchange exchange);
  Answer injected(const FaultRule& rule, const httplib::Request& request);
  // Sends `text` as the response's body one byte a second, until it is all sent,
  // the client hangs up or the sandbox stops.
  void drip(httplib::Response& response, std::string text);
  std::string issueToken();
  std::chrono::steady_clock::time_point now() const;
  void log(const std::string& line);

  // A directory the sandbox made for itself and removes when it goes.
  struct OwnedDirectory {
    std::filesystem::path path;
    OwnedDirectory() = default;
    OwnedDirectory(const OwnedDirectory&) = delete;
    OwnedDirectory& operator=(const OwnedDirectory&) = delete;
    ~OwnedDirectory();
  };

  static TlsFiles prepareTlsFiles(const SandboxOptions& options, OwnedDirectory& temporary);

  SandboxOptions _options;
  OwnedDirectory _temporaryDirectory;
  TlsFiles _tlsFiles;
  SandboxStore _store;
  DatasetValidator _validator;
  std::unique_ptr<httplib::SSLServer> _server;
  int _port = 0;
  int _listeningSocket = -1;
  std::thread _thread;
  std::atomic<bool> _stopping{false};
  std::atomic<bool> _listenEnded{false};

  mutable std::mutex _mutex;  // guards what follows
  std::map<std::string, std::chrono::steady_clock::time_point> _tokens;
  std::vector<FaultRule> _faults;
  ExchangeCounts _counts;
  std::mutex _logMutex;
};

}  // namespace tavrin::sandbox
