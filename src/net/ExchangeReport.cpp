#include "net/ExchangeReport.hpp"

#include <new>

namespace tavrin {

ExchangeReport::ExchangeReport(const RunEvents& events, std::string_view name)
    : _events(events), _name(name), _start(std::chrono::steady_clock::now()) {
  _events.exchangeStarted(_name);
}

ExchangeReport::~ExchangeReport() {
  _outcome.elapsed = std::chrono::steady_clock::now() - _start;
  try {
    std::string detail;
    if (!_requestId.empty()) detail = "request " + _requestId;
    if (!_failure.empty()) detail += (detail.empty() ? "" : ", ") + _failure;
    _events.exchangeFinished(_name, _outcome, detail);
  } catch (const std::bad_alloc&) {
    // Reporting must not end the process on the way out of an exchange.
  }
}

void ExchangeReport::answered(long status, const std::string& requestId) {
  _outcome.status = static_cast<int>(status);
  _requestId = requestId;
}

}  // namespace tavrin
