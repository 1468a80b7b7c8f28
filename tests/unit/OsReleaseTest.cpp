#include "platform/linux/OsRelease.hpp"

#include <gtest/gtest.h>

namespace tavrin::platform {
namespace {

TEST(OsRelease, ReadsShellStyleAssignments) {
  // A text, and the value of NAME in it (absent: none). Plain quoted values and files
  // without a NAME are read by LinuxPlatformTest; lines past a bad one, below.
  const std::pair<const char*, std::optional<std::string>> cases[] = {
      {R"(NAME=Fedor\a)", "Fedora"},
      {R"(NAME="say \"hi\" \\ \$HOME \`x\`")", R"(say "hi" \ $HOME `x`)"},
      {R"(NAME='no \escapes here')", R"(no \escapes here)"},
      {"NAME=\"Debian\"  \r\n", "Debian"},
      {"  NAME=indented\n", "indented"},
      {"NAME=", ""},
      {"NAME=first\nNAME=second", "second"},
      {"# NAME=commented out", std::nullopt},
      {"NAME=\"left open", std::nullopt},
      {"NAME =spaced key", std::nullopt},
      {"", std::nullopt}};
  for (const auto& [text, name] : cases) {
    EXPECT_EQ(OsRelease::parse(text).value("NAME"), name) << text;
  }
}

TEST(OsRelease, AMalformedLineLeavesTheOthers) {
  const auto release =
      OsRelease::parse("VERSION_ID=\"12\nNAME=Debian\nBAD-KEY=x\nID=debian\n\xFF\xFE=\x01\n");
  EXPECT_EQ(release.value("NAME"), "Debian");
  EXPECT_EQ(release.value("ID"), "debian");
  EXPECT_EQ(release.value("VERSION_ID"), std::nullopt);
  EXPECT_EQ(release.value("BAD-KEY"), std::nullopt);
}

}  // namespace
}  // namespace tavrin::platform
