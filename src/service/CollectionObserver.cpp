#include <tavrin/observer.hpp>

namespace tavrin {

void CollectionObserver::sourceStarted(std::string_view) {}
void CollectionObserver::sourceFinished(std::string_view, std::size_t, std::chrono::nanoseconds) {}
void CollectionObserver::exchangeStarted(std::string_view) {}
void CollectionObserver::exchangeFinished(std::string_view, const ExchangeOutcome&) {}
void CollectionObserver::datasetReady(std::string_view) {}

}  // namespace tavrin
