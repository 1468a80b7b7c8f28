// The sandbox under load: many clients of the library checking and uploading
// typical datasets at once. Every accepted upload must be stored as it was
// sent, every refusal must carry its reason, nothing may fail, and the
// process's memory must level off rather than grow with the uploads. Short
// here; `make bench` runs it with 32 clients for 30 seconds (the load
// benchmark), and TAVRIN_LOAD_CLIENTS and TAVRIN_LOAD_SECONDS lengthen it here.

#include "SandboxLoad.hpp"
#include "TemporaryDirectory.hpp"

#include "generator/OfflineCollection.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>

namespace tavrin {
namespace {

using sandbox::LoadOutcome;

std::size_t fromEnvironment(const char* name, std::size_t fallback) {
  const char* text = std::getenv(name);
  return text != nullptr ? static_cast<std::size_t>(std::strtoul(text, nullptr, 10)) : fallback;
}

TEST(SandboxLoad, StoresEveryAcceptedUploadAndGivesEveryRefusalItsReason) {
  // Four typical phones; each client cycles through their datasets.
  const auto payloads = tool::collectTypicalPhones(4).payloads;

  testing_support::TemporaryDirectory directory;
  sandbox::SandboxOptions serverOptions;
  // On disk: an in-memory store would grow with every upload by design.
  serverOptions.database = (directory.path() / "load.db").string();
  sandbox::SandboxServer server(std::move(serverOptions));
  server.start();

  sandbox::LoadOptions load;
  load.clients = fromEnvironment("TAVRIN_LOAD_CLIENTS", 8);
  load.duration = std::chrono::seconds(fromEnvironment("TAVRIN_LOAD_SECONDS", 3));
  // Short runs make few uploads a client, so refusals come sooner.
  load.repeatEvery = 3;
  load.corruptEvery = 4;
  load.minimumRequests = 4;
  const auto result = sandbox::runSandboxLoad(server, "sandbox-key", payloads, load);
  server.stop();

  const auto verdict = sandbox::verifyLoad(result, server.store(), payloads);
  for (const auto& problem : verdict.problems) ADD_FAILURE() << problem;
  EXPECT_GT(verdict.accepted, 0U);
  EXPECT_EQ(verdict.storedAsSent, verdict.accepted);
  const auto count = [&](LoadOutcome::Kind kind) {
    return std::count_if(result.outcomes.begin(), result.outcomes.end(),
                         [kind](const LoadOutcome& o) { return o.kind == kind; });
  };
  EXPECT_GT(count(LoadOutcome::Kind::refusedAtCheck), 0);
  EXPECT_GT(count(LoadOutcome::Kind::refused), 0);
  EXPECT_EQ(verdict.refusedWithReason, verdict.refused);
  EXPECT_EQ(server.counts().uploads, static_cast<std::size_t>(count(LoadOutcome::Kind::accepted) +
                                                              count(LoadOutcome::Kind::refused)));

  // Memory levels off: the last third of the run holds no more than the first
  // two thirds reached, give or take what one more request in flight holds.
  const auto& samples = result.residentSamples;
  ASSERT_GE(samples.size(), 3U);
  const auto split = samples.begin() + static_cast<std::ptrdiff_t>(samples.size() * 2 / 3);
  const std::size_t earlier = *std::max_element(samples.begin(), split);
  const std::size_t later = *std::max_element(split, samples.end());
  const std::size_t slack = 64 << 20;
  EXPECT_LE(later, earlier + slack) << "resident memory kept growing";
}

}  // namespace
}  // namespace tavrin
