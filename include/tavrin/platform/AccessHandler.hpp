#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace tavrin::platform {

/// Raw authorization statuses as the phone reports them. Only `authorized`
/// counts as granted; any other value, including ones not listed, does not.
namespace AuthorizationStatus {
constexpr std::int64_t notDetermined = 0;  ///< The user has not been asked yet.
constexpr std::int64_t restricted = 1;     ///< The store is unavailable to the app.
constexpr std::int64_t denied = 2;         ///< The user refused.
constexpr std::int64_t authorized = 3;     ///< The user granted access.
constexpr std::int64_t limited = 4;        ///< Photo library only: a partial grant.
}  // namespace AuthorizationStatus

/// A failure a platform store reports, with its localized description.
struct PlatformError {
  std::string localizedDescription;  ///< Text for people; recorded as it is.
};

/// Completion of an access prompt: whether access was granted and the error, if any.
/// May be called on any thread, exactly once.
using AccessHandler = std::function<void(bool granted, std::optional<PlatformError> error)>;

/// The host's answer to "may this application read `store`?" where the system asks the
/// user nothing itself (Linux). `store` is "contacts", "calendars", "reminders" or "photos".
/// Asked at most once per store until the answer is forgotten; true grants access.
using ConsentCallback = std::function<bool(const std::string& store)>;

}  // namespace tavrin::platform
