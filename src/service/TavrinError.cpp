#include <tavrin/error.hpp>

namespace tavrin {

struct TavrinError::Details {
  int httpStatus = 0;
  std::string requestId;
  std::string transportReason;
  std::string description;  // what() says
};

TavrinError::TavrinError(ErrorType errorType, std::optional<std::string> errorMessage)
    : TavrinError(errorType, std::move(errorMessage), 0, {}, {}) {}

TavrinError::TavrinError(ErrorType errorType, std::optional<std::string> errorMessage,
                         int httpStatus, std::string requestId, std::string transportReason)
    : _errorType(errorType), _errorMessage(std::move(errorMessage)) {
  std::string description = std::string("TavrinError.") + errorTypeName(errorType);
  if (_errorMessage) description.append(": ").append(*_errorMessage);
  _details = std::make_shared<const Details>(
      Details{httpStatus, std::move(requestId), std::move(transportReason), description});
}

ErrorType TavrinError::getErrorType() const noexcept { return _errorType; }

const std::optional<std::string>& TavrinError::getErrorMessage() const noexcept {
  return _errorMessage;
}

int TavrinError::httpStatus() const noexcept { return _details->httpStatus; }

const std::string& TavrinError::requestId() const noexcept { return _details->requestId; }

const std::string& TavrinError::transportReason() const noexcept {
  return _details->transportReason;
}

const char* TavrinError::what() const noexcept { return _details->description.c_str(); }

}  // namespace tavrin
