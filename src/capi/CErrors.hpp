#pragma once

// How C++ failures become the error objects of the C interface: every C
// function runs its body through `guarded`, so no exception leaves it.

#include "capi/CHandles.hpp"

#include <string_view>

namespace tavrin::capi {

// Stores an error of `kind` with `message` in `*error` (when `error` is not null).
void reportError(tavrin_error** error, int kind, std::string_view message) noexcept;

// Stores the error the exception in flight describes. Call only inside a catch block.
void reportCurrentException(tavrin_error** error) noexcept;

// True for the one error object that is not on the heap (out of memory).
bool isStaticError(const tavrin_error* error) noexcept;

// A copy of `text` on the C heap, for tavrin_string_free(). Throws std::bad_alloc.
char* copyToCString(std::string_view text);

// Runs `body`, returning what it returns; on an exception, reports it and
// returns `failed`.
template <typename Result, typename Body>
Result guarded(tavrin_error** error, Result failed, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    reportCurrentException(error);
    return failed;
  }
}

}  // namespace tavrin::capi
