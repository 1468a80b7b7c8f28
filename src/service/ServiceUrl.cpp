#include "service/ServiceUrl.hpp"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <cstdint>
#include <limits>
#include <memory>
#include <string>

namespace tavrin {
namespace {

// ICU's engine gives `\w` its Unicode meaning and supports the lazy `+?` and
// the possessive `*+` exactly as the pattern is written.
constexpr const char* servicePattern = R"(https://[\w-]+?\.tavrin\.com[:\d]*+$)";

std::unique_ptr<icu::RegexPattern> compileServicePattern() {
  UErrorCode status = U_ZERO_ERROR;
  UParseError where;
  std::unique_ptr<icu::RegexPattern> pattern(
      icu::RegexPattern::compile(icu::UnicodeString::fromUTF8(servicePattern), 0, where, status));
  if (U_FAILURE(status)) return nullptr;
  return pattern;
}

}  // namespace

bool isServiceUrl(std::string_view url) { return matchedServiceUrl(url).has_value(); }

std::optional<std::string> matchedServiceUrl(std::string_view url) {
  // A compiled pattern may be shared by threads; each search gets its own matcher.
  static const std::unique_ptr<icu::RegexPattern> pattern = compileServicePattern();
  if (!pattern || url.size() > static_cast<std::size_t>(std::numeric_limits<std::int32_t>::max())) {
    return std::nullopt;
  }

  const icu::UnicodeString text = icu::UnicodeString::fromUTF8(
      icu::StringPiece(url.data(), static_cast<std::int32_t>(url.size())));
  UErrorCode status = U_ZERO_ERROR;
  const std::unique_ptr<icu::RegexMatcher> matcher(pattern->matcher(text, status));
  if (U_FAILURE(status) || !matcher->find(status) || U_FAILURE(status)) return std::nullopt;
  std::string matched;
  matcher->group(status).toUTF8String(matched);
  if (U_FAILURE(status)) return std::nullopt;
  return matched;
}

}  // namespace tavrin
