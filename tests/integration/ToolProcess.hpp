#pragma once

#include "TemporaryDirectory.hpp"

#include <spawn.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::testing_support {

// Starts the `tavrin` tool with these arguments and file actions; -1 when it cannot.
pid_t spawnTool(const std::vector<std::string>& arguments,
                const posix_spawn_file_actions_t& actions);

// The `tavrin` tool run as a child process: standard input from a string,
// standard output read through a pipe, standard error kept in a file.
class ToolProcess {
 public:
  // Starts the tool with these arguments, in `directory` when one is given.
  explicit ToolProcess(const std::vector<std::string>& arguments, const std::string& input = {},
                       const std::filesystem::path& directory = {});
  // Kills the process if it still runs.
  ~ToolProcess();
  ToolProcess(const ToolProcess&) = delete;
  ToolProcess& operator=(const ToolProcess&) = delete;

  // The next line of standard output, waiting at most `timeout`; nothing when
  // the output ends or the time runs out.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  // Sends the signal and waits for the exit; returns the exit code, or 128 + N
  // for a process ended by signal N.
  int stop(int signal = SIGTERM);
  // Waits for the exit, reading standard output to its end.
  int wait();
  // What the process wrote to standard output after the lines already read.
  const std::string& output() const { return _output; }
  // What the process wrote to standard error so far.
  std::string errors() const { return readFile(_scratch / "stderr"); }

 private:
  TemporaryDirectory _scratch;  // holds standard input and standard error
  pid_t _pid = -1;
  int _stdout = -1;
  std::string _output;
  std::optional<int> _exitCode;
};

struct ToolRun {
  int exitCode;
  std::string output;
  std::string errors;
};

// Runs the tool to its end.
ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input = {},
                const std::filesystem::path& directory = {});

}  // namespace tavrin::testing_support
