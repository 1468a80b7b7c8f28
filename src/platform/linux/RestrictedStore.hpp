#pragma once

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <optional>

namespace tavrin::platform {

// The access answers of a store the system does not have: restricted for every
// entity type, and a prompt, which a restricted status never calls for, is
// refused at once on the calling thread.
template <typename Store>
class RestrictedStore : public Store {
 public:
  std::int64_t authorizationStatus(std::int64_t) override {
    return AuthorizationStatus::restricted;
  }
  void requestAccess(std::int64_t, AccessHandler handler) override { handler(false, std::nullopt); }
};

}  // namespace tavrin::platform
