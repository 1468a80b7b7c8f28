#include "platform/linux/timeZoneFacts.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <tuple>

namespace tavrin::platform {
namespace {

constexpr double winter = 1700000000;  // 2023-11-14 22:13:20 UTC
constexpr double summer = 1720000000;  // 2024-07-03 09:46:40 UTC

// The short name depends on the moment and on the locale; what each name is, is ICU's.
// A moment that is no time has none.
TEST(ZoneAbbreviation, IsTheShortNameInTheLocaleAtThatMoment) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::tuple<const char*, const char*, double, std::optional<std::string>> cases[] = {
      {"America/New_York", "en_US", winter, "EST"},
      {"America/New_York", "en_US", summer, "EDT"},
      {"Europe/Berlin", "de_DE", winter, "MEZ"},
      {"Europe/Berlin", "en_US", winter, "GMT+1"},
      {"Europe/Berlin", "de_DE", std::nan(""), std::nullopt},
      {"Europe/Berlin", "de_DE", infinity, std::nullopt},
      {"Europe/Berlin", "de_DE", -infinity, std::nullopt},
      {"Europe/Berlin", "de_DE", 1e306, std::nullopt},
      {"Europe/Berlin", "de_DE", -1e306, std::nullopt}};
  for (const auto& [zone, locale, moment, abbreviation] : cases) {
    const std::unique_ptr<icu::TimeZone> timeZone(icu::TimeZone::createTimeZone(zone));
    const auto facts = timeZoneFacts(*timeZone, icu::Locale(locale), moment);
    EXPECT_EQ(facts.identifier, zone);
    EXPECT_EQ(facts.abbreviation, abbreviation) << zone << " in " << locale << " at " << moment;
  }
}

}  // namespace
}  // namespace tavrin::platform
