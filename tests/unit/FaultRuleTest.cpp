#include "FaultRule.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <tuple>

namespace tavrin::sandbox {
namespace {

using Action = FaultRule::Action;

struct Parsed {
  std::string text;
  std::optional<Exchange> target;
  Action action;
  int status = 0;
  std::optional<int> times = std::nullopt;
  std::string body = "", title = "", detail = "";
};

TEST(FaultRule, ValidRulesAreReadInEveryPart) {
  for (const Parsed& e :
       {Parsed{"upload:status=401*1", Exchange::upload, Action::status, 401, 1},
        Parsed{"check:status=503", Exchange::check, Action::status, 503},
        Parsed{"any:drop*2", std::nullopt, Action::drop, 0, 2},
        Parsed{"check:stall", Exchange::check, Action::stall},
        Parsed{"upload:drip", Exchange::upload, Action::drip},
        Parsed{"login:numeric-member", Exchange::login, Action::numericMember},
        Parsed{"upload:error=403/action_forbidden/Plan expired", Exchange::upload, Action::error,
               403, std::nullopt, "", "action_forbidden", "Plan expired"},
        Parsed{"check:error=409/record_number_not_unique*3", Exchange::check, Action::error, 409, 3,
               "", "record_number_not_unique"},
        Parsed{"check:error=400/CodeInvalid/a/b", Exchange::check, Action::error, 400, std::nullopt,
               "", "CodeInvalid", "a/b"},
        Parsed{"login:body=200/{\"token_type\":\"Bearer\"}", Exchange::login, Action::body, 200,
               std::nullopt, "{\"token_type\":\"Bearer\"}"},
        // A '*' that is not followed by a count belongs to the body.
        Parsed{"upload:body=200/\"a*b\"", Exchange::upload, Action::body, 200, std::nullopt,
               "\"a*b\""},
        Parsed{"upload:body=302/", Exchange::upload, Action::body, 302}}) {
    const FaultRule rule = parseFaultRule(e.text);
    EXPECT_EQ(std::tie(rule.target, rule.action, rule.status, rule.times, rule.body, rule.title,
                       rule.detail, rule.text),
              std::tie(e.target, e.action, e.status, e.times, e.body, e.title, e.detail, e.text));
  }
}

TEST(FaultRule, InvalidRulesAreRefusedWithTheirText) {
  for (const std::string text :
       {"", "upload", "server:drop", "upload:status=", "upload:status=99", "upload:status=600",
        "upload:status=4o1", "upload:status=401/x", "upload:error=400", "upload:error=400/",
        "check:numeric-member", "upload:drop=1", "upload:stall*0", "upload:explode",
        "upload:body=abc"}) {
    EXPECT_THAT([&] { parseFaultRule(text); }, testing::ThrowsMessage<std::invalid_argument>(
                                                   testing::HasSubstr('"' + text + '"')));
  }
}

}  // namespace
}  // namespace tavrin::sandbox
