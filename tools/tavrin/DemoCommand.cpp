#include "Commands.hpp"

#include "DatasetReport.hpp"
#include "EmbeddedProfile.hpp"
#include "ProgressDisplay.hpp"
#include "SandboxServer.hpp"
#include "escapeControls.hpp"
#include "platform/profile/ProfilePlatform.hpp"

#include <tavrin/error.hpp>
#include <tavrin/service.hpp>

#include <unistd.h>

#include <cstdio>
#include <iostream>
#include <memory>

namespace tavrin::tool {

namespace {

struct DemoArguments {
  std::string record = "demo-1";
  std::string database = ":memory:";
  bool noWait = false;
};

constexpr const char* demoKey = "demo-key";

// Prints the sizes and the verdict of what the sandbox kept for the record.
bool showUpload(sandbox::SandboxServer& sandbox, const std::string& record) {
  const auto upload = sandbox.store().find(record);
  if (!upload) return false;
  const auto& decoded = upload->decoded;
  if (decoded.jsonSize != 0) {
    std::printf(
        "JSON %zu bytes -> DEFLATE %zu bytes (%.1f %%) -> base64 %zu bytes\n", decoded.jsonSize,
        decoded.deflateSize,
        100.0 * static_cast<double>(decoded.deflateSize) / static_cast<double>(decoded.jsonSize),
        decoded.base64Size);
  }
  std::printf("What the sandbox received and checked:\n");
  printDatasetReport(decoded);
  std::fflush(stdout);
  return decoded.valid();
}

// On a terminal, points to the dashboard and keeps the sandbox up until Enter.
void offerDashboard(const sandbox::SandboxServer& sandbox, const DemoArguments& arguments) {
  if (arguments.noWait || isatty(STDIN_FILENO) == 0) return;
  std::printf(
      "\nThe sandbox's dashboard shows this upload section by section: %s\n"
      "(your browser warns first: the sandbox's CA, %s, is not one it trusts)\n"
      "Press Enter to stop the sandbox.\n",
      sandbox.dashboardUrl().c_str(), sandbox.tlsFiles().authority.c_str());
  std::fflush(stdout);
  std::string line;
  std::getline(std::cin, line);
}

int runDemo(const DemoArguments& arguments) {
  return runReportingFailure([&] {
    sandbox::SandboxOptions sandboxOptions;
    sandboxOptions.database = arguments.database;
    sandboxOptions.authKeys = {demoKey};
    sandbox::SandboxServer sandbox(std::move(sandboxOptions));
    sandbox.start();
    std::printf("A sandbox scoring service listens on %s (TLS with a CA made just now).\n",
                sandbox.url().c_str());
    std::printf("Collecting record %s from a realistic iPhone (a built-in device profile)...\n",
                arguments.record.c_str());
    std::fflush(stdout);

    const auto progress = std::make_shared<ProgressDisplay>();
    ServiceOptions options;
    options
        .setPlatform(platform::ProfilePlatform::fromText(realisticPhoneProfile,
                                                         "iphone-realistic.json (built in)"))
        .setCaFile(sandbox.tlsFiles().authority.string())
        .setResolve({sandbox.resolve()})
        .setRequestTimeout(std::chrono::seconds(20))
        .setObserver(progress);

    std::string answer;
    try {
      TavrinService service(sandbox.url(), demoKey, options);
      answer = service.collectData(arguments.record);
    } catch (const TavrinError&) {
      // A refused upload is still kept by the sandbox, with the reason.
      progress->finish();
      showUpload(sandbox, arguments.record);
      offerDashboard(sandbox, arguments);
      throw;
    }
    progress->finish();
    std::printf("\nThe server answered: %s\n\n", escapeControls(answer).c_str());
    const bool valid = showUpload(sandbox, arguments.record);
    offerDashboard(sandbox, arguments);
    return valid ? ExitCode::success : ExitCode::otherFailure;
  });
}

}  // namespace

// The project's main job in one command: a real collection from a built-in
// phone, over real TLS, to a sandbox started in this process.
Command addDemoCommand(CLI::App& app) {
  auto* command = app.add_subcommand(
      "demo",
      "Start a sandbox scoring service in-process, collect a realistic iPhone's dataset through "
      "the real transport and TLS, and show the progress, the answer, the sizes and the verdict");
  auto arguments = std::make_shared<DemoArguments>();
  command->add_option("--record", arguments->record, "Record number of the collection")
      ->capture_default_str();
  command->add_option("--db", arguments->database,
                      "Keep the sandbox's uploads in this SQLite file (default: in memory)");
  command->add_flag("--no-wait", arguments->noWait,
                    "Stop at once, without pointing to the dashboard and waiting for Enter");
  return {command, [arguments] { return runDemo(*arguments); }};
}

}  // namespace tavrin::tool
