#include "platform/profile/printableExcerpt.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin::platform {
namespace {

TEST(PrintableExcerpt, EscapesWhatCouldForgeALineAndKeepsUtf8) {
  const struct {
    std::string text;
    std::size_t limit;
    std::string shown;
  } cases[] = {
      {"GET /x\r\nsandbox: forged", 100, R"(GET /x\u000D\u000Asandbox: forged)"},
      {"tab\tbell\x07"
       "del\x7f",
       100, R"(tab\u0009bell\u0007del\u007F)"},
      {"next line \xc2\x85, euro \xe2\x82\xac", 100, "next line \\u0085, euro \xe2\x82\xac"},
      // Stray, overlong and surrogate bytes, and a sequence cut short.
      {"\xff\xc0\xaf\xed\xa0\x80\xe2\x82", 100, R"(\xFF\xC0\xAF\xED\xA0\x80\xE2\x82)"},
      // Cut at a character boundary, never inside an escape or a character.
      {"abcdefgh\xe2\x82\xac", 9, "abcdefgh\xe2\x80\xa6"},
      {"abcdefg\n", 8, "abcdefg\xe2\x80\xa6"},
  };
  for (const auto& c : cases) EXPECT_EQ(printableExcerpt(c.text, c.limit), c.shown) << c.shown;
}

}  // namespace
}  // namespace tavrin::platform
