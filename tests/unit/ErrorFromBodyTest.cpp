#include "net/errorFromBody.hpp"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <string>

namespace tavrin {
namespace {

using Json = nlohmann::json;

std::optional<TavrinError> translate(const std::string& body) {
  return errorFromBody({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()});
}

// Every code word with the kind and message it gives, and bodies that are no
// error document: wrong case or type, no title, not an object, not JSON.
const Json& bodies() {
  static const Json rows =
      Json::parse(std::ifstream(TAVRIN_TEST_DATA_DIR "/net/error-bodies.json"));
  return rows;
}

TEST(ErrorFromBody, GivesTheKindAndMessageOfEveryCodeWord) {
  for (const Json& row : bodies().at("recognised")) {
    const auto error = translate(row.at("body"));
    ASSERT_TRUE(error.has_value()) << row;
    EXPECT_EQ(errorTypeName(error->getErrorType()), row.at("type").get<std::string>()) << row;
    EXPECT_EQ(error->getErrorMessage(), row.at("message").get<std::string>()) << row;
  }
}

// A body that is not UTF-8 cannot be written in the fixture.
TEST(ErrorFromBody, LeavesEveryOtherBodyUntranslated) {
  for (const std::string body : bodies().at("unrecognised")) EXPECT_FALSE(translate(body)) << body;
  EXPECT_FALSE(translate("{\"title\":\"action_forbidden\",\"detail\":\"\xff\"}"));
}

}  // namespace
}  // namespace tavrin
