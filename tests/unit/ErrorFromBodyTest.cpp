#include "net/errorFromBody.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin {
namespace {

std::optional<TavrinError> translate(const std::string& body) {
  return errorFromBody({reinterpret_cast<const std::uint8_t*>(body.data()), body.size()});
}

struct Recognised {
  std::string body;
  ErrorType type;
  std::string message;
};

class RecognisedDocument : public testing::TestWithParam<Recognised> {};

TEST_P(RecognisedDocument, GivesKindAndMessage) {
  const auto error = translate(GetParam().body);
  ASSERT_TRUE(error.has_value()) << GetParam().body;
  EXPECT_EQ(error->getErrorType(), GetParam().type);
  ASSERT_TRUE(error->getErrorMessage().has_value());
  EXPECT_EQ(*error->getErrorMessage(), GetParam().message);
}

INSTANTIATE_TEST_SUITE_P(
    CodeWords, RecognisedDocument,
    testing::Values(
        Recognised{R"({"title":"action_forbidden","detail":"Plan expired"})",
                   ErrorType::accessDenied, "action_forbidden. Plan expired"},
        Recognised{R"({"title":"action_forbidden"})", ErrorType::accessDenied,
                   "action_forbidden. "},
        Recognised{R"({"title":"action_forbidden","detail":42})", ErrorType::accessDenied,
                   "action_forbidden. "},
        Recognised{R"({"title":"subscription_suspended"})", ErrorType::accessDenied,
                   "subscription_suspended. "},
        Recognised{R"({"detail":"  a \"quoted\" text ","title":"subscription_suspended"})",
                   ErrorType::accessDenied, "subscription_suspended.   a \"quoted\" text "},
        Recognised{R"({"title":"auth_key_invalid","detail":"ignored"})", ErrorType::invalidInput,
                   "invalid_grant_key. Authentication key is invalid"},
        Recognised{R"({"title":"request_not_found","detail":"x"})", ErrorType::invalidInput,
                   "request_not_found"},
        Recognised{R"({"title":"record_number_invalid"})", ErrorType::invalidInput,
                   "record_number_invalid. Record number is invalid"},
        Recognised{R"({"title":"record_number_not_unique"})", ErrorType::invalidInput,
                   "record_number_not_unique. Record number is not unique"},
        Recognised{R"({"title":"data_recently_uploaded"})", ErrorType::invalidInput,
                   "data_recently_uploaded"},
        Recognised{R"({"title":"record_number_required"})", ErrorType::invalidInput,
                   "record_number_required. Record number is required"},
        Recognised{R"({"title":"CodeInvalid"})", ErrorType::invalidInput, "CodeInvalid"},
        Recognised{R"({"title":"CodeRequired","extra":[1,2]})", ErrorType::invalidInput,
                   "CodeRequired"}));

class UnrecognisedBody : public testing::TestWithParam<std::string> {};

TEST_P(UnrecognisedBody, IsNotTranslated) { EXPECT_FALSE(translate(GetParam()).has_value()); }

INSTANTIATE_TEST_SUITE_P(
    NotDocuments, UnrecognisedBody,
    testing::Values(R"({"title":"Action_Forbidden"})", R"({"title":"CODEINVALID"})",
                    R"({"title":"auth_key_invalid "})", R"({"title":42})", R"({"title":null})",
                    R"({"title":["action_forbidden"]})", R"({"detail":"no title"})", "{}", "[]",
                    R"([{"title":"action_forbidden"}])", R"("action_forbidden")", "true", "",
                    "not json", R"({"title":"action_forbidden")",
                    "{\"title\":\"action_forbidden\",\"detail\":\"\xff\"}",
                    R"({"title":"unknown_word"})"));

}  // namespace
}  // namespace tavrin
