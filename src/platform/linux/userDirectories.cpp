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

std::filesystem::path stateHome() {
  if (const char* state = std::getenv("XDG_STATE_HOME"); state != nullptr && *state == '/') {
    return state;
  }
  const std::string home = homeDirectory();
  if (home.empty()) return {};
  return std::filesystem::path(home) / ".local" / "state";
}

}  // namespace tavrin::platform
