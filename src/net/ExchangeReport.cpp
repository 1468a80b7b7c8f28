#include "net/ExchangeReport.hpp"

#include "collection/notifyObserver.hpp"

namespace tavrin {

ExchangeReport::ExchangeReport(CollectionObserver* observer, std::string_view name)
    : _observer(observer), _name(name), _start(std::chrono::steady_clock::now()) {
  notifyObserver(_observer, [this](CollectionObserver& o) { o.exchangeStarted(_name); });
}

ExchangeReport::~ExchangeReport() {
  _outcome.elapsed = std::chrono::steady_clock::now() - _start;
  notifyObserver(_observer, [this](CollectionObserver& o) { o.exchangeFinished(_name, _outcome); });
}

}  // namespace tavrin
