// The error accessors, the string release and the version of the C interface.
#include "capi/CErrors.hpp"

#include <tavrin/version.hpp>

#include <cstdlib>

#define TAVRIN_STRINGIFY_(x) #x
#define TAVRIN_STRINGIFY(x) TAVRIN_STRINGIFY_(x)

extern "C" {

const char* tavrin_version(void) {
  return TAVRIN_STRINGIFY(TAVRIN_VERSION_MAJOR) "." TAVRIN_STRINGIFY(
      TAVRIN_VERSION_MINOR) "." TAVRIN_STRINGIFY(TAVRIN_VERSION_PATCH);
}

int tavrin_error_kind(const tavrin_error* error) { return error ? error->kind : -1; }

const char* tavrin_error_message(const tavrin_error* error) {
  return error && error->message ? error->message->c_str() : nullptr;
}

int tavrin_error_http_status(const tavrin_error* error) { return error ? error->httpStatus : 0; }

const char* tavrin_error_request_id(const tavrin_error* error) {
  return error ? error->requestId.c_str() : "";
}

const char* tavrin_error_transport_reason(const tavrin_error* error) {
  return error ? error->transportReason.c_str() : "";
}

void tavrin_error_free(tavrin_error* error) {
  if (!tavrin::capi::isStaticError(error)) delete error;
}

void tavrin_string_free(char* string) { std::free(string); }

}  // extern "C"
