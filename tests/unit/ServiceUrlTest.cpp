// The service URL check, and the hand-written matcher the fuzzer holds it
// against: both must give the answer of every row. Rows stand for the places
// where a matcher is easiest to get wrong: each escaped dot, what counts as a
// word character, a digit or the end of the text.

#include "HandWrittenUrlMatcher.hpp"

#include "service/ServiceUrl.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>

namespace tavrin {
namespace {

struct UrlCase {
  const char* name;
  std::string url;
  bool accepted;
};

class ServiceUrlAgreement : public ::testing::TestWithParam<UrlCase> {};

TEST_P(ServiceUrlAgreement, BothMatchersGiveTheAnswerOfTheRow) {
  static const testing::HandWrittenUrlMatcher matcher("tavrin");
  const auto& c = GetParam();
  EXPECT_EQ(isServiceUrl(c.url), c.accepted);
  EXPECT_EQ(matcher.accepts(c.url), c.accepted);
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ServiceUrlAgreement,
    ::testing::Values(
        UrlCase{"plain", "https://api.tavrin.com", true},
        UrlCase{"port", "https://api.tavrin.com:8443", true},
        UrlCase{"colonsAndDigitsInAnyOrder", "https://api.tavrin.com::1:2", true},
        // The search is not anchored at the start.
        UrlCase{"textInFront", "see https://api.tavrin.com", true},
        UrlCase{"inAQuery", "https://evil.example/?https://api.tavrin.com", true},
        UrlCase{"secondSchemeMatches", "https://x.other.com https://api.tavrin.com", true},
        UrlCase{"trailingSlash", "https://api.tavrin.com/", false},
        UrlCase{"path", "https://api.tavrin.com/v4.0", false},
        UrlCase{"query", "https://api.tavrin.com?x=1", false},
        UrlCase{"letterInPort", "https://api.tavrin.com:84a3", false},
        UrlCase{"blankAfterPort", "https://api.tavrin.com:8443 ", false},
        UrlCase{"twoLabels", "https://a.b.tavrin.com", false},
        UrlCase{"noLabel", "https://.tavrin.com", false}, UrlCase{"empty", "", false},
        UrlCase{"plainScheme", "http://api.tavrin.com", false},
        UrlCase{"upperCaseScheme", "HTTPS://api.tavrin.com", false},
        UrlCase{"upperCase", "https://api.Tavrin.com", false},
        // Every dot is a dot: another character in its place is another domain.
        UrlCase{"hyphenForTheFirstDot", "https://evil-tavrin.com", false},
        UrlCase{"letterForTheFirstDot", "https://apixtavrin.com", false},
        UrlCase{"letterForTheSecondDot", "https://api.tavrinXcom", false},
        UrlCase{"otherTopLevelDomain", "https://api.tavrin.org", false},
        UrlCase{"otherDomain", "https://api.other.com", false},
        UrlCase{"hyphenAndUnderscore", "https://-_-.tavrin.com", true},
        UrlCase{"blankInLabel", "https://ap i.tavrin.com", false},
        // \w is Unicode's: letters of any script, marks, joiners.
        UrlCase{"accentedLetter", "https://caf\u00e9.tavrin.com", true},
        UrlCase{"cyrillic", "https://\u0430\u043f\u0438.tavrin.com", true},
        UrlCase{"ideographs", "https://\u4e2d\u6587.tavrin.com", true},
        UrlCase{"combiningMark", "https://e\u0301.tavrin.com", true},
        UrlCase{"zeroWidthJoiner", "https://a\u200db.tavrin.com", true},
        UrlCase{"symbolIsNotAWordCharacter", "https://a\u00a9.tavrin.com", false},
        UrlCase{"middleDotIsNotAWordCharacter", "https://api\u00b7x.tavrin.com", false},
        UrlCase{"arabicIndicDigitInPort", "https://api.tavrin.com:\u0663", true},
        UrlCase{"superscriptIsNotADigit", "https://api.tavrin.com:\u00b2", false},
        // $ also matches before one final line terminator.
        UrlCase{"lineFeedAtTheEnd", "https://api.tavrin.com\n", true},
        UrlCase{"crLfAtTheEnd", "https://api.tavrin.com:1\r\n", true},
        UrlCase{"lineSeparatorAtTheEnd", "https://api.tavrin.com\u2028", true},
        UrlCase{"nextLineAtTheEnd", "https://api.tavrin.com\u0085", true},
        UrlCase{"verticalTabAtTheEnd", "https://api.tavrin.com\v", true},
        UrlCase{"twoLineFeeds", "https://api.tavrin.com\n\n", false},
        UrlCase{"lineFeedThenText", "https://api.tavrin.com\nx", false},
        UrlCase{"nulAtTheEnd", std::string("https://api.tavrin.com\0", 23), false},
        UrlCase{"invalidUtf8InFront", "\xff\xfehttps://api.tavrin.com", true},
        UrlCase{"invalidUtf8InLabel", "https://a\xff.tavrin.com", false}),
    [](const auto& test) { return std::string(test.param.name); });

// A text longer than ICU can index is refused unread: its pages are mapped, never touched.
TEST(ServiceUrl, RefusesATextLongerThanIcuCanIndex) {
  const std::size_t size = std::size_t{1} << 31;
  void* pages = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  ASSERT_NE(pages, MAP_FAILED);
  EXPECT_FALSE(isServiceUrl(std::string_view(static_cast<const char*>(pages), size)));
  munmap(pages, size);
}

}  // namespace
}  // namespace tavrin
