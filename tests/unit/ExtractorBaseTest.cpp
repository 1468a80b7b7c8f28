#include "dataset/ExtractorBase.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace tavrin {
namespace {

// Tabs and space separators (Zs: the no-break, ideographic, thin and narrow
// no-break spaces) are no text; line breaks, the zero-width space (not Zs),
// the line separator (Zl) and letters are. Each text of extractors/blank-texts.json is
// given with whether it has text; bytes that are not UTF-8 are text too.
TEST(ExtractorBase, HasTextTrimsTabsAndSpaceSeparatorsOnly) {
  const auto texts =
      nlohmann::json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR "/extractors/blank-texts.json"));
  for (const auto& [text, hasText] : texts.items()) {
    EXPECT_EQ(ExtractorBase::hasText(std::string_view(text)), hasText.get<bool>())
        << testing::PrintToString(text);
  }
  EXPECT_TRUE(ExtractorBase::hasText(std::string_view("\xFF")));
}

}  // namespace
}  // namespace tavrin
