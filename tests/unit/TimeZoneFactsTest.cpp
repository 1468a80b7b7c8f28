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

TimeZoneFacts factsOf(const char* zone, const char* locale, double moment) {
  const std::unique_ptr<icu::TimeZone> timeZone(icu::TimeZone::createTimeZone(zone));
  return timeZoneFacts(*timeZone, icu::Locale(locale), moment);
}

// The short name depends on the moment and on the locale; what each name is, is ICU's.
TEST(ZoneAbbreviation, IsTheShortNameInTheLocaleAtThatMoment) {
  const std::tuple<const char*, const char*, double, const char*> cases[] = {
      {"America/New_York", "en_US", winter, "EST"},
      {"America/New_York", "en_US", summer, "EDT"},
      {"Europe/Berlin", "de_DE", winter, "MEZ"},
      {"Europe/Berlin", "en_US", winter, "GMT+1"},
  };
  for (const auto& [zone, locale, moment, abbreviation] : cases) {
    const auto facts = factsOf(zone, locale, moment);
    EXPECT_EQ(facts.identifier, zone);
    EXPECT_EQ(facts.abbreviation, abbreviation) << zone << " in " << locale << " at " << moment;
  }
}

TEST(ZoneAbbreviation, IsAbsentForAMomentThatIsNoTime) {
  for (const double moment : {std::nan(""), std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(), 1e306, -1e306}) {
    const auto facts = factsOf("Europe/Berlin", "de_DE", moment);
    EXPECT_EQ(facts.identifier, "Europe/Berlin");
    EXPECT_EQ(facts.abbreviation, std::nullopt) << moment;
  }
}

}  // namespace
}  // namespace tavrin::platform
