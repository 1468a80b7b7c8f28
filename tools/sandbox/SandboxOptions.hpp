#pragma once

#include "DatasetValidator.hpp"
#include "FaultRule.hpp"
#include "TlsFiles.hpp"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::sandbox {

// Every bound the sandbox holds its clients to, in one place; docs/sandbox.md
// lists them with what exceeding each produces. The defaults suit a local run.
struct SandboxLimits {
  // An upload's body; a larger one, announced or chunked, gets 413 unread.
  std::size_t maxUploadBody = std::size_t{64} << 20;
  // A login's or a check's body, which holds one short string; 413 beyond.
  std::size_t maxSmallBody = 4096;
  // A request's line and headers; beyond, the request fails with 400.
  std::size_t maxRequestHead = std::size_t{64} << 10;
  // The dataset an upload inflates to, the most times its DEFLATE bytes it
  // may inflate, and the values its JSON holds; an upload beyond any is
  // refused as dataset_invalid.
  std::size_t maxDataset = DatasetValidator::defaultMaxJsonSize;
  std::size_t maxInflationRatio = DatasetValidator::defaultMaxInflationRatio;
  std::size_t maxDatasetValues = DatasetValidator::defaultMaxJsonValues;
  // A whole request, from its first byte (or the connection's handshake) to
  // the end of its body; a slower one is answered 408 and cut off.
  std::chrono::seconds requestTimeout{30};
  // A single read or write that waits longer cuts the client off.
  std::chrono::seconds ioTimeout{10};
  // An idle kept-alive connection is closed after this long.
  std::chrono::seconds idleTimeout{5};
  // Requests decoded, validated and stored at once; more wait their turn.
  std::size_t threads = 8;
  // Connections served at once from one client address; more from it wait
  // their turn, at most as long as a request may take.
  std::size_t maxConnectionsPerAddress = 32;
  // Connections served, and connections waiting, in all; more are closed at once.
  std::size_t maxConnections = 128;
  // How long a write waits for a database another connection holds; 503 beyond.
  std::chrono::milliseconds busyTimeout{2000};
  // The size the database may grow to, 0 for no limit; 507 beyond.
  std::uint64_t maxDatabaseSize = 0;
};

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
  // Where the made CA, certificate and key go; empty: only the CA is written,
  // into a private temporary directory removed with the sandbox. Ignored
  // when `tlsFiles` is given.
  std::filesystem::path certificateDirectory;
  std::optional<TlsFiles> tlsFiles;  // existing files to serve with instead
  std::string database = ":memory:";
  SandboxLimits limits;
  // Answers leave at once. Off, Nagle's algorithm holds an answer's second
  // send until the client acknowledges the first, which the client delays by
  // about 40 ms: only for measuring that delay (the hidden --tcp-delay).
  bool tcpNoDelay = true;
  std::vector<FaultRule> faults;
  // Whether the dashboard (the page at / and the API under /api/) is served.
  bool dashboard = true;
  // Receives one line per exchange and per refusal; empty: no log. Called
  // from the serving threads, one call at a time, with printable text only.
  std::function<void(const std::string&)> log;
  // The clock tokens expire by; empty: std::chrono::steady_clock.
  std::function<std::chrono::steady_clock::time_point()> clock;
};

}  // namespace tavrin::sandbox
