#include "ToolProcess.hpp"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace tavrin::testing_support {

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, const std::string& input,
                         const std::filesystem::path& directory, int errors,
                         const std::vector<std::string>& environment) {
  const auto inputFile = _scratch / "stdin", errorFile = _scratch / "stderr";
  std::ofstream(inputFile, std::ios::binary) << input;
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, inputFile.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, errorFile.c_str(), O_WRONLY | O_CREAT, 0600);
  if (errors >= 0) posix_spawn_file_actions_adddup2(&actions, errors, 2);
  if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
  std::vector<char*> argv{const_cast<char*>(TAVRIN_TOOL_PATH)};
  for (const auto& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  std::vector<char*> variables;
  for (char** variable = environ; *variable != nullptr; ++variable) variables.push_back(*variable);
  for (const auto& entry : environment) variables.push_back(const_cast<char*>(entry.c_str()));
  variables.push_back(nullptr);
  if (posix_spawn(&_pid, argv[0], &actions, nullptr, argv.data(), variables.data()) != 0) _pid = -1;
  posix_spawn_file_actions_destroy(&actions);
  close(pipeEnds[1]);
  _stdout = pipeEnds[0];
  if (_pid < 0) {
    close(_stdout);
    throw std::runtime_error("cannot start " TAVRIN_TOOL_PATH);
  }
}

ToolProcess::~ToolProcess() {
  if (!_exitCode && _pid > 0) stop(SIGKILL);
  if (_stdout >= 0) close(_stdout);
}

std::optional<std::string> ToolProcess::readLine(std::chrono::milliseconds timeout) {
  std::size_t end;
  while ((end = _output.find('\n')) == std::string::npos) {
    if (!readMore(static_cast<int>(timeout.count()))) return std::nullopt;
  }
  std::string line = _output.substr(0, end);
  _output.erase(0, end + 1);
  return line;
}

bool ToolProcess::readMore(int timeout) {
  pollfd readable{_stdout, POLLIN, 0};
  int ready;
  while ((ready = poll(&readable, 1, timeout)) < 0 && errno == EINTR) continue;
  char buffer[4096];
  const ssize_t size = ready > 0 ? read(_stdout, buffer, sizeof buffer) : 0;
  if (size > 0) _output.append(buffer, static_cast<std::size_t>(size));
  return size > 0;
}

int ToolProcess::wait() {
  if (_exitCode) return *_exitCode;
  while (readMore(-1)) continue;
  int status = 0;
  while (waitpid(_pid, &status, 0) < 0 && errno == EINTR) continue;
  _exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return *_exitCode;
}

ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input,
                const std::filesystem::path& directory,
                const std::vector<std::string>& environment) {
  ToolProcess process(arguments, input, directory, -1, environment);
  return {process.wait(), process.output(), process.errors()};  // evaluated in this order
}

}  // namespace tavrin::testing_support
