#include "platform/linux/localeFacts.hpp"

#include <unicode/ucol.h>
#include <unicode/ucurr.h>
#include <unicode/uenum.h>
#include <unicode/ulocdata.h>
#include <unicode/unistr.h>

#include <string>

namespace tavrin::platform {

namespace {

std::optional<std::string> nonEmpty(std::string text) {
  if (text.empty()) return std::nullopt;
  return text;
}

std::string utf8(const UChar* text, std::int32_t length) {
  std::string result;
  icu::UnicodeString(text, length).toUTF8String(result);
  return result;
}

void addCurrency(const icu::Locale& locale, LocaleFacts& facts) {
  UErrorCode status = U_ZERO_ERROR;
  UChar code[4] = {};
  const std::int32_t length = ucurr_forLocale(locale.getName(), code, 4, &status);
  if (U_FAILURE(status) || length != 3) return;
  facts.currencyCode = utf8(code, length);

  UBool isChoiceFormat = false;
  std::int32_t symbolLength = 0;
  const UChar* symbol = ucurr_getName(code, locale.getName(), UCURR_SYMBOL_NAME, &isChoiceFormat,
                                      &symbolLength, &status);
  if (U_SUCCESS(status) && symbol != nullptr)
    facts.currencySymbol = nonEmpty(utf8(symbol, symbolLength));
}

std::optional<std::string> collation(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  auto chosen = locale.getKeywordValue<std::string>("collation", status);
  if (U_SUCCESS(status) && !chosen.empty()) return chosen;

  // The first of the commonly used values is the locale's default.
  status = U_ZERO_ERROR;
  icu::LocalUEnumerationPointer values(
      ucol_getKeywordValuesForLocale("collation", locale.getName(), true, &status));
  if (U_FAILURE(status) || values.isNull()) return std::nullopt;
  const char* first = uenum_next(values.getAlias(), nullptr, &status);
  if (U_FAILURE(status) || first == nullptr) return std::nullopt;
  return nonEmpty(first);
}

std::optional<std::string> script(const icu::Locale& locale) {
  if (*locale.getScript() != '\0') return locale.getScript();
  if (*locale.getLanguage() == '\0') return std::nullopt;
  UErrorCode status = U_ZERO_ERROR;
  icu::Locale likely(locale);
  likely.addLikelySubtags(status);
  if (U_FAILURE(status)) return std::nullopt;
  return nonEmpty(likely.getScript());
}

bool usesMetricSystem(const icu::Locale& locale) {
  UErrorCode status = U_ZERO_ERROR;
  const UMeasurementSystem system = ulocdata_getMeasurementSystem(locale.getName(), &status);
  return U_SUCCESS(status) && system != UMS_US;
}

}  // namespace

LocaleFacts localeFacts(const icu::Locale& locale) {
  LocaleFacts facts;
  facts.languageCode = nonEmpty(locale.getLanguage());
  facts.regionCode = nonEmpty(locale.getCountry());
  addCurrency(locale, facts);
  facts.identifier = locale.getName();
  if (*locale.getLanguage() != '\0') {
    UErrorCode status = U_ZERO_ERROR;
    auto tag = locale.toLanguageTag<std::string>(status);
    if (U_SUCCESS(status)) facts.collatorIdentifier = nonEmpty(std::move(tag));
  }
  facts.collationIdentifier = collation(locale);
  facts.scriptCode = script(locale);
  facts.usesMetricSystem = usesMetricSystem(locale);
  return facts;
}

}  // namespace tavrin::platform
