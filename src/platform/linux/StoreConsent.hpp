#pragma once

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <functional>
#include <string>

namespace tavrin::platform {

// The host's answer to "may this application read the store named ...?".
using ConsentCallback = std::function<bool(const std::string& store)>;

// Whether the host application may read one store the system leaves to it.
// Linux has no system prompt for the address book, the calendars or the
// photos, so the host decides through its consent callback; without one the
// answer is no. The status is not determined until the question is asked.
class StoreConsent {
 public:
  StoreConsent(std::string store, ConsentCallback callback)
      : _store(std::move(store)), _callback(std::move(callback)) {}

  std::int64_t status() const { return _status; }
  // Asks the callback once, on the calling thread, and keeps its answer.
  void request(const AccessHandler& handler);

 private:
  std::string _store;
  ConsentCallback _callback;
  std::int64_t _status = AuthorizationStatus::notDetermined;
};

// The access answers of a store whose reading the host consents to.
template <typename Store>
class ConsentedStore : public Store {
 public:
  explicit ConsentedStore(StoreConsent consent) : _consent(std::move(consent)) {}

  std::int64_t authorizationStatus(std::int64_t) override { return _consent.status(); }
  void requestAccess(std::int64_t, AccessHandler handler) override { _consent.request(handler); }

 private:
  StoreConsent _consent;
};

}  // namespace tavrin::platform
