#pragma once

#include "dataset/Element.hpp"

#include <tavrin/platform/AccessHandler.hpp>

#include <cstdint>
#include <string_view>

namespace tavrin {

// The one authorization rule of every source that needs a permission: only the
// raw status `authorized` opens the store; any other value, known or not,
// records the access-denied entry for `deniedText` in `element`.
inline bool grantsAccess(std::int64_t status, std::string_view deniedText, Element& element) {
  if (status == platform::AuthorizationStatus::authorized) return true;
  element.addAccessDenied(deniedText);
  return false;
}

}  // namespace tavrin
