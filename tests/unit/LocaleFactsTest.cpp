#include "platform/linux/localeFacts.hpp"

#include <gtest/gtest.h>

namespace tavrin::platform {
namespace {

using Text = std::optional<std::string>;

struct LocaleCase {
  const char* locale;
  Text language, region, currency, symbol;
  std::string identifier;
  Text collator, collation, script;
  bool metric;
};

void PrintTo(const LocaleCase& c, std::ostream* out) { *out << '"' << c.locale << '"'; }

class LocaleFactsOf : public testing::TestWithParam<LocaleCase> {};

TEST_P(LocaleFactsOf, AreWhatIcuKnows) {
  const auto& expected = GetParam();
  const auto facts = localeFacts(icu::Locale(expected.locale));
  EXPECT_EQ(facts.languageCode, expected.language);
  EXPECT_EQ(facts.regionCode, expected.region);
  EXPECT_EQ(facts.currencyCode, expected.currency);
  EXPECT_EQ(facts.currencySymbol, expected.symbol);
  EXPECT_EQ(facts.identifier, expected.identifier);
  EXPECT_EQ(facts.collatorIdentifier, expected.collator);
  EXPECT_EQ(facts.collationIdentifier, expected.collation);
  EXPECT_EQ(facts.scriptCode, expected.script);
  EXPECT_EQ(facts.usesMetricSystem, expected.metric);
}

const Text none;

INSTANTIATE_TEST_SUITE_P(
    Locales, LocaleFactsOf,
    testing::Values(
        LocaleCase{"en_US", "en", "US", "USD", "$", "en_US", "en-US", "standard", "Latn", false},
        // What LANG=C and LANG=POSIX become: American English conventions.
        LocaleCase{"en_US_POSIX", "en", "US", "USD", "$", "en_US_POSIX", "en-US-u-va-posix",
                   "standard", "Latn", false},
        LocaleCase{"de_DE@collation=phonebook", "de", "DE", "EUR", "\xE2\x82\xAC",
                   "de_DE@collation=phonebook", "de-DE-u-co-phonebk", "phonebook", "Latn", true},
        LocaleCase{"zh_Hant_TW", "zh", "TW", "TWD", "$", "zh_Hant_TW", "zh-Hant-TW", "stroke",
                   "Hant", true},
        LocaleCase{"ja_JP", "ja", "JP", "JPY", "\xEF\xBF\xA5", "ja_JP", "ja-JP", "standard", "Jpan",
                   true},
        // A language alone has no currency; a macro-region has none either.
        LocaleCase{"fr", "fr", none, none, none, "fr", "fr", "standard", "Latn", true},
        LocaleCase{"es_419", "es", "419", none, none, "es_419", "es-419", "standard", "Latn", true},
        LocaleCase{"", none, none, none, none, "", none, "standard", none, false}));

}  // namespace
}  // namespace tavrin::platform
