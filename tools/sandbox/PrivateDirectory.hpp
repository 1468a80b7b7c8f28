#pragma once

#include <filesystem>

namespace tavrin::sandbox {

// A fresh directory under the system's temporary directory that only its
// owner may enter (mode 0700), removed with its content when this object goes.
// A sandbox killed outright cannot remove its own; making a new one removes
// those left by processes that no longer run.
class PrivateDirectory {
 public:
  // Throws std::runtime_error when the directory cannot be made.
  PrivateDirectory();
  ~PrivateDirectory();
  PrivateDirectory(const PrivateDirectory&) = delete;
  PrivateDirectory& operator=(const PrivateDirectory&) = delete;

  const std::filesystem::path& path() const { return _path; }

 private:
  std::filesystem::path _path;
};

}  // namespace tavrin::sandbox
