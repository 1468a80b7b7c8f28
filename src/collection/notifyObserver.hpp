#pragma once

#include <tavrin/observer.hpp>

namespace tavrin {

// Calls the host's observer, when there is one, with `call`. Whatever the
// observer throws is dropped: showing progress must never change a run.
template <typename Call>
void notifyObserver(CollectionObserver* observer, Call&& call) noexcept {
  if (observer == nullptr) return;
  try {
    call(*observer);
  } catch (...) {
  }
}

}  // namespace tavrin
