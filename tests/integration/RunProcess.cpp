#include "RunProcess.hpp"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <fstream>
#include <iterator>
#include <memory>
#include <stdexcept>

extern char** environ;

namespace tavrin::testing_support {
namespace {

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace

ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& scratch) {
  const auto outPath = scratch / "stdout.txt";
  const auto errPath = scratch / "stderr.txt";

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  const std::unique_ptr<posix_spawn_file_actions_t, int (*)(posix_spawn_file_actions_t*)> cleanup(
      &actions, &posix_spawn_file_actions_destroy);
  posix_spawn_file_actions_addopen(&actions, 1, outPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);
  posix_spawn_file_actions_addopen(&actions, 2, errPath.c_str(), O_WRONLY | O_CREAT | O_TRUNC,
                                   0600);

  std::vector<std::string> argumentsWithName{program};
  argumentsWithName.insert(argumentsWithName.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (auto& argument : argumentsWithName) argv.push_back(argument.data());
  argv.push_back(nullptr);

  pid_t child = 0;
  if (posix_spawn(&child, program.c_str(), &actions, nullptr, argv.data(), environ) != 0) {
    throw std::runtime_error("cannot start " + program);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child) throw std::runtime_error("cannot wait for " + program);

  return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(outPath), readFile(errPath)};
}

}  // namespace tavrin::testing_support
