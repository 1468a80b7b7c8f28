#pragma once

#include "DatasetValidator.hpp"
#include "ExchangeLog.hpp"
#include "SandboxStore.hpp"
#include "StopSignal.hpp"

#include <nlohmann/json_fwd.hpp>

#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <semaphore>

namespace httplib {
class Server;
}  // namespace httplib

namespace tavrin::sandbox {

// The dashboard on the sandbox's own port: the page at / (HTML, CSS and
// JavaScript built into the binary) and the JSON API under /api/ that it
// reads, documented in docs/sandbox.md. Live updates are long polls of the
// exchange log that end within the request timeout, so a watching page holds
// one connection for a bounded time and never starves the clients'.
class Dashboard {
 public:
  // Registers the routes on `router`. Inflating a stored upload takes one of
  // `permits`, like a request that decodes one; `longestPoll` bounds a poll.
  Dashboard(httplib::Server& router, const SandboxStore& store, const DatasetValidator& validator,
            const ExchangeLog& exchanges, std::counting_semaphore<>& permits,
            const StopSignal& stop, std::chrono::seconds longestPoll);
  ~Dashboard();
  Dashboard(const Dashboard&) = delete;
  Dashboard& operator=(const Dashboard&) = delete;

 private:
  // Decodes a stored upload's payload again, for its JSON; refuses one that
  // does not inflate.
  DecodedPayload inflate(const StoredUpload& upload);
  // The parsed dataset of an upload; the last one asked for is kept, as a
  // page reads its sections one after another.
  std::shared_ptr<const nlohmann::json> dataset(const StoredUpload& upload);

  const SandboxStore& _store;
  const DatasetValidator& _validator;
  const ExchangeLog& _exchanges;
  std::counting_semaphore<>& _permits;
  const StopSignal& _stop;
  std::chrono::seconds _longestPoll;

  std::mutex _mutex;  // guards what follows
  std::int64_t _cachedId = 0;
  std::shared_ptr<const nlohmann::json> _cached;
};

}  // namespace tavrin::sandbox
