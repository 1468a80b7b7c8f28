#include "platform/linux/timeZoneFacts.hpp"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>

namespace tavrin::platform {
namespace {

constexpr double winter = 1700000000;  // 2023-11-14 22:13:20 UTC
constexpr double summer = 1720000000;  // 2024-07-03 09:46:40 UTC

struct ZoneCase {
  const char* zone;
  const char* locale;
  double moment;
  const char* abbreviation;
};

void PrintTo(const ZoneCase& c, std::ostream* out) {
  *out << c.zone << " in " << c.locale << " at " << c.moment;
}

class ZoneAbbreviation : public testing::TestWithParam<ZoneCase> {};

TEST_P(ZoneAbbreviation, IsTheShortNameInTheLocaleAtThatMoment) {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone(GetParam().zone));
  const auto facts = timeZoneFacts(*zone, icu::Locale(GetParam().locale), GetParam().moment);
  EXPECT_EQ(facts.identifier, GetParam().zone);
  EXPECT_EQ(facts.abbreviation, GetParam().abbreviation);
}

INSTANTIATE_TEST_SUITE_P(Zones, ZoneAbbreviation,
                         testing::Values(ZoneCase{"America/New_York", "en_US", winter, "EST"},
                                         ZoneCase{"America/New_York", "en_US", summer, "EDT"},
                                         ZoneCase{"Europe/Berlin", "de_DE", winter, "MEZ"},
                                         ZoneCase{"Europe/Berlin", "de_DE", summer, "MESZ"},
                                         ZoneCase{"Europe/Berlin", "en_US", winter, "GMT+1"},
                                         ZoneCase{"Asia/Kolkata", "en_US_POSIX", summer,
                                                  "GMT+5:30"},
                                         ZoneCase{"Etc/UTC", "en_US_POSIX", winter, "UTC"}));

TEST(ZoneAbbreviation, IsAbsentForAMomentThatIsNoTime) {
  const std::unique_ptr<icu::TimeZone> zone(icu::TimeZone::createTimeZone("Europe/Berlin"));
  for (const double moment : {std::nan(""), std::numeric_limits<double>::infinity(),
                              -std::numeric_limits<double>::infinity(), 1e306, -1e306}) {
    const auto facts = timeZoneFacts(*zone, icu::Locale("de_DE"), moment);
    EXPECT_EQ(facts.identifier, "Europe/Berlin");
    EXPECT_EQ(facts.abbreviation, std::nullopt) << moment;
  }
}

}  // namespace
}  // namespace tavrin::platform
