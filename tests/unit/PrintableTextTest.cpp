#include "PrintableText.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin::sandbox {
namespace {

TEST(PrintableText, EscapesWhatCouldForgeALineAndKeepsUtf8) {
  const struct {
    std::string text;
    std::size_t limit;
    std::string shown;
  } cases[] = {
      {"GET /x\r\nsandbox: forged", 100, R"(GET /x\r\nsandbox: forged)"},
      {"tab\tbell\x07"
       "del\x7f",
       100, R"(tab\tbell\x07del\x7f)"},
      {"next line \xc2\x85, euro \xe2\x82\xac", 100, "next line \\u0085, euro \xe2\x82\xac"},
      // Stray, overlong and surrogate bytes, and a sequence cut short.
      {"\xff\xc0\xaf\xed\xa0\x80\xe2\x82", 100, R"(\xff\xc0\xaf\xed\xa0\x80\xe2\x82)"},
      // Cut at a character boundary, never inside an escape or a character.
      {"abcdefgh\xe2\x82\xac", 9, "abcdefgh..."},
      {"abcdefg\n", 8, "abcdefg..."},
  };
  for (const auto& c : cases) EXPECT_EQ(printable(c.text, c.limit), c.shown) << c.shown;
}

}  // namespace
}  // namespace tavrin::sandbox
