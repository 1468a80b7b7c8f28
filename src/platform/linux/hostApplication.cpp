#include "platform/linux/hostApplication.hpp"

#include <cerrno>
#include <filesystem>

namespace tavrin::platform {

std::string hostApplication(std::string identifier) {
  if (!identifier.empty()) return identifier;
  std::error_code error;
  auto name = std::filesystem::read_symlink("/proc/self/exe", error).filename().string();
  if (!error && !name.empty()) return name;
  return program_invocation_short_name;
}

}  // namespace tavrin::platform
