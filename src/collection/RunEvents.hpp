#pragma once

#include <tavrin/log.hpp>
#include <tavrin/observer.hpp>

#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace tavrin {

// Where a service object tells what it does: the host's observer and its log
// handler, either of them or none. Whatever they throw is dropped: reporting
// must never change a run. Lines name sources, exchanges, sizes and error
// kinds, never a key, a token or a value of the dataset.
class RunEvents {
 public:
  RunEvents() = default;
  RunEvents(std::shared_ptr<CollectionObserver> observer, LogHandler log);

  // Events that nobody hears, for parts that are told of none.
  static const RunEvents& nobody();

  void sourceStarted(std::string_view name) const;
  void sourceFinished(std::string_view name, std::size_t entries,
                      std::chrono::nanoseconds elapsed) const;
  void exchangeStarted(std::string_view name) const;
  // Also logs the exchange with its status, duration and `detail` (empty, or
  // why it failed).
  void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome,
                        std::string_view detail) const;
  void datasetReady(std::string_view json) const;
  void log(LogLevel level, std::string_view line) const;

 private:
  template <typename Call>
  void notify(Call&& call) const noexcept;

  std::shared_ptr<CollectionObserver> _observer;
  LogHandler _log;
};

// A duration for people, in milliseconds with one decimal: "12.5 ms".
std::string milliseconds(std::chrono::nanoseconds elapsed);

}  // namespace tavrin
