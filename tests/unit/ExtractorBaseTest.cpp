#include "dataset/ExtractorBase.hpp"

#include <gtest/gtest.h>

namespace tavrin {
namespace {

struct TextCase {
  const char* text;
  bool hasText;
};

class HasText : public testing::TestWithParam<TextCase> {};

TEST_P(HasText, TrimsTabsAndSpaceSeparatorsOnly) {
  EXPECT_EQ(ExtractorBase::hasText(std::string_view(GetParam().text)), GetParam().hasText)
      << GetParam().text;
}

INSTANTIATE_TEST_SUITE_P(
    Texts, HasText,
    testing::Values(TextCase{"", false}, TextCase{"   ", false}, TextCase{"\t \t", false},
                    TextCase{"\xC2\xA0", false},                   // no-break space
                    TextCase{"\xE3\x80\x80", false},               // ideographic space
                    TextCase{"\xE2\x80\x89 \xE2\x80\xAF", false},  // thin and narrow no-break
                    TextCase{"\n", true}, TextCase{"\r\n", true}, TextCase{" \v ", true},
                    TextCase{"\xE2\x80\x8B", true},  // zero-width space is not Zs
                    TextCase{"\xE2\x80\xA8", true},  // line separator is Zl
                    TextCase{"  a  ", true}, TextCase{"\xC3\xA9", true}, TextCase{"\xFF", true}));

}  // namespace
}  // namespace tavrin
