#include "ToolProcess.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <stdexcept>

extern char** environ;

namespace tavrin::testing_support {

pid_t spawnTool(const std::vector<std::string>& arguments,
                const posix_spawn_file_actions_t& actions) {
  std::vector<std::string> command{TAVRIN_TOOL_PATH};
  command.insert(command.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (auto& argument : command) argv.push_back(argument.data());
  argv.push_back(nullptr);
  pid_t pid = -1;
  return posix_spawn(&pid, argv[0], &actions, nullptr, argv.data(), environ) == 0 ? pid : -1;
}

ToolProcess::ToolProcess(const std::vector<std::string>& arguments, const std::string& input,
                         const std::filesystem::path& directory) {
  const auto inputFile = _scratch / "stdin", errorFile = _scratch / "stderr";
  std::ofstream(inputFile, std::ios::binary) << input;
  int pipeEnds[2];
  if (pipe2(pipeEnds, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, inputFile.c_str(), O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, pipeEnds[1], 1);
  posix_spawn_file_actions_addopen(&actions, 2, errorFile.c_str(), O_WRONLY | O_CREAT, 0600);
  if (!directory.empty()) posix_spawn_file_actions_addchdir_np(&actions, directory.c_str());
  _pid = spawnTool(arguments, actions);
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
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  for (;;) {
    if (const auto end = _output.find('\n'); end != std::string::npos) {
      std::string line = _output.substr(0, end);
      _output.erase(0, end + 1);
      return line;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
        deadline - std::chrono::steady_clock::now());
    pollfd readable{_stdout, POLLIN, 0};
    if (left.count() <= 0 || poll(&readable, 1, static_cast<int>(left.count())) <= 0) {
      return std::nullopt;
    }
    char buffer[4096];
    const ssize_t size = read(_stdout, buffer, sizeof buffer);
    if (size <= 0) return std::nullopt;
    _output.append(buffer, static_cast<std::size_t>(size));
  }
}

int ToolProcess::stop(int signal) {
  if (!_exitCode) kill(_pid, signal);
  return wait();
}

int ToolProcess::wait() {
  if (_exitCode) return *_exitCode;
  char buffer[4096];
  ssize_t size;
  while ((size = read(_stdout, buffer, sizeof buffer)) > 0 || (size < 0 && errno == EINTR)) {
    if (size > 0) _output.append(buffer, static_cast<std::size_t>(size));
  }
  int status = 0;
  while (waitpid(_pid, &status, 0) < 0 && errno == EINTR) {
  }
  _exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return *_exitCode;
}

ToolRun runTool(const std::vector<std::string>& arguments, const std::string& input,
                const std::filesystem::path& directory) {
  ToolProcess process(arguments, input, directory);
  const int exitCode = process.wait();
  return {exitCode, process.output(), process.errors()};
}

}  // namespace tavrin::testing_support
