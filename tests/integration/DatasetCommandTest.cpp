// `tavrin dataset` run as a process on what is not a profile: a device that
// never ends, a pipe that never answers, and bytes that are not JSON text.
// Each once aborted, hung or reached the terminal raw; now each ends at once
// with exit code 3 and one printable line that names the file.

#include "ToolProcess.hpp"

#include <gtest/gtest.h>

#include <sys/stat.h>

#include <algorithm>
#include <fstream>

namespace tavrin {
namespace {

using testing_support::runTool;

TEST(DatasetCommand, RefusesWhatIsNotAProfileInOneLine) {
  const testing_support::TemporaryDirectory directory;
  const std::string pipe = (directory / "pipe").string(), bytes = (directory / "bytes").string();
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  std::ofstream(bytes, std::ios::binary) << "{\"device\": {\"model\": \"\xff\x1b[2J\"}}";
  for (const auto& [path, start] :
       {std::pair{std::string("/dev/zero"), std::string("error: /dev/zero: cannot read the file")},
        {pipe, "error: " + pipe + ": cannot read the file: it is not a regular file"},
        {bytes, "error: " + bytes + ": /device: parse error at line 1, column 23: "}}) {
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
