// `tavrin profile generate` run as a process: the file and standard output get
// the same loadable phone, and bad options or an unwritable file fail with
// their exit codes. `tavrin dataset` on what is not a profile, and on this
// machine with the answers --grant gives.

#include "ToolProcess.hpp"

#include "platform/profile/DeviceProfileReader.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

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

// Runs one after another on this machine, two applications' state homes apart:
// --grant answers only the stores not yet decided, and what ask and all
// answer is kept, whereas none answers nothing.
TEST(DatasetCommand, GrantAnswersTheStoresNotYetDecidedAndKeepsTheAnswers) {
#ifndef TAVRIN_WITH_EDS
  GTEST_SKIP() << "built without a store that asks for consent";
#endif
  struct Run {
    const char* home;
    const char* grant;
    const char* input;
    int contacts;  // the contacts' flag in the permissions section
    bool asked;    // whether the contacts were asked about
  };
  const Run runs[] = {
      {"a", "none", "", 0, false}, {"a", "ask", "n\nn\nn\nn\n", 0, true},
      {"a", "all", "", 0, false},  {"b", "ask", "y\ny\ny\ny\n", 1, true},
      {"b", "none", "", 1, false}, {"b", "ask", "", 1, false},
      {"c", "all", "", 1, false},
  };
  const testing_support::TemporaryDirectory state;
  for (const Run& run : runs) {
    // No desktop service answers: the stores fail to read, and only their
    // permissions tell the answers.
    const auto result = runTool({"dataset", "--grant", run.grant}, run.input, {},
                                {"XDG_STATE_HOME=" + (state / run.home).string(),
                                 "DBUS_SESSION_BUS_ADDRESS=unix:path=/nonexistent"});
    ASSERT_EQ(result.exitCode, 0) << result.errors;
    const auto document = nlohmann::json::parse(result.output);
    const auto& permissions = document.back().at("Permissions");
    EXPECT_EQ(permissions.at(2), nlohmann::json::parse(R"(["NSContactsUsageDescription",)" +
                                                       std::to_string(run.contacts) + "]"))
        << run.home << ' ' << run.grant;
    EXPECT_EQ(result.errors.find("allow reading the contacts?") != std::string::npos, run.asked)
        << run.home << ' ' << run.grant << ": " << result.errors;
  }
  EXPECT_EQ(runTool({"dataset", "--grant", "some"}).exitCode, 2);
}

}  // namespace
}  // namespace tavrin
