#pragma once

#include <tavrin/observer.hpp>

#include <chrono>
#include <string_view>

namespace tavrin {

// Tells an observer about one exchange: that it starts when the report is
// made, and how it ended when the report goes, whichever way the exchange
// leaves (a result or an error).
class ExchangeReport {
 public:
  ExchangeReport(CollectionObserver* observer, std::string_view name);
  ~ExchangeReport();
  ExchangeReport(const ExchangeReport&) = delete;
  ExchangeReport& operator=(const ExchangeReport&) = delete;

  // The status of the answer that arrived.
  void answered(long status) { _outcome.status = static_cast<int>(status); }
  // The answer gave the exchange its result.
  void succeeded() { _outcome.succeeded = true; }

 private:
  CollectionObserver* _observer;
  std::string_view _name;
  std::chrono::steady_clock::time_point _start;
  ExchangeOutcome _outcome;
};

}  // namespace tavrin
