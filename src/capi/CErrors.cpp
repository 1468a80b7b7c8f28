#include "capi/CErrors.hpp"

#include <tavrin/error.hpp>
#include <tavrin/platform/Platform.hpp>

#include <cstdlib>
#include <cstring>
#include <new>

namespace tavrin::capi {
namespace {

// Given out when memory runs out, so that even then the caller learns why.
// tavrin_error_free() leaves it alone.
tavrin_error outOfMemory{TAVRIN_ERROR_OUT_OF_MEMORY, std::nullopt, 0, {}, {}};

void store(tavrin_error** error, tavrin_error value) noexcept {
  if (error == nullptr) return;
  try {
    *error = new tavrin_error(std::move(value));
  } catch (...) {
    *error = &outOfMemory;
  }
}

}  // namespace

bool isStaticError(const tavrin_error* error) noexcept { return error == &outOfMemory; }

void reportError(tavrin_error** error, int kind, std::string_view message) noexcept {
  if (error == nullptr) return;
  try {
    store(error, tavrin_error{kind, std::string(message), 0, {}, {}});
  } catch (...) {
    *error = &outOfMemory;
  }
}

void reportCurrentException(tavrin_error** error) noexcept {
  if (error == nullptr) return;
  try {
    throw;
  } catch (const TavrinError& failure) {
    try {
      store(error,
            tavrin_error{rawValue(failure.getErrorType()), failure.getErrorMessage(),
                         failure.httpStatus(), failure.requestId(), failure.transportReason()});
    } catch (...) {
      *error = &outOfMemory;
    }
  } catch (const JsonWriteError& failure) {
    reportError(error, TAVRIN_ERROR_DATASET_NOT_JSON, failure.what());
  } catch (const platform::DeviceProfileError& failure) {
    reportError(error, TAVRIN_ERROR_DEVICE_PROFILE, failure.what());
  } catch (const std::bad_alloc&) {
    *error = &outOfMemory;
  } catch (const std::exception& failure) {
    reportError(error, TAVRIN_ERROR_PROCESSING_FAILED, failure.what());
  } catch (...) {
    reportError(error, TAVRIN_ERROR_PROCESSING_FAILED, "unknown failure");
  }
}

char* copyToCString(std::string_view text) {
  auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) throw std::bad_alloc();
  std::memcpy(copy, text.data(), text.size());
  copy[text.size()] = '\0';
  return copy;
}

}  // namespace tavrin::capi
