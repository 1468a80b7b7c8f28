#pragma once

#include "TemporaryDirectory.hpp"

#include <sys/types.h>

#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavrin::testing_support {

// The `tavrin` tool run as a child process: standard input from a string,
// standard output read through a pipe, standard error kept in a file.
class ToolProcess {
 public:
  // Starts the tool with these arguments, in `directory` when one is given, with
  // standard error on the descriptor `errors` when one is given, and the
  // "NAME=VALUE" entries of `environment` added to this process's environment.
  explicit ToolProcess(const std::vector<std::string>& arguments, const std::string& input = {},
                       const std::filesystem::path& directory = {}, int errors = -1,
                       const std::vector<std::string>& environment = {});
  // Kills the process if it still runs.
  ~ToolProcess();
  ToolProcess(const ToolProcess&) = delete;
  ToolProcess& operator=(const ToolProcess&) = delete;

  // The next line of standard output, waiting at most `timeout` for each piece
  // of it; nothing when the output ends or the time runs out.
  std::optional<std::string> readLine(std::chrono::milliseconds timeout);
  // Sends the signal and waits for the exit; returns the exit code, or 128 + N
  // for a process ended by signal N.
  int stop(int signal = SIGTERM) {
    if (!_exitCode) kill(_pid, signal);
    return wait();
  }
  // Waits for the exit, reading standard output to its end.
  int wait();
  // What the process wrote to standard output after the lines already read.
  const std::string& output() const { return _output; }
  // What the process wrote to standard error so far.
  std::string errors() const { return readFile(_scratch / "stderr"); }

 private:
  // Adds what standard output holds within `timeout` milliseconds (-1: no
  // limit) to _output; false at its end or when the time runs out.
  bool readMore(int timeout);

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
                const std::filesystem::path& directory = {},
                const std::vector<std::string>& environment = {});

}  // namespace tavrin::testing_support
