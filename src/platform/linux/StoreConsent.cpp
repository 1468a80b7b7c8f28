#include "platform/linux/StoreConsent.hpp"

namespace tavrin::platform {

void StoreConsent::request(const AccessHandler& handler) {
  if (_status == AuthorizationStatus::notDetermined) {
    // A callback that throws has not said yes.
    bool granted = false;
    try {
      granted = _callback && _callback(_store);
    } catch (...) {
    }
    _status = granted ? AuthorizationStatus::authorized : AuthorizationStatus::denied;
  }
  handler(_status == AuthorizationStatus::authorized, std::nullopt);
}

}  // namespace tavrin::platform
