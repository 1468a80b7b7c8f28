#include "ExchangeTimes.hpp"

namespace tavrin::sandbox {

void ExchangeTimes::append(const ExchangeTimes& other) {
  login.insert(login.end(), other.login.begin(), other.login.end());
  check.insert(check.end(), other.check.begin(), other.check.end());
  upload.insert(upload.end(), other.upload.begin(), other.upload.end());
}

void ExchangeRecorder::exchangeFinished(std::string_view name, const ExchangeOutcome& outcome) {
  if (outcome.status == 0) return;  // no answer: a transport failure has no latency
  auto& list = name == "login" ? times.login : name == "check" ? times.check : times.upload;
  list.push_back(outcome.elapsed);
}

}  // namespace tavrin::sandbox
