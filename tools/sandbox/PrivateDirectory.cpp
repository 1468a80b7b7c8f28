#include "PrivateDirectory.hpp"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <string>

namespace tavrin::sandbox {

namespace {

// The name carries the process's id, so that a later sandbox can tell
// whether the one that made the directory still runs.
constexpr std::string_view prefix = "tavrin-sandbox-";

// Removes this user's directories whose process is gone.
void removeAbandoned(const std::filesystem::path& parent) {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(parent, error)) {
    const std::string name = entry.path().filename().string();
    if (!name.starts_with(prefix)) continue;
    pid_t pid = 0;
    const char* first = name.data() + prefix.size();
    const auto [end, parsed] = std::from_chars(first, name.data() + name.size(), pid);
    struct stat status {};
    if (parsed != std::errc() || *end != '-' || pid <= 0 ||
        lstat(entry.path().c_str(), &status) != 0 || !S_ISDIR(status.st_mode) ||
        status.st_uid != geteuid()) {
      continue;
    }
    if (kill(pid, 0) != 0 && errno == ESRCH) std::filesystem::remove_all(entry.path(), error);
  }
}

}  // namespace

PrivateDirectory::PrivateDirectory() {
  const auto parent = std::filesystem::temp_directory_path();
  removeAbandoned(parent);
  std::string pattern =
      (parent / (std::string(prefix) + std::to_string(getpid()) + "-XXXXXX")).string();
  // mkdtemp makes the directory with mode 0700.
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a temporary directory for the sandbox's certificate");
  }
  _path = pattern;
}

PrivateDirectory::~PrivateDirectory() {
  std::error_code ignored;
  std::filesystem::remove_all(_path, ignored);
}

}  // namespace tavrin::sandbox
