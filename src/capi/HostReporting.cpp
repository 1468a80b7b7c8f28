#include "capi/HostReporting.hpp"

#include <string>

namespace tavrin::capi {

LogHandler logHandler(tavrin_log_fn fn, void* context) {
  return [fn, context](LogLevel level, std::string_view line) {
    fn(context, static_cast<int>(level), std::string(line).c_str());
  };
}

// The names are short section and exchange names, copied so that C sees them
// terminated.
void HostObserver::sourceStarted(std::string_view name) {
  if (_observer.source_started)
    _observer.source_started(_observer.context, std::string(name).c_str());
}

void HostObserver::sourceFinished(std::string_view name, std::size_t entries,
                                  std::chrono::nanoseconds elapsed) {
  if (_observer.source_finished)
    _observer.source_finished(_observer.context, std::string(name).c_str(), entries,
                              static_cast<long long>(elapsed.count()));
}

void HostObserver::exchangeStarted(std::string_view name) {
  if (_observer.exchange_started)
    _observer.exchange_started(_observer.context, std::string(name).c_str());
}

void HostObserver::exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) {
  if (_observer.exchange_finished)
    _observer.exchange_finished(_observer.context, std::string(name).c_str(), outcome.status,
                                outcome.succeeded ? 1 : 0,
                                static_cast<long long>(outcome.elapsed.count()));
}

// The JSON is passed with its length and without a copy: it may be large. The
// writer's buffer is not terminated, so the host must use the length.
void HostObserver::datasetReady(std::string_view json) {
  if (_observer.dataset_ready) _observer.dataset_ready(_observer.context, json.data(), json.size());
}

}  // namespace tavrin::capi
