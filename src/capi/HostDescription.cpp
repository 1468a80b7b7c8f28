// The host's C platform and the two objects its callbacks answer through.
#include "capi/HostDescription.hpp"

#include <new>

struct tavrin_prompt {
  tavrin::platform::Permissions::Delivery deliver;
};

struct tavrin_answer {
  std::optional<std::string> json;
};

namespace tavrin::capi {

std::int64_t CHostDescription::status(platform::Permission permission) {
  if (_host.authorization_status == nullptr) return platform::AuthorizationStatus::denied;
  return _host.authorization_status(_host.context, static_cast<int>(permission));
}

void CHostDescription::prompt(platform::Permission permission,
                              platform::Permissions::Delivery deliver) {
  if (_host.request_access == nullptr) {
    deliver(status(permission), std::nullopt);
    return;
  }
  // Released by tavrin_prompt_complete(), which the host may call from any
  // thread after this returns.
  _host.request_access(_host.context, static_cast<int>(permission),
                       new tavrin_prompt{std::move(deliver)});
}

std::optional<std::string> CHostDescription::describe(const std::string& section) {
  if (_host.describe == nullptr) return std::nullopt;
  tavrin_answer answer;
  _host.describe(_host.context, section.c_str(), &answer);
  return std::move(answer.json);
}

}  // namespace tavrin::capi

extern "C" {

int tavrin_prompt_complete(tavrin_prompt* prompt, long long status, const char* errorDescription) {
  if (prompt == nullptr) return -1;
  const std::unique_ptr<tavrin_prompt> owned(prompt);
  try {
    std::optional<tavrin::platform::PlatformError> error;
    if (errorDescription != nullptr) error = tavrin::platform::PlatformError{errorDescription};
    owned->deliver(status, std::move(error));
    return 0;
  } catch (...) {
    return -1;  // memory ran out before the answer could be delivered
  }
}

int tavrin_answer_json(tavrin_answer* answer, const char* json, size_t length) {
  if (answer == nullptr || json == nullptr || answer->json) return -1;
  try {
    answer->json.emplace(json, length);
    return 0;
  } catch (...) {
    return -1;
  }
}

}  // extern "C"
