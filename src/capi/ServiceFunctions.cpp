// The service functions of the C interface: each one runs the C++ service and
// turns its result into a C string and its exception into an error object.
#include "capi/CErrors.hpp"

#include <tavrin/error.hpp>
#include <tavrin/platform/Platform.hpp>

namespace {

using tavrin::capi::guarded;

// The C++ options a service or preview runs with: the host's, with the device
// profile read now when one is named.
tavrin::ServiceOptions resolvedOptions(const tavrin_options* options) {
  if (options == nullptr) return {};
  tavrin::ServiceOptions resolved = options->options;
  if (!options->profileFile.empty())
    resolved.setPlatform(tavrin::platform::loadDeviceProfile(options->profileFile));
  return resolved;
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
    auto service = std::make_unique<tavrin::TavrinService>(url, key, resolvedOptions(options));
    return new tavrin_service{std::move(service)};
  });
}

char* tavrin_service_collect(tavrin_service* service, const char* recordNumber,
                             tavrin_error** error) {
  return guarded(error, static_cast<char*>(nullptr), [&] {
    if (service == nullptr) throw missing("service");
    if (recordNumber == nullptr) throw missing("record_number");
    return tavrin::capi::copyToCString(service->service->collectData(recordNumber));
  });
}

char* tavrin_service_preview(tavrin_service* service, tavrin_error** error) {
  return guarded(error, static_cast<char*>(nullptr), [&] {
    if (service == nullptr) throw missing("service");
    return tavrin::capi::copyToCString(service->service->previewDataset());
  });
}

void tavrin_service_cancel(tavrin_service* service) {
  if (service != nullptr) service->service->cancel();
}

void tavrin_service_free(tavrin_service* service) { delete service; }

}  // extern "C"
