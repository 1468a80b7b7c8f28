#pragma once

// What the opaque handles of <tavrin/tavrin.h> hold. The C functions are the
// only code that makes or reads them.

#include "platform/profile/HostPlatform.hpp"

#include <tavrin/tavrin.h>
#include <tavrin/options.hpp>
#include <tavrin/service.hpp>

#include <atomic>
#include <memory>
#include <optional>
#include <string>

struct tavrin_options {
  tavrin::ServiceOptions options;
  // Read when a service or a preview is made, so that a bad profile is reported
  // through an error object rather than a bare -1 from the setter.
  std::string profileFile;
  // The host's own platform; made anew for each service.
  std::optional<tavrin_platform> hostPlatform;
};

struct tavrin_service {
  std::unique_ptr<tavrin::TavrinService> service;
  // The host's platform the service reads, when it has one: told when a run
  // begins, and asked afterwards whether the host described something badly.
  std::shared_ptr<tavrin::platform::HostPlatform> host;
  // Held by the collection or preview in progress, which the host's platform
  // is told of before the service sees the call.
  std::atomic<bool> running{false};
};

struct tavrin_error {
  int kind = TAVRIN_ERROR_PROCESSING_FAILED;
  std::optional<std::string> message;
  int httpStatus = 0;
  std::string requestId;
  std::string transportReason;
};
