#include "platform/linux/OsRelease.hpp"

#include <gtest/gtest.h>

namespace tavrin::platform {
namespace {

struct AssignmentCase {
  const char* text;
  std::optional<std::string> name;  // the value of NAME, or absent
};

class OsReleaseParse : public testing::TestWithParam<AssignmentCase> {};

TEST_P(OsReleaseParse, ReadsShellStyleAssignments) {
  EXPECT_EQ(OsRelease::parse(GetParam().text).value("NAME"), GetParam().name) << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Lines, OsReleaseParse,
    testing::Values(AssignmentCase{"NAME=Fedora", "Fedora"},
                    AssignmentCase{"NAME=\"Debian GNU/Linux\"", "Debian GNU/Linux"},
                    AssignmentCase{"NAME='Arch Linux'", "Arch Linux"},
                    AssignmentCase{R"(NAME="say \"hi\" \\ \$HOME \`x\`")",
                                   R"(say "hi" \ $HOME `x`)"},
                    AssignmentCase{R"(NAME='no \escapes here')", R"(no \escapes here)"},
                    AssignmentCase{"NAME=\"Debian\"  \r\n", "Debian"},
                    AssignmentCase{"  NAME=indented\n", "indented"}, AssignmentCase{"NAME=", ""},
                    AssignmentCase{"NAME=first\nNAME=second", "second"},
                    AssignmentCase{"# NAME=commented out", std::nullopt},
                    AssignmentCase{"NAME=\"left open", std::nullopt},
                    AssignmentCase{"NAME =spaced key", std::nullopt},
                    AssignmentCase{"not an assignment\nNAME=after", "after"},
                    AssignmentCase{"\n\n\nID=debian\n", std::nullopt},
                    AssignmentCase{"", std::nullopt}));

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
