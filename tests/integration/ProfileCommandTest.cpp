// `tavrin profile generate` run as a process: the file and standard output get
// the same loadable phone, and bad options or an unwritable file fail with
// their exit codes.

#include "platform/profile/DeviceProfileReader.hpp"

#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace tavrin {
namespace {

struct Run {
  int exitCode = -1;
  std::string output;
};

Run runTool(const std::string& arguments) {
  Run run;
  const std::string command = std::string(TAVRIN_TOOL_PATH) + ' ' + arguments + " 2>/dev/null";
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return run;
  char buffer[65536];
  for (std::size_t n; (n = std::fread(buffer, 1, sizeof buffer, pipe)) > 0;) {
    run.output.append(buffer, n);
  }
  const int status = pclose(pipe);
  run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return run;
}

std::string fileText(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

TEST(ProfileCommand, WritesTheSamePhoneToAFileAndToStandardOutput) {
  const auto path = std::filesystem::temp_directory_path() /
                    ("tavrin-generated-" + std::to_string(getpid()) + ".json");
  const auto toFile =
      runTool("profile generate --preset small --seed 9 --contacts 25 --output " + path.string());
  ASSERT_EQ(toFile.exitCode, 0);
  const auto toStdout = runTool("profile generate --preset small --seed 9 --contacts 25");
  ASSERT_EQ(toStdout.exitCode, 0);
  const auto text = fileText(path);
  std::filesystem::remove(path);
  EXPECT_EQ(text, toStdout.output);
  const auto profile = platform::readDeviceProfile(text, path.string());
  EXPECT_EQ(profile.contacts.list.size(), 25U);  // the option replaces the preset's size
  EXPECT_EQ(profile.assets.size(), 250U);        // the preset's size stays
}

TEST(ProfileCommand, FailsWithItsExitCodes) {
  EXPECT_EQ(runTool("profile generate --preset huge").exitCode, 2);
  // A negative size once wrapped round to a huge one and aborted the tool.
  EXPECT_EQ(runTool("profile generate --contacts -3").exitCode, 2);
  EXPECT_EQ(runTool("profile generate --assets 20000000").exitCode, 2);
  EXPECT_EQ(runTool("profile generate --seed -1").exitCode, 2);
  EXPECT_EQ(runTool("profile").exitCode, 2);
  EXPECT_EQ(runTool("profile generate --output " + std::filesystem::temp_directory_path().string())
                .exitCode,
            4);
}

}  // namespace
}  // namespace tavrin
