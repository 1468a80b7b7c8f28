#pragma once

// The C host's log function and observer, seen as the C++ service sees them.

#include <tavrin/tavrin.h>
#include <tavrin/log.hpp>
#include <tavrin/observer.hpp>

namespace tavrin::capi {

// Calls the C function with a zero-terminated copy of each line.
LogHandler logHandler(tavrin_log_fn fn, void* context);

// Calls the C observer's callbacks that are not null, with zero-terminated names.
class HostObserver final : public CollectionObserver {
 public:
  explicit HostObserver(const tavrin_observer& observer) : _observer(observer) {}

  void sourceStarted(std::string_view name) override;
  void sourceFinished(std::string_view name, std::size_t entries,
                      std::chrono::nanoseconds elapsed) override;
  void exchangeStarted(std::string_view name) override;
  void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) override;
  void datasetReady(std::string_view json) override;

 private:
  tavrin_observer _observer;
};

}  // namespace tavrin::capi
