// The service functions of the C interface: each one runs the C++ service and
// turns its result into a C string and its exception into an error object.
#include "capi/CErrors.hpp"
#include "capi/HostDescription.hpp"

#include <tavrin/error.hpp>
#include <tavrin/platform/Platform.hpp>

namespace {

using tavrin::capi::guarded;

using tavrin::platform::HostPlatform;

// The C++ options a service runs with: the host's, with the device profile
// read now when one is named, or the host's platform made for this service.
tavrin::ServiceOptions resolvedOptions(const tavrin_options* options,
                                       std::shared_ptr<HostPlatform>& host) {
  if (options == nullptr) return {};
  tavrin::ServiceOptions resolved = options->options;
  if (!options->profileFile.empty())
    resolved.setPlatform(tavrin::platform::loadDeviceProfile(options->profileFile));
  if (options->hostPlatform) {
    host = std::make_shared<HostPlatform>(
        std::make_unique<tavrin::capi::CHostDescription>(*options->hostPlatform));
    resolved.setPlatform(host);
  }
  return resolved;
}

// Throws what the host described badly since its platform was last asked.
void checkHost(const std::shared_ptr<HostPlatform>& host) {
  if (!host) return;
  if (auto failure = host->takeFailure()) throw std::move(*failure);
}

// Runs a collection or preview. A malformed description from the host stops
// the run (it cancels it, so nothing is uploaded) and is its error.
template <typename Run>
char* runOnce(tavrin_service& service, Run&& run) {
  if (service.running.exchange(true)) {
    throw tavrin::TavrinError(tavrin::ErrorType::invalidInput,
                              "A collection of this service is already running");
  }
  const std::unique_ptr<std::atomic<bool>, void (*)(std::atomic<bool>*)> release(
      &service.running, [](std::atomic<bool>* running) { running->store(false); });
  if (service.host) service.host->beginRun();
  std::string result;
  try {
    result = run(*service.service);
  } catch (...) {
    checkHost(service.host);
    throw;
  }
  checkHost(service.host);
  return tavrin::capi::copyToCString(result);
}

tavrin::TavrinError missing(const char* what) {
  return tavrin::TavrinError(tavrin::ErrorType::invalidInput, std::string(what) + " is NULL");
}

}  // namespace

extern "C" {

tavrin_service* tavrin_service_new(const char* url, const char* key, const tavrin_options* options,
                                   tavrin_error** error) {
  return guarded(error, static_cast<tavrin_service*>(nullptr), [&] {
    if (url == nullptr) throw missing("url");
    if (key == nullptr) throw missing("key");
    std::shared_ptr<HostPlatform> host;
    auto made = std::make_unique<tavrin_service>();
    made->service =
        std::make_unique<tavrin::TavrinService>(url, key, resolvedOptions(options, host));
    // The login read the device's facts for the request headers.
    checkHost(host);
    if (host) {
      host->setFailureHook([service = made->service.get()] { service->cancel(); });
      made->host = std::move(host);
    }
    return made.release();
  });
}

char* tavrin_service_collect(tavrin_service* service, const char* recordNumber,
                             tavrin_error** error) {
  return guarded(error, static_cast<char*>(nullptr), [&] {
    if (service == nullptr) throw missing("service");
    if (recordNumber == nullptr) throw missing("record_number");
    return runOnce(*service, [&](tavrin::TavrinService& s) { return s.collectData(recordNumber); });
  });
}

char* tavrin_service_preview(tavrin_service* service, tavrin_error** error) {
  return guarded(error, static_cast<char*>(nullptr), [&] {
    if (service == nullptr) throw missing("service");
    return runOnce(*service, [](tavrin::TavrinService& s) { return s.previewDataset(); });
  });
}

void tavrin_service_cancel(tavrin_service* service) {
  if (service != nullptr) service->service->cancel();
}

void tavrin_service_free(tavrin_service* service) { delete service; }

}  // extern "C"
