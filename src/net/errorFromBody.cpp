#include "net/errorFromBody.hpp"

#include "collection/StatusResource.hpp"

#include <nlohmann/json.hpp>

#include <array>
#include <string>

namespace tavrin {
namespace {

using Message = std::string (*)(const std::string& detail);

struct CodeWord {
  std::string_view title;
  ErrorType type;
  Message message;
};

template <const std::string_view& fixed>
std::string fixedMessage(const std::string&) {
  return std::string(fixed);
}

template <const std::string_view& prefix>
std::string prefixedMessage(const std::string& detail) {
  return std::string(prefix) + detail;
}

using S = StatusResource;

// Compared in this order; the first equal title wins.
constexpr std::array<CodeWord, 10> codeWords{{
    {S::actionForbidden, ErrorType::accessDenied, prefixedMessage<S::actionForbiddenPrefix>},
    {S::authKeyInvalid, ErrorType::invalidInput, fixedMessage<S::authKeyInvalidMessage>},
    {S::subscriptionSuspended, ErrorType::accessDenied,
     prefixedMessage<S::subscriptionSuspendedPrefix>},
    {S::requestNotFound, ErrorType::invalidInput, fixedMessage<S::requestNotFound>},
    {S::recordNumberInvalid, ErrorType::invalidInput, fixedMessage<S::recordNumberInvalidMessage>},
    {S::recordNumberNotUnique, ErrorType::invalidInput,
     fixedMessage<S::recordNumberNotUniqueMessage>},
    {S::dataRecentlyUploaded, ErrorType::invalidInput, fixedMessage<S::dataRecentlyUploaded>},
    {S::recordNumberRequired, ErrorType::invalidInput,
     fixedMessage<S::recordNumberRequiredMessage>},
    {S::codeInvalid, ErrorType::invalidInput, fixedMessage<S::codeInvalid>},
    {S::codeRequired, ErrorType::invalidInput, fixedMessage<S::codeRequired>},
}};

}  // namespace

std::optional<TavrinError> errorFromBody(std::span<const std::uint8_t> data) {
  const auto document = nlohmann::json::parse(data.begin(), data.end(), nullptr, false);
  if (!document.is_object() || document.empty()) return std::nullopt;

  const auto title = document.find("title");
  if (title == document.end() || !title->is_string()) return std::nullopt;

  const auto detailMember = document.find("detail");
  const std::string detail = detailMember != document.end() && detailMember->is_string()
                                 ? detailMember->get<std::string>()
                                 : std::string();

  const auto& titleText = title->get_ref<const std::string&>();
  for (const auto& word : codeWords) {
    if (titleText == word.title) return TavrinError(word.type, word.message(detail));
  }
  return std::nullopt;
}

}  // namespace tavrin
