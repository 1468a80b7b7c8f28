#include "platform/linux/userDirectories.hpp"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <vector>

namespace tavrin::platform {

std::string homeDirectory() {
  if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0') return home;
  passwd entry{};
  passwd* found = nullptr;
  std::vector<char> buffer(std::size_t{16} * 1024);
  if (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr) {
    return found->pw_dir;
  }
  return {};
}

namespace {

// An XDG base directory: `variable` when it is an absolute path, else
// `fallback` below the home.
std::filesystem::path baseDirectory(const char* variable, const char* fallback) {
  if (const char* path = std::getenv(variable); path != nullptr && *path == '/') return path;
  const std::string home = homeDirectory();
  if (home.empty()) return {};
  return std::filesystem::path(home) / fallback;
}

}  // namespace

std::filesystem::path stateHome() { return baseDirectory("XDG_STATE_HOME", ".local/state"); }

std::filesystem::path configHome() { return baseDirectory("XDG_CONFIG_HOME", ".config"); }

}  // namespace tavrin::platform
