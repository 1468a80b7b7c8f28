#pragma once

// What the opaque handles of <tavrin/tavrin.h> hold. The C functions are the
// only code that makes or reads them.

#include <tavrin/tavrin.h>
#include <tavrin/options.hpp>
#include <tavrin/service.hpp>

#include <memory>
#include <optional>
#include <string>

struct tavrin_options {
  tavrin::ServiceOptions options;
  // Read when a service or a preview is made, so that a bad profile is reported
  // through an error object rather than a bare -1 from the setter.
  std::string profileFile;
};

struct tavrin_service {
  std::unique_ptr<tavrin::TavrinService> service;
};

struct tavrin_error {
  int kind = TAVRIN_ERROR_PROCESSING_FAILED;
  std::optional<std::string> message;
  int httpStatus = 0;
  std::string requestId;
  std::string transportReason;
};
