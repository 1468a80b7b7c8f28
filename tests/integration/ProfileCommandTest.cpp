// `tavrin profile generate` run as a process: the file and standard output get
// the same loadable phone, and bad options or an unwritable file fail with
// their exit codes. `tavrin dataset` on what is not a profile.

#include "ToolProcess.hpp"

#include "platform/profile/DeviceProfileReader.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>

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
  EXPECT_EQ(profile.contacts.list.size(), 25U);   // the option replaces the preset's size
  EXPECT_EQ(profile.photos.assets.size(), 250U);  // the preset's size stays
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

// A device that never ends, a pipe that never answers, and bytes that are not
// JSON text in a file whose name holds a control character once aborted the
// tool, hung it or reached the terminal raw. Each ends at once with exit code
// 3 and one printable line that names the file.
TEST(DatasetCommand, RefusesWhatIsNotAProfileInOneLine) {
  const testing_support::TemporaryDirectory directory;
  const std::string pipe = (directory / "pipe").string(),
                    bytes = (directory / "by\x1btes").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::ofstream(bytes, std::ios::binary) << "{\"device\": {\"model\": \"\xff\x1b[2J\"}}";
  for (const auto& [path, start] :
       {std::pair{std::string("/dev/zero"), std::string("error: /dev/zero: cannot read the file")},
        {pipe, "error: " + pipe + ": cannot read the file: it is not a regular file"},
        {bytes, "error: " + (directory / "by\\u001Btes").string() +
                    ": /device: parse error at line 1, column 23: "}}) {
    const auto run = runTool({"dataset", "--profile", path});
    EXPECT_EQ(run.exitCode, 3) << path;
    ASSERT_TRUE(run.errors.ends_with('\n')) << path;
    EXPECT_TRUE(run.errors.starts_with(start)) << run.errors;
    EXPECT_TRUE(std::none_of(run.errors.begin(), run.errors.end() - 1, [](char c) {
      return static_cast<unsigned char>(c) < 0x20 || static_cast<unsigned char>(c) >= 0x80;
    })) << run.errors;
  }
}

}  // namespace
}  // namespace tavrin
