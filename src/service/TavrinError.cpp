#include <tavrin/error.hpp>

namespace tavrin {

TavrinError::TavrinError(ErrorType errorType, std::optional<std::string> errorMessage)
    : _errorType(errorType), _errorMessage(std::move(errorMessage)) {}

ErrorType TavrinError::getErrorType() const noexcept { return _errorType; }

const std::optional<std::string>& TavrinError::getErrorMessage() const noexcept {
  return _errorMessage;
}

const char* TavrinError::what() const noexcept {
  // The description is fixed per kind so that it can be recorded in a
  // dataset without leaking message text.
  switch (_errorType) {
    case ErrorType::invalidInput: return "TavrinError.invalidInput";
    case ErrorType::connectionFailed: return "TavrinError.connectionFailed";
    case ErrorType::accessDenied: return "TavrinError.accessDenied";
    case ErrorType::serverRejected: return "TavrinError.serverRejected";
    case ErrorType::processingFailed: return "TavrinError.processingFailed";
  }
  return "TavrinError";
}

}  // namespace tavrin
