#pragma once

#include <CLI/CLI.hpp>

#include <tavrin/options.hpp>

#include <functional>
#include <memory>
#include <string>

namespace tavrin::tool {

// A subcommand registered on the application, and the action that runs it
// once its options are parsed; the action returns the process's exit code.
struct Command {
  CLI::App* options;
  std::function<int()> run;
};

// Exit codes shared by the subcommands.
namespace ExitCode {
constexpr int success = 0;
constexpr int otherFailure = 1;  // anything else, e.g. an output file that cannot be written
constexpr int usage = 2;
constexpr int badProfile = 3;        // the device profile cannot be loaded
constexpr int output = 4;            // the output cannot be written
constexpr int tavrinErrorBase = 10;  // plus the error kind's raw value
constexpr int jsonWrite = 20;
}  // namespace ExitCode

// The device a subcommand reads: a device profile, or this Linux machine,
// whose stores not yet decided `grant` answers ("all", "none" or "ask").
struct DeviceChoice {
  std::string profile;
  std::string grant = "none";
};
// Adds --profile and --grant to a subcommand.
void addDeviceOptions(CLI::App& command, DeviceChoice& choice);
// Sets the profile's platform, or this machine's consent, on `options`.
// Throws platform::DeviceProfileError.
void chooseDevice(const DeviceChoice& choice, ServiceOptions& options);

// Runs `step` (a collection, or what leads to one) and returns its exit code;
// when it throws, prints the failure as one line on standard error ("error:
// KIND" or "error: KIND: MESSAGE" for a TavrinError) and returns the failure's
// exit code.
int runReportingFailure(const std::function<int()>& step);

Command addCollectCommand(CLI::App& app);
Command addDatasetCommand(CLI::App& app);
Command addSandboxCommand(CLI::App& app);
Command addInspectCommand(CLI::App& app);
Command addDemoCommand(CLI::App& app);
Command addProfileCommand(CLI::App& app);

}  // namespace tavrin::tool
