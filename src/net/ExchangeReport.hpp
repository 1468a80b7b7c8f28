#pragma once

#include "collection/RunEvents.hpp"

#include <chrono>
#include <string>
#include <string_view>

namespace tavrin {

// Tells the run's events about one exchange: that it starts when the report
// is made, and how it ended when the report goes, whichever way the exchange
// leaves (a result or an error).
class ExchangeReport {
 public:
  ExchangeReport(const RunEvents& events, std::string_view name);
  ~ExchangeReport();
  ExchangeReport(const ExchangeReport&) = delete;
  ExchangeReport& operator=(const ExchangeReport&) = delete;

  // The status and request id of the answer that arrived.
  void answered(long status, const std::string& requestId);
  // The answer gave the exchange its result.
  void succeeded() { _outcome.succeeded = true; }
  // Why the exchange failed, for the log.
  void failed(std::string why) { _failure = std::move(why); }

 private:
  const RunEvents& _events;
  std::string_view _name;
  std::chrono::steady_clock::time_point _start;
  ExchangeOutcome _outcome;
  std::string _requestId;
  std::string _failure;
};

}  // namespace tavrin
