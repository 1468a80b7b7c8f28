// `tavrin profile generate` run as a process: the file and standard output get
// the same loadable phone, and bad options or an unwritable file fail with
// their exit codes.

#include "ToolProcess.hpp"

#include "platform/profile/DeviceProfileReader.hpp"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

using testing_support::runTool;

TEST(ProfileCommand, WritesTheSamePhoneToAFileAndToStandardOutput) {
  const testing_support::TemporaryDirectory directory;
  const std::vector<std::string> options{"profile", "generate", "--preset",   "small",
                                         "--seed",  "9",        "--contacts", "25"};
  auto toFile = options;
  toFile.insert(toFile.end(), {"--output", (directory / "phone.json").string()});
  ASSERT_EQ(runTool(toFile).exitCode, 0);
  const auto toStdout = runTool(options);
  ASSERT_EQ(toStdout.exitCode, 0);
  const auto text = testing_support::readFile(directory / "phone.json");
  EXPECT_EQ(text, toStdout.output);
  const auto profile = platform::readDeviceProfile(text, "phone.json");
  EXPECT_EQ(profile.contacts.list.size(), 25U);  // the option replaces the preset's size
  EXPECT_EQ(profile.photos.assets.size(), 250U); // the preset's size stays
}

TEST(ProfileCommand, FailsWithItsExitCodes) {
  const std::vector<std::vector<std::string>> misuses{
      {"generate", "--preset", "huge"},
      // A negative size once wrapped round to a huge one and aborted the tool.
      {"generate", "--contacts", "-3"},
      {"generate", "--assets", "20000000"},
      {"generate", "--seed", "-1"},
      {}};
  for (auto arguments : misuses) {
    arguments.insert(arguments.begin(), "profile");
    EXPECT_EQ(runTool(arguments).exitCode, 2) << arguments.back();
  }
  const auto directory = std::filesystem::temp_directory_path().string();
  EXPECT_EQ(runTool({"profile", "generate", "--output", directory}).exitCode, 4);
}

}  // namespace
}  // namespace tavrin
