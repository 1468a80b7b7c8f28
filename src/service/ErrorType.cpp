#include <tavrin/error.hpp>

namespace tavrin {

std::optional<ErrorType> errorTypeFromRawValue(long long rawValue) noexcept {
  constexpr auto last = static_cast<long long>(ErrorType::cancelled);
  if (rawValue < 0 || rawValue > last) return std::nullopt;
  return static_cast<ErrorType>(rawValue);
}

const char* errorTypeName(ErrorType type) noexcept {
  switch (type) {
    case ErrorType::invalidInput: return "invalidInput";
    case ErrorType::connectionFailed: return "connectionFailed";
    case ErrorType::accessDenied: return "accessDenied";
    case ErrorType::serverRejected: return "serverRejected";
    case ErrorType::processingFailed: return "processingFailed";
    case ErrorType::cancelled: return "cancelled";
  }
  return "unknown";
}

}  // namespace tavrin
