#include "collection/RunEvents.hpp"

#include <cstdio>

namespace tavrin {

RunEvents::RunEvents(std::shared_ptr<CollectionObserver> observer, LogHandler log)
    : _observer(std::move(observer)), _log(std::move(log)) {}

const RunEvents& RunEvents::nobody() {
  static const RunEvents none;
  return none;
}

template <typename Call>
void RunEvents::notify(Call&& call) const noexcept {
  if (!_observer) return;
  try {
    call(*_observer);
  } catch (...) {
  }
}

void RunEvents::sourceStarted(std::string_view name) const {
  notify([&](CollectionObserver& observer) { observer.sourceStarted(name); });
}

void RunEvents::sourceFinished(std::string_view name, std::size_t entries,
                               std::chrono::nanoseconds elapsed) const {
  notify([&](CollectionObserver& observer) { observer.sourceFinished(name, entries, elapsed); });
  if (_log) {
    log(LogLevel::debug, "source " + std::string(name) + ": " + std::to_string(entries) +
                             (entries == 1 ? " entry in " : " entries in ") +
                             milliseconds(elapsed));
  }
}

void RunEvents::exchangeStarted(std::string_view name) const {
  notify([&](CollectionObserver& observer) { observer.exchangeStarted(name); });
}

void RunEvents::exchangeFinished(std::string_view name, const ExchangeOutcome& outcome,
                                 std::string_view detail) const {
  notify([&](CollectionObserver& observer) { observer.exchangeFinished(name, outcome); });
  if (!_log) return;
  std::string line(name);
  line += outcome.status == 0 ? ": no answer" : ": HTTP " + std::to_string(outcome.status);
  line += " in " + milliseconds(outcome.elapsed);
  if (!detail.empty()) line.append(", ").append(detail);
  log(outcome.succeeded ? LogLevel::info : LogLevel::warning, line);
}

void RunEvents::datasetReady(std::string_view json) const {
  notify([&](CollectionObserver& observer) { observer.datasetReady(json); });
}

void RunEvents::log(LogLevel level, std::string_view line) const {
  if (!_log) return;
  try {
    _log(level, line);
  } catch (...) {
  }
}

std::string milliseconds(std::chrono::nanoseconds elapsed) {
  char text[32];
  std::snprintf(text, sizeof text, "%.1f ms", static_cast<double>(elapsed.count()) / 1e6);
  return text;
}

}  // namespace tavrin
