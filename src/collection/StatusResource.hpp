#pragma once

#include <string_view>

namespace tavrin {

// The scoring service's code words and the messages the library reports for them.
struct StatusResource {
  // Code words that appear as "title" in the server's error documents.
  static constexpr std::string_view actionForbidden = "action_forbidden";
  static constexpr std::string_view authKeyInvalid = "auth_key_invalid";
  static constexpr std::string_view subscriptionSuspended = "subscription_suspended";
  static constexpr std::string_view requestNotFound = "request_not_found";
  static constexpr std::string_view recordNumberInvalid = "record_number_invalid";
  static constexpr std::string_view recordNumberNotUnique = "record_number_not_unique";
  static constexpr std::string_view dataRecentlyUploaded = "data_recently_uploaded";
  static constexpr std::string_view recordNumberRequired = "record_number_required";
  static constexpr std::string_view codeInvalid = "CodeInvalid";
  static constexpr std::string_view codeRequired = "CodeRequired";

  // Messages. The two prefixes are followed by the document's detail.
  static constexpr std::string_view actionForbiddenPrefix = "action_forbidden. ";
  static constexpr std::string_view subscriptionSuspendedPrefix = "subscription_suspended. ";
  static constexpr std::string_view authKeyInvalidMessage =
      "invalid_grant_key. Authentication key is invalid";
  static constexpr std::string_view recordNumberInvalidMessage =
      "record_number_invalid. Record number is invalid";
  static constexpr std::string_view recordNumberNotUniqueMessage =
      "record_number_not_unique. Record number is not unique";
  static constexpr std::string_view recordNumberRequiredMessage =
      "record_number_required. Record number is required";
  static constexpr std::string_view urlIncorrectMessage = "Url is incorrect";
  static constexpr std::string_view compressFailedMessage = "Compress failed";
};

}  // namespace tavrin
