#include "FaultRule.hpp"

#include <charconv>
#include <stdexcept>

namespace tavrin::sandbox {

namespace {

[[noreturn]] void refuse(std::string_view rule, const std::string& reason) {
  throw std::invalid_argument("fault rule \"" + std::string(rule) + "\": " + reason);
}

std::optional<int> number(std::string_view text) {
  int value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  return value;
}

// Splits "CODE/REST" and checks that CODE is an HTTP status.
int statusPrefix(std::string_view rule, std::string_view& argument) {
  const auto slash = argument.find('/');
  const auto status = number(argument.substr(0, slash));
  if (!status || *status < 100 || *status > 599) {
    refuse(rule, "expected an HTTP status from 100 to 599, got \"" +
                     std::string(argument.substr(0, slash)) + "\"");
  }
  argument = slash == std::string_view::npos ? std::string_view() : argument.substr(slash + 1);
  return *status;
}

}  // namespace

std::string_view exchangeName(Exchange exchange) {
  switch (exchange) {
    case Exchange::login: return "login";
    case Exchange::check: return "check";
    case Exchange::upload: return "upload";
  }
  return "?";
}

FaultRule parseFaultRule(std::string_view text) {
  FaultRule rule;
  rule.text = text;
  const auto colon = text.find(':');
  if (colon == std::string_view::npos) refuse(text, "expected TARGET:ACTION");
  const std::string_view target = text.substr(0, colon);
  std::string_view action = text.substr(colon + 1);

  if (target == "login") {
    rule.target = Exchange::login;
  } else if (target == "check") {
    rule.target = Exchange::check;
  } else if (target == "upload") {
    rule.target = Exchange::upload;
  } else if (target != "any") {
    refuse(text, "the target must be login, check, upload or any");
  }

  // A count ends the rule only when what follows the last '*' is a number,
  // so that a body may contain '*'.
  if (const auto star = action.rfind('*'); star != std::string_view::npos) {
    if (const auto times = number(action.substr(star + 1))) {
      if (*times < 1) refuse(text, "the count must be at least 1");
      rule.times = times;
      action = action.substr(0, star);
    }
  }

  const auto equals = action.find('=');
  const std::string_view verb = action.substr(0, equals);
  std::string_view argument =
      equals == std::string_view::npos ? std::string_view() : action.substr(equals + 1);
  const bool hasArgument = equals != std::string_view::npos;
  if (verb == "status" && hasArgument) {
    rule.action = FaultRule::Action::status;
    rule.status = statusPrefix(text, argument);
    if (!argument.empty()) refuse(text, "status takes only a code");
  } else if (verb == "error" && hasArgument) {
    rule.action = FaultRule::Action::error;
    rule.status = statusPrefix(text, argument);
    const auto slash = argument.find('/');
    rule.title = argument.substr(0, slash);
    if (slash != std::string_view::npos) rule.detail = argument.substr(slash + 1);
    if (rule.title.empty()) refuse(text, "error needs a title: error=CODE/TITLE[/DETAIL]");
  } else if (verb == "body" && hasArgument) {
    rule.action = FaultRule::Action::body;
    rule.status = statusPrefix(text, argument);
    rule.body = argument;
  } else if (verb == "numeric-member" && !hasArgument) {
    if (rule.target != Exchange::login) refuse(text, "numeric-member applies to login only");
    rule.action = FaultRule::Action::numericMember;
  } else if (verb == "drop" && !hasArgument) {
    rule.action = FaultRule::Action::drop;
  } else if (verb == "stall" && !hasArgument) {
    rule.action = FaultRule::Action::stall;
  } else if (verb == "drip" && !hasArgument) {
    rule.action = FaultRule::Action::drip;
  } else {
    refuse(text,
           "the action must be status=CODE, error=CODE/TITLE[/DETAIL], body=CODE/TEXT, "
           "numeric-member, drop, stall or drip");
  }
  return rule;
}

}  // namespace tavrin::sandbox
