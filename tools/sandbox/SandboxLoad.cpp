#include "SandboxLoad.hpp"
#include "ResidentMemory.hpp"

#include "net/CurlTransport.hpp"
#include "net/RestService.hpp"

#include <tavrin/error.hpp>

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

namespace tavrin::sandbox {

namespace {

using Clock = std::chrono::steady_clock;

std::string describe(const TavrinError& error) {
  return std::string(errorTypeName(error.getErrorType())) + ": " +
         error.getErrorMessage().value_or("(no message)");
}

// What one client did.
struct ClientRun {
  std::vector<LoadOutcome> outcomes;
  ExchangeTimes times;
};

// One client's loop: log in, then check and upload until the deadline.
ClientRun runClient(std::size_t client, const SandboxServer& server, const std::string& authKey,
                    const std::vector<std::string>& payloads, const LoadOptions& options,
                    Clock::time_point deadline) {
  ServiceOptions transportOptions;
  transportOptions.caFile = server.tlsFiles().authority.string();
  transportOptions.resolve = {server.resolve()};
  ClientRun run;
  auto& outcomes = run.outcomes;
  ExchangeRecorder recorder;
  RestService rest(server.url(),
                   std::make_unique<CurlTransport>(transportOptions, options.connections));
  rest.setObserver(&recorder);
  try {
    rest.login(authKey);
  } catch (const TavrinError& error) {
    outcomes.push_back({LoadOutcome::Kind::failed, "", 0, false, "login " + describe(error)});
    return run;
  }

  std::string lastAccepted;
  for (std::size_t n = 1; Clock::now() < deadline || n <= options.minimumRequests; ++n) {
    LoadOutcome outcome;
    outcome.payload = (client + n) % payloads.size();
    const bool repeat = n % options.repeatEvery == 0 && !lastAccepted.empty();
    outcome.corrupted = !repeat && n % options.corruptEvery == 0;
    outcome.recordNumber =
        repeat ? lastAccepted : "load-" + std::to_string(client) + "-" + std::to_string(n);
    try {
      if (!rest.withRelogin([&] { return rest.checkUniqueness(outcome.recordNumber); })) {
        outcome.kind = LoadOutcome::Kind::refusedAtCheck;
        outcome.answer = "record number taken";
      } else {
        std::string payload = payloads[outcome.payload];
        // A character outside the base64 alphabet: the dataset cannot be read.
        if (outcome.corrupted) payload[payload.size() / 2] = '*';
        outcome.answer =
            rest.withRelogin([&] { return rest.upload(payload, outcome.recordNumber); });
        outcome.kind = LoadOutcome::Kind::accepted;
        lastAccepted = outcome.recordNumber;
      }
    } catch (const TavrinError& error) {
      const bool refusedByServer = error.getErrorType() == ErrorType::invalidInput ||
                                   error.getErrorType() == ErrorType::serverRejected;
      outcome.kind = refusedByServer ? LoadOutcome::Kind::refused : LoadOutcome::Kind::failed;
      outcome.answer = describe(error);
    }
    outcomes.push_back(std::move(outcome));
  }
  run.times = std::move(recorder.times);
  return run;
}

}  // namespace

LoadResult runSandboxLoad(const SandboxServer& server, const std::string& authKey,
                          const std::vector<std::string>& payloads, const LoadOptions& options) {
  LoadResult result;
  result.residentSamples.push_back(ResidentMemory::current());

  // The sampler wakes on its period, or at once when the clients are done.
  std::mutex mutex;
  std::condition_variable done;
  bool finished = false;
  std::thread sampler([&] {
    std::unique_lock lock(mutex);
    while (!done.wait_for(lock, options.sampleEvery, [&] { return finished; })) {
      result.residentSamples.push_back(ResidentMemory::current());
    }
  });

  const auto start = Clock::now();
  const auto deadline = start + options.duration;
  std::vector<ClientRun> perClient(options.clients);
  {
    std::vector<std::jthread> clients;
    for (std::size_t c = 0; c < options.clients; ++c) {
      clients.emplace_back(
          [&, c] { perClient[c] = runClient(c, server, authKey, payloads, options, deadline); });
    }
  }
  result.elapsed = Clock::now() - start;
  {
    std::lock_guard lock(mutex);
    finished = true;
  }
  done.notify_one();
  sampler.join();

  for (auto& [outcomes, times] : perClient) {
    result.exchangeTimes.append(times);
    for (auto& outcome : outcomes) {
      if (outcome.kind == LoadOutcome::Kind::accepted) {
        result.uploadedBytes += payloads[outcome.payload].size();
      }
      result.outcomes.push_back(std::move(outcome));
    }
  }
  return result;
}

LoadVerdict verifyLoad(const LoadResult& result, const SandboxStore& store,
                       const std::vector<std::string>& payloads) {
  LoadVerdict verdict;
  for (const auto& outcome : result.outcomes) {
    const std::string what = outcome.recordNumber + ": ";
    switch (outcome.kind) {
      case LoadOutcome::Kind::accepted: {
        ++verdict.accepted;
        const auto stored = store.find(outcome.recordNumber);
        if (stored && stored->accepted && stored->payload == payloads[outcome.payload]) {
          ++verdict.storedAsSent;
        } else {
          verdict.problems.push_back(what + "accepted but not stored as sent");
        }
        break;
      }
      case LoadOutcome::Kind::refusedAtCheck:
        // The record number is held by the upload that took it.
        ++verdict.refused;
        if (const auto taken = store.find(outcome.recordNumber); taken && taken->accepted) {
          ++verdict.refusedWithReason;
        } else {
          verdict.problems.push_back(what + "refused as taken, but no upload holds it");
        }
        break;
      case LoadOutcome::Kind::refused: {
        ++verdict.refused;
        const auto stored = store.find(outcome.recordNumber);
        if (outcome.corrupted && stored && !stored->accepted && stored->decoded.problem &&
            !stored->decoded.problem->empty()) {
          ++verdict.refusedWithReason;
        } else {
          verdict.problems.push_back(what + "refused without a stored reason: " + outcome.answer);
        }
        break;
      }
      case LoadOutcome::Kind::failed:
        verdict.problems.push_back(what + "failed: " + outcome.answer);
        break;
    }
  }
  return verdict;
}

}  // namespace tavrin::sandbox
