#include "platform/linux/localeFacts.hpp"

#include <gtest/gtest.h>

#include <tuple>

namespace tavrin::platform {
namespace {

auto fieldsOf(const LocaleFacts& f) {
  return std::tie(f.languageCode, f.regionCode, f.currencyCode, f.currencySymbol, f.identifier,
                  f.collatorIdentifier, f.collationIdentifier, f.scriptCode, f.usesMetricSystem);
}

TEST(LocaleFacts, AreWhatIcuKnowsOfTheLocale) {
  const std::nullopt_t none = std::nullopt;
  const std::pair<const char*, LocaleFacts> cases[] = {
      {"en_US", {"en", "US", "USD", "$", "en_US", "en-US", "standard", "Latn", false}},
      // What LANG=C and LANG=POSIX become: American English conventions.
      {"en_US_POSIX",
       {"en", "US", "USD", "$", "en_US_POSIX", "en-US-u-va-posix", "standard", "Latn", false}},
      {"de_DE@collation=phonebook",
       {"de", "DE", "EUR", "\xE2\x82\xAC", "de_DE@collation=phonebook", "de-DE-u-co-phonebk",
        "phonebook", "Latn", true}},
      // The United Kingdom's mixed system counts as metric.
      {"en_GB", {"en", "GB", "GBP", "\xC2\xA3", "en_GB", "en-GB", "standard", "Latn", true}},
      {"zh_Hant_TW", {"zh", "TW", "TWD", "$", "zh_Hant_TW", "zh-Hant-TW", "stroke", "Hant", true}},
      // A language alone has no currency; a macro-region has none either.
      {"fr", {"fr", none, none, none, "fr", "fr", "standard", "Latn", true}},
      {"es_419", {"es", "419", none, none, "es_419", "es-419", "standard", "Latn", true}},
      {"", {none, none, none, none, "", none, "standard", none, false}},
  };
  for (const auto& [locale, expected] : cases) {
    const LocaleFacts facts = localeFacts(icu::Locale(locale));
    EXPECT_EQ(fieldsOf(facts), fieldsOf(expected)) << '"' << locale << '"';
  }
}

}  // namespace
}  // namespace tavrin::platform
