#pragma once

#include <tavrin/export.hpp>

#include <exception>
#include <memory>
#include <optional>
#include <string>

namespace tavrin {

/// The kind of a TavrinError; the raw values are part of the contract.
enum class ErrorType : int {
  invalidInput = 0,      ///< Rejected URL, or the server rejected the request's content.
  connectionFailed = 1,  ///< The HTTPS exchange failed in transport or returned no body.
  accessDenied = 2,      ///< The server refused access (401/403, forbidden, suspended).
  serverRejected = 3,    ///< The server failed (5xx) or the record number is taken.
  processingFailed = 4,  ///< A response could not be understood, or compression failed.
  cancelled = 5,         ///< TavrinService::cancel() stopped the run.
};

/// The kind with the given raw value; empty for any value outside 0 to 5.
TAVRIN_EXPORT std::optional<ErrorType> errorTypeFromRawValue(long long rawValue) noexcept;

/// The raw value of a kind (0 to 5).
constexpr int rawValue(ErrorType type) noexcept { return static_cast<int>(type); }

/// The case name of a kind, for example "invalidInput". Never null.
TAVRIN_EXPORT const char* errorTypeName(ErrorType type) noexcept;

/// The one error the library reports to its host: a kind, an optional message and
/// what the exchange with the server that failed left behind. Immutable; safe to copy
/// and to read from any thread.
class TAVRIN_EXPORT TavrinError : public std::exception {
 public:
  /// Makes an error of the given kind, with a message for people or none.
  TavrinError(ErrorType errorType, std::optional<std::string> errorMessage);
  /// The same, for a failure of an exchange: the answer's HTTP status (0 for none), its
  /// X-Request-Id (empty for none) and the transport's reason (empty for none).
  TavrinError(ErrorType errorType, std::optional<std::string> errorMessage, int httpStatus,
              std::string requestId, std::string transportReason);

  /// The kind of the error.
  ErrorType getErrorType() const noexcept;
  /// The message, absent where the failure has none.
  const std::optional<std::string>& getErrorMessage() const noexcept;
  /// The HTTP status of the answer that failed the exchange; 0 when no answer arrived
  /// or the failure was not an exchange's.
  int httpStatus() const noexcept;
  /// The X-Request-Id header of that answer, which the service's operators can look
  /// up; empty when there is none.
  const std::string& requestId() const noexcept;
  /// Why the transport failed, in libcurl's words (for example "Connection refused");
  /// empty when the failure was not one of transport.
  const std::string& transportReason() const noexcept;
  /// "TavrinError.KIND", followed by ": " and the message when there is one.
  const char* what() const noexcept override;

 private:
  struct Details;
  ErrorType _errorType;
  std::optional<std::string> _errorMessage;
  std::shared_ptr<const Details> _details;
};

/// Thrown by a collection run when the dataset cannot be written as JSON (a
/// number that is not finite or a text that is not valid UTF-8). It is not a
/// TavrinError and reaches the host unwrapped; no partial output exists.
/// Immutable; safe to copy and to read from any thread.
class TAVRIN_EXPORT JsonWriteError : public std::exception {
 public:
  /// Makes the error with a reason for people.
  explicit JsonWriteError(std::string reason);
  /// The reason, for example "number is not finite".
  const char* what() const noexcept override;

 private:
  std::string _reason;
};

}  // namespace tavrin
