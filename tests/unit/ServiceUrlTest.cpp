// The service URL check, and the hand-written matcher the fuzzer holds it
// against: both must give the answer of every row of net/service-urls.json.
// Rows stand for the places where a matcher is easiest to get wrong: each
// escaped dot (another character in its place is another domain), what counts
// as a word character (Unicode's: letters of any script, marks, joiners), a
// digit, and the end of the text ($ also matches before one final line
// terminator).

#include "HandWrittenUrlMatcher.hpp"

#include "service/ServiceUrl.hpp"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <nlohmann/json.hpp>

#include <fstream>

namespace tavrin {
namespace {

using Json = nlohmann::json;

void expectBothAnswer(const std::string& url, bool accepted) {
  static const testing::HandWrittenUrlMatcher matcher("tavrin");
  EXPECT_EQ(isServiceUrl(url), accepted);
  EXPECT_EQ(matcher.accepts(url), accepted);
}

class ServiceUrlAgreement : public ::testing::TestWithParam<Json> {};

TEST_P(ServiceUrlAgreement, BothMatchersGiveTheAnswerOfTheRow) {
  expectBothAnswer(GetParam().at("url"), GetParam().at("accepted"));
}

INSTANTIATE_TEST_SUITE_P(
    Cases, ServiceUrlAgreement,
    ::testing::ValuesIn(Json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR "/net/service-urls.json"))),
    [](const auto& test) { return test.param.at("name").template get<std::string>(); });

// Bytes that are not UTF-8, which the fixture cannot hold: text in front of the
// scheme, and no word character inside the label.
TEST(ServiceUrl, BytesThatAreNotUtf8) {
  expectBothAnswer("\xff\xfehttps://api.tavrin.com", true);
  expectBothAnswer("https://a\xff.tavrin.com", false);
}

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
