#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tavrin::testing_support {

struct ProcessResult {
  int exitCode = -1;  // -1 when the process did not exit normally
  std::string standardOutput;
  std::string standardError;
};

// Runs the program with the arguments, without a shell, and waits for it. Its
// output goes through files in `scratch`, so neither stream can fill a pipe.
ProcessResult runProcess(const std::string& program, const std::vector<std::string>& arguments,
                         const std::filesystem::path& scratch);

}  // namespace tavrin::testing_support
