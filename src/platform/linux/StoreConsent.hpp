#pragma once

#include "platform/linux/HostConsent.hpp"

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace tavrin::platform {

// The host's consent for one of its stores, shared with the platform's other stores.
class StoreConsent {
 public:
  StoreConsent(std::string store, std::shared_ptr<HostConsent> host)
      : _store(std::move(store)), _host(std::move(host)) {}

  std::int64_t status() const { return _host->status(_store); }
  // Asks the host unless the store is decided, and answers on the calling thread.
  void request(const AccessHandler& handler) const {
    handler(_host->request(_store) == AuthorizationStatus::authorized, std::nullopt);
  }

 private:
  std::string _store;
  std::shared_ptr<HostConsent> _host;
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
