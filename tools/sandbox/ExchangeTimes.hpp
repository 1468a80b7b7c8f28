#pragma once

#include <tavrin/observer.hpp>

#include <chrono>
#include <string_view>
#include <vector>

namespace tavrin::sandbox {

// How long each answered exchange took, by exchange.
struct ExchangeTimes {
  std::vector<std::chrono::nanoseconds> login, check, upload;

  void append(const ExchangeTimes& other);
};

// Notes the time of every exchange that got an answer, refusals included;
// give it to a RestService or a service as its observer.
class ExchangeRecorder final : public CollectionObserver {
 public:
  void exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) override;

  ExchangeTimes times;
};

}  // namespace tavrin::sandbox
