#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tavrin::sandbox {

// The three exchanges of the protocol.
enum class Exchange { login, check, upload };

// The name of an exchange as rules and logs write it: "login", "check", "upload".
std::string_view exchangeName(Exchange exchange);

// A scripted misbehaviour: instead of its normal answer the sandbox gives
// this one to the matching requests. Written TARGET:ACTION[*TIMES], where
// TARGET is login, check, upload or any, TIMES how many matching requests
// the rule takes (every one when left out), and ACTION one of
//   status=CODE              the status with an empty body
//   error=CODE/TITLE[/DETAIL] the status with the document {"title","detail"}
//   body=CODE/TEXT           the status with TEXT as the body
//   numeric-member           a good token pair plus a numeric member (login only)
//   drop                     close the connection without answering
//   stall                    never answer; hold the request until the client gives up
//   drip                     the normal answer, its body sent one byte a second after
//                            a minute of blanks: a server that is slow but never idle
struct FaultRule {
  enum class Action { status, error, body, numericMember, drop, stall, drip };

  std::optional<Exchange> target;  // absent: any exchange
  Action action = Action::status;
  int status = 0;
  std::string title;   // for error
  std::string detail;  // for error
  std::string body;    // for body
  std::optional<int> times;
  std::string text;  // the rule as written, for logs

  bool matches(Exchange exchange) const { return !target || *target == exchange; }
};

// Reads a rule; throws std::invalid_argument naming what is wrong.
FaultRule parseFaultRule(std::string_view text);

}  // namespace tavrin::sandbox
