#pragma once

#include "ExchangeTimes.hpp"
#include "SandboxServer.hpp"

#include "net/CurlTransport.hpp"

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace tavrin::sandbox {

// How to load a sandbox: many clients of the library at once, each logging in
// and then checking and uploading datasets as fast as it is answered.
struct LoadOptions {
  std::size_t clients = 32;
  std::chrono::milliseconds duration{30000};
  // Every this many uploads a client repeats a record number it already used
  // (the check refuses it), and every that many it sends a corrupted payload
  // (the upload refuses it): refusals under load must carry their reason too.
  std::size_t repeatEvery = 10;
  std::size_t corruptEvery = 13;
  // Each client goes on past the duration until it has made this many
  // requests, so that a short run on a slow machine still meets every case.
  std::size_t minimumRequests = 0;
  // How often the process's resident memory is sampled.
  std::chrono::milliseconds sampleEvery{250};
  // Whether each client keeps its connection, as the library does.
  CurlTransport::Connections connections = CurlTransport::Connections::kept;
};

// What one client request came to.
struct LoadOutcome {
  enum class Kind {
    accepted,        // the upload's answer arrived
    refusedAtCheck,  // the check said the record number is taken
    refused,         // the upload was answered with an error
    failed,          // anything else: a transport failure, an unexpected error
  };
  Kind kind = Kind::failed;
  std::string recordNumber;
  std::size_t payload = 0;  // index into the payloads given
  bool corrupted = false;   // the payload was deliberately broken
  std::string answer;       // the answer, or the error's kind and message
};

struct LoadResult {
  std::chrono::nanoseconds elapsed{};
  std::vector<LoadOutcome> outcomes;
  std::size_t uploadedBytes = 0;  // base64 of the accepted uploads
  ExchangeTimes exchangeTimes;    // of every client's answered exchanges
  // The process's resident bytes over the run: the first sample is taken
  // before any client starts.
  std::vector<std::size_t> residentSamples;
};

// Runs the clients against the running sandbox, each cycling through the
// payloads (base64 of raw-DEFLATE dataset JSON) from its own starting point,
// with record numbers "load-CLIENT-N". Blocks for the duration, then waits for
// the requests in flight.
LoadResult runSandboxLoad(const SandboxServer& server, const std::string& authKey,
                          const std::vector<std::string>& payloads, const LoadOptions& options);

// What the sandbox kept of a load run, checked against what the clients saw.
struct LoadVerdict {
  std::size_t accepted = 0, storedAsSent = 0;      // uploads answered, and found stored intact
  std::size_t refused = 0, refusedWithReason = 0;  // refusals, and those with their reason
  std::vector<std::string> problems;               // every outcome that does not hold up
};

// Reads every accepted upload back from the store and compares its payload
// with the one sent (`payloads[i]`); checks that each refusal has its reason:
// the check's answer, or the problem the store noted for a corrupted upload;
// and lists every failure.
LoadVerdict verifyLoad(const LoadResult& result, const SandboxStore& store,
                       const std::vector<std::string>& payloads);

}  // namespace tavrin::sandbox
