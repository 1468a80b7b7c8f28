#include "Commands.hpp"

#include <exception>
#include <iostream>
#include <vector>

namespace {

int runTool(int argc, char** argv) {
  CLI::App app{"tavrin: the tavrinsdk command-line tool"};
  app.require_subcommand(1);

  const std::vector<tavrin::tool::Command> commands{
      tavrin::tool::addCollectCommand(app), tavrin::tool::addDatasetCommand(app),
      tavrin::tool::addSandboxCommand(app), tavrin::tool::addInspectCommand(app),
      tavrin::tool::addDemoCommand(app),    tavrin::tool::addProfileCommand(app),
  };

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    // Help is a success; every other parse failure is a usage error.
    return app.exit(error) == 0 ? 0 : tavrin::tool::ExitCode::usage;
  }
  for (const auto& command : commands) {
    if (command.options->parsed()) return command.run();
  }
  return tavrin::tool::ExitCode::usage;
}

}  // namespace

int main(int argc, char** argv) {
  // A command reports its own failures; anything that still escapes one ends
  // the tool with a message rather than an abort.
  try {
    return runTool(argc, argv);
  } catch (const std::exception& error) {
    std::cerr << "error: " << error.what() << '\n';
  } catch (...) {
    std::cerr << "error: an unknown failure\n";
  }
  return tavrin::tool::ExitCode::otherFailure;
}
