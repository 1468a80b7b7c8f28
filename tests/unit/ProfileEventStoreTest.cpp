#include "platform/profile/ProfilePlatform.hpp"

#include <gtest/gtest.h>

#include <string>

namespace tavrin::platform {
namespace {

// A granted calendar in Berlin with two calendars and the given events.
std::shared_ptr<ProfilePlatform> calendarWith(const std::string& events,
                                              const std::string& status = "3") {
  return ProfilePlatform::fromText(R"({
    "device": {"timeZone": {"identifier": "Europe/Berlin"}},
    "permissions": {"calendarEvents": {"status": )" +
                                       status + R"(}},
    "calendars": {"events": [{"calendarIdentifier": "home"}, {"calendarIdentifier": "work"}]},
    "events": [)" + events + "]}",
                                   "events.json");
}

std::vector<double> startsOf(const std::vector<Event>& events) {
  std::vector<double> starts;
  for (const auto& e : events) starts.push_back(e.startDate.value_or(-1));
  return starts;
}

std::vector<double> starts(ProfilePlatform& platform, double from, double to,
                           const std::vector<std::string>& calendars = {"home", "work"}) {
  return startsOf(platform.events().events(from, to, calendars));
}

constexpr double hour = 3600, day = 86400;

TEST(ProfileEventStore, MonthlyOnThe31stFallsOnTheLastDayOfShorterMonths) {
  // 2020-01-31 19:00 Berlin, 90 minutes; the clocks go forward on 29 March.
  auto platform = calendarWith(R"({"calendarIdentifier": "home", "calendarItemIdentifier": "m",
    "startDate": 1580493600, "endDate": 1580499000,
    "recurrence": {"frequency": "monthly", "count": 5}})");
  const auto events = platform->events().events(1577836800, 1609459199, {"home"});
  EXPECT_EQ(startsOf(events),
            (std::vector<double>{1580493600, 1582999200, 1585674000, 1588266000, 1590944400}));
  for (const auto& e : events) {
    EXPECT_EQ(e.occurrenceDate, e.startDate);
    EXPECT_EQ(*e.endDate - *e.startDate, 5400);
    EXPECT_TRUE(e.hasRecurrenceRules);
    EXPECT_EQ(e.calendarItemIdentifier, "m");
  }
}

TEST(ProfileEventStore, YearlyOnTheLeapDayFallsOnThe28thInOtherYears) {
  auto platform = calendarWith(R"({"calendarIdentifier": "home", "timeZone": "UTC",
    "startDate": 1582977600, "endDate": 1582981200, "recurrence": {"frequency": "yearly"}})");
  const auto found = starts(*platform, 1582977600, 1582977600 + 4 * 366 * day);
  ASSERT_EQ(found.size(), 5U);
  EXPECT_EQ(found[1], 1614513600);  // 2021-02-28 12:00
  EXPECT_EQ(found[4], 1709208000);  // 2024-02-29 12:00
}

TEST(ProfileEventStore, DailyKeepsItsLocalTimeAcrossADaylightSavingChangeOfItsOwnZone) {
  // 09:00 in New York, whose clocks go forward on 8 March 2020; the device is in Berlin.
  auto platform = calendarWith(R"({"calendarIdentifier": "work", "timeZone": "America/New_York",
    "startDate": 1583589600, "endDate": 1583593200,
    "recurrence": {"frequency": "daily", "interval": 1, "count": 3}})");
  EXPECT_EQ(starts(*platform, 1580000000, 1600000000),
            (std::vector<double>{1583589600, 1583672400, 1583758800}));
}

TEST(ProfileEventStore, WeeklyEndsAtItsUntilDate) {
  // Mondays 10:00 Berlin from 23 March 2020; until the 6 April occurrence, inclusive.
  auto platform = calendarWith(R"({"calendarIdentifier": "home",
    "startDate": 1584954000, "endDate": 1584957600,
    "recurrence": {"frequency": "weekly", "until": 1586160000}})");
  EXPECT_EQ(starts(*platform, 1580000000, 1600000000),
            (std::vector<double>{1584954000, 1585555200, 1586160000}));
}

TEST(ProfileEventStore, AnOldDailySeriesIsEnteredNearTheRange) {
  // Daily at 09:00 Berlin since 1 January 1970, asked for 1 June 2020 only.
  auto platform = calendarWith(R"({"calendarIdentifier": "home",
    "startDate": 28800, "endDate": 32400, "recurrence": {"frequency": "daily"}})");
  EXPECT_EQ(starts(*platform, 1590962400, 1590962400 + day - 1), (std::vector<double>{1590994800}));
  // An occurrence under way at the start of the range overlaps it.
  EXPECT_EQ(starts(*platform, 1590994800 + 0.5 * hour, 1590994800 + hour),
            (std::vector<double>{1590994800}));
}

TEST(ProfileEventStore, RangeOverlapIsClosedAndOpenDatesReachEverywhere) {
  auto platform = calendarWith(R"(
    {"calendarIdentifier": "home", "calendarItemIdentifier": "endsAtStart", "startDate": 100, "endDate": 200},
    {"calendarIdentifier": "home", "calendarItemIdentifier": "startsAtEnd", "startDate": 300, "endDate": 400},
    {"calendarIdentifier": "home", "calendarItemIdentifier": "before", "startDate": 100, "endDate": 199.5},
    {"calendarIdentifier": "home", "calendarItemIdentifier": "after", "startDate": 300.5, "endDate": 400},
    {"calendarIdentifier": "work", "calendarItemIdentifier": "noStart", "endDate": 250},
    {"calendarIdentifier": "work", "calendarItemIdentifier": "noDates"},
    {"calendarIdentifier": "work", "calendarItemIdentifier": "noEnd", "startDate": 5000})");
  std::vector<std::string> found;
  for (const auto& e : platform->events().events(200, 300, {"home", "work"})) {
    found.push_back(e.calendarItemIdentifier);
  }
  EXPECT_EQ(found, (std::vector<std::string>{"endsAtStart", "startsAtEnd", "noStart", "noDates"}));
  EXPECT_EQ(platform->events().events(200, 300, {"home"}).size(), 2U);
  EXPECT_EQ(platform->events().events(4000, 6000, {"work"}).size(), 2U);
}

TEST(ProfileEventStore, ALongRangeIsCutToFourYears) {
  auto platform = calendarWith(R"({"calendarIdentifier": "home", "timeZone": "UTC",
    "startDate": 0, "endDate": 60, "recurrence": {"frequency": "daily"}})");
  const auto found = starts(*platform, 0, 1e300);
  ASSERT_EQ(found.size(), static_cast<std::size_t>(4 * 366 + 1));
  EXPECT_EQ(found.back(), ProfileEventStore::longestRange);
}

TEST(ProfileEventStore, NothingIsFoundWithoutAuthorizationOrForAnInvertedRange) {
  const char* event = R"({"calendarIdentifier": "home", "startDate": 10, "endDate": 20})";
  EXPECT_TRUE(starts(*calendarWith(event, "2"), 0, 100).empty());
  EXPECT_TRUE(calendarWith(event, "2")->events().calendars(EntityType::event).empty());
  const auto granted = calendarWith(event);
  EXPECT_TRUE(starts(*granted, 100, 0).empty());
  EXPECT_EQ(starts(*granted, 0, 100).size(), 1U);
  EXPECT_EQ(granted->events().calendars(EntityType::event).size(), 2U);
  EXPECT_TRUE(granted->events().calendars(7).empty());
}

}  // namespace
}  // namespace tavrin::platform
