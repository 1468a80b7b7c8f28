// The options functions of the C interface. A setter reports a refused
// argument or a failed allocation as -1 and leaves the options as they were.
#include "capi/CErrors.hpp"
#include "capi/HostReporting.hpp"

#include <chrono>
#include <new>

namespace {

constexpr int succeeded = 0;
constexpr int refused = -1;

template <typename Change>
int change(tavrin_options* options, Change&& body) noexcept {
  if (options == nullptr) return refused;
  try {
    body(*options);
    return succeeded;
  } catch (...) {
    return refused;
  }
}

}  // namespace

extern "C" {

tavrin_options* tavrin_options_new(void) { return new (std::nothrow) tavrin_options(); }

void tavrin_options_free(tavrin_options* options) { delete options; }

int tavrin_options_set_ca_file(tavrin_options* options, const char* path) {
  return change(options, [&](tavrin_options& o) { o.options.setCaFile(path ? path : ""); });
}

int tavrin_options_add_resolve(tavrin_options* options, const char* hostPortAddress) {
  if (hostPortAddress == nullptr) return refused;
  return change(options, [&](tavrin_options& o) {
    auto entries = o.options.resolve();
    entries.emplace_back(hostPortAddress);
    o.options.setResolve(std::move(entries));
  });
}

int tavrin_options_set_deadline_ms(tavrin_options* options, long long milliseconds) {
  if (milliseconds < 0) return refused;
  return change(options, [&](tavrin_options& o) {
    o.options.setDeadline(std::chrono::milliseconds(milliseconds));
  });
}

// The device is the one set last: a profile file or a host's platform.
int tavrin_options_set_profile_file(tavrin_options* options, const char* path) {
  return change(options, [&](tavrin_options& o) {
    o.profileFile = path ? path : "";
    o.hostPlatform.reset();
  });
}

int tavrin_options_set_platform(tavrin_options* options, const tavrin_platform* hostPlatform) {
  return change(options, [&](tavrin_options& o) {
    o.profileFile.clear();
    o.hostPlatform.reset();
    if (hostPlatform) o.hostPlatform = *hostPlatform;
  });
}

int tavrin_options_set_log(tavrin_options* options, tavrin_log_fn fn, void* context) {
  return change(options, [&](tavrin_options& o) {
    o.options.setLog(fn ? tavrin::capi::logHandler(fn, context) : tavrin::LogHandler());
  });
}

int tavrin_options_set_observer(tavrin_options* options, const tavrin_observer* observer) {
  return change(options, [&](tavrin_options& o) {
    o.options.setObserver(observer ? std::make_shared<tavrin::capi::HostObserver>(*observer)
                                   : nullptr);
  });
}

}  // extern "C"
