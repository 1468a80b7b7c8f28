#pragma once

#include <CLI/CLI.hpp>

#include <functional>

namespace tavrin::tool {

// A subcommand registered on the application, and the action that runs it
// once its options are parsed; the action returns the process's exit code.
struct Command {
  CLI::App* options;
  std::function<int()> run;
};

Command addExampleCommand(CLI::App& app);
Command addSandboxCommand(CLI::App& app);
Command addInspectCommand(CLI::App& app);

}  // namespace tavrin::tool
